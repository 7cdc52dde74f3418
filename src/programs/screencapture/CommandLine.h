#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavrine {

/// What the tool is asked for: `screencapture -i [-x] [-f PICTURE] FILE`, a picture, or `screencapture -p`, a colour.
struct CommandLine {
    static constexpr std::string_view usage = "usage: screencapture -i [-x] [-f PICTURE] FILE\n       screencapture -p";

    std::string file; ///< empty for a colour
    bool isSilent = false;
    bool isColour = false;
    std::string picture = {}; ///< a file with a picture of the screens, where the server has none; empty for none

    /// Of the arguments without the program's name. None when they are anything else than the usage says: the options
    /// in any order, each once, and one file that is not empty behind them.
    [[nodiscard]] static std::optional<CommandLine> parse(const std::vector<std::string_view> &arguments);

    bool operator==(const CommandLine &) const = default;
};

} // namespace tavrine
