#pragma once

#include <optional>
#include <string_view>

namespace tavrine {

/// What an American keyboard has on a key that is told by its position: a capital letter or a digit; none for all other
/// keys. For desktops that know hot keys by what is printed on them.
[[nodiscard]] constexpr std::optional<int> letterOf(int virtualKeyCode) {
    // In the order of the codes; a blank is another key.
    constexpr std::string_view letters = "ASDFHGZXCV BQWERYT123465 97 80 OU IP LJ K    NM";
    if (virtualKeyCode < 0 || virtualKeyCode >= static_cast<int>(letters.size()))
        return std::nullopt;
    const char letter = letters[static_cast<std::size_t>(virtualKeyCode)];
    return letter == ' ' ? std::nullopt : std::optional<int>(letter);
}

} // namespace tavrine
