#include "adapters/wayland/KeymapText.h"

#include <cerrno>

#include <unistd.h>

namespace tavrine {
namespace {

constexpr std::uint32_t longestKeymap = 4U << 20; ///< bytes; a description has some 60,000

} // namespace

std::string keymapText(const Descriptor &file, std::uint32_t bytes) {
    if (!file.isOpen() || bytes == 0 || bytes > longestKeymap)
        return {};
    std::string text(bytes, '\0');
    for (std::size_t have = 0; have < text.size();) {
        const ssize_t got = ::pread(file.number(), text.data() + have, text.size() - have, static_cast<off_t>(have));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return {};
        have += static_cast<std::size_t>(got);
    }
    text.pop_back();
    return text;
}

} // namespace tavrine
