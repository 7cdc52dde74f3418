#pragma once

#include "adapters/linux/HelperLines.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <vector>

#include <unistd.h>

namespace tavrine {

/// What whoever has started this process tells it on its standard input.
class Commands {
public:
    /// The lines that are whole now. Called when there is something to read; ends the process with whoever started it.
    [[nodiscard]] std::vector<std::string> read() {
        std::array<char, 256> bytes{};
        const ssize_t count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR)
            return {};
        if (count <= 0)
            std::_Exit(EXIT_SUCCESS);
        return m_lines.take({bytes.data(), static_cast<std::size_t>(count)});
    }

private:
    HelperLines m_lines;
};

} // namespace tavrine
