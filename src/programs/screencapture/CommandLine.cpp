#include "programs/screencapture/CommandLine.h"

#include <utility>

namespace tavrine {

std::optional<CommandLine> CommandLine::parse(const std::vector<std::string_view> &arguments) {
    CommandLine line;
    bool isInteractive = false;
    size_t next = 0;
    for (; next < arguments.size() && arguments[next].starts_with('-'); ++next) {
        if (arguments[next] == "-f" && line.picture.empty() && next + 1 < arguments.size()) {
            line.picture = arguments[++next];
            if (line.picture.empty())
                return std::nullopt;
            continue;
        }
        bool *const option = arguments[next] == "-i"   ? &isInteractive
                             : arguments[next] == "-x" ? &line.isSilent
                             : arguments[next] == "-p" ? &line.isColour
                                                       : nullptr;
        if (!option || std::exchange(*option, true))
            return std::nullopt;
    }
    if (line.isColour)
        return arguments.size() == 1 ? std::optional(line) : std::nullopt;
    if (!isInteractive || next + 1 != arguments.size() || arguments[next].empty())
        return std::nullopt;
    line.file = arguments[next];
    return line;
}

} // namespace tavrine
