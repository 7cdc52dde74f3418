#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace tavrine {

/// What `screencapture` tells TavrineNarrator for the screen reader: lines on its standard input, until that ends. Each
/// is where the person has come to by keys. Without Qt.
struct NarratedPlace {
    enum class Kind {
        screen, ///< all of it; the first line
        cross,  ///< nothing is taken yet: where a corner would be
        area,   ///< between the corner that was set and the pointer
        window, ///< the window or the monitor that would be taken
    };
    static constexpr int longest = 1 << 20; ///< of a number of device pixels, whatever its sign

    Kind kind = Kind::cross;
    std::array<int, 4> area{};    ///< left, top, width and height in device pixels of the whole screen
    std::array<int, 2> picture{}; ///< how wide and high the picture would be

    /// With its end.
    [[nodiscard]] std::string line() const;
    /// None for anything that `line` does not give. The line comes without its end.
    [[nodiscard]] static std::optional<NarratedPlace> parse(std::string_view line);

    bool operator==(const NarratedPlace &) const = default;
};

} // namespace tavrine
