#pragma once

#include <optional>
#include <string>
#include <string_view>

/// What scripts do with bytes and would be slow to do themselves. Pure functions.
namespace tavrine {

/// atob: base64 with or without padding, white space ignored. None when it is no base64.
[[nodiscard]] std::optional<std::u16string> decodedBase64(std::u16string_view text);
/// btoa. None when a unit is over 0xFF.
[[nodiscard]] std::optional<std::u16string> encodedBase64(std::u16string_view bytes);

/// `encoding` is "utf-8", "utf-16le" or "windows-1252". None when `isFatal` and the bytes are not in that encoding.
[[nodiscard]] std::optional<std::u16string> decodedText(std::string_view bytes, std::string_view encoding,
                                                        bool isFatal);

} // namespace tavrine
