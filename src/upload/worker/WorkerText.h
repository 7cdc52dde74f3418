#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Text between a script, whose strings are any 16-bit units, and the world, which takes UTF-8. Pure functions.
namespace tavrine {

/// Valid UTF-8 whatever came in: a half of a surrogate pair becomes U+FFFD. Longer text is cut before a character that
/// would pass `maxBytes` and ends in "…".
[[nodiscard]] std::string utf8FromUnits(std::u16string_view units, std::size_t maxBytes = SIZE_MAX);

[[nodiscard]] bool isUtf8(std::string_view bytes);

/// Bytes that are no UTF-8 become U+FFFD, each one; used for what has to be shown.
[[nodiscard]] std::string repairedUtf8(std::string_view bytes, std::size_t maxBytes = SIZE_MAX);

/// `bytes` are read as UTF-8; what is none becomes U+FFFD.
[[nodiscard]] std::u16string unitsFromUtf8(std::string_view bytes);

/// What a request sends for a string. A string is text and goes out as UTF-8, unless it can only be bytes, one for each
/// unit: no unit is over 0xFF and the content type is that of bytes (an image, audio, video, application/octet-stream),
/// or of multipart/form-data and the string has a control character that no text has.
[[nodiscard]] std::string requestBytes(std::u16string_view units, std::string_view contentType);

/// What a script is given of a response: text when the bytes are UTF-8, otherwise one unit for each byte.
[[nodiscard]] std::u16string responseUnits(std::string_view bytes);

/// Appends `text` as a JSON string. `text` is repaired first.
void appendJsonString(std::string &json, std::string_view text);

} // namespace tavrine
