#include "upload/worker/ScriptEncodings.h"

#include "upload/worker/WorkerText.h"

#include <array>
#include <cstdint>

namespace tavrine {
namespace {

constexpr std::u16string_view alphabet = u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<std::int8_t, 128> makeDigits() {
    std::array<std::int8_t, 128> digits{};
    for (auto &digit : digits)
        digit = -1;
    for (std::size_t i = 0; i < alphabet.size(); ++i)
        digits[alphabet[i]] = static_cast<std::int8_t>(i);
    return digits;
}
constexpr std::array<std::int8_t, 128> digits = makeDigits();

bool isSpace(char16_t unit) {
    return unit == u' ' || unit == u'\t' || unit == u'\n' || unit == u'\f' || unit == u'\r';
}

/// 0x80 to 0x9F in windows-1252, which the web reads for Latin-1 (encoding.spec.whatwg.org, index-windows-1252).
constexpr std::array<char16_t, 32> windowsUnits{0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x8D,   0x017D, 0x8F,
                                                0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};

} // namespace

std::optional<std::u16string> decodedBase64(std::u16string_view text) {
    std::u16string out;
    out.reserve(text.size() / 4 * 3 + 3);
    std::uint32_t bits = 0;
    std::size_t count = 0;
    std::size_t padding = 0;
    for (const char16_t unit : text) {
        if (isSpace(unit))
            continue;
        if (unit == u'=') {
            ++padding;
            continue;
        }
        if (padding > 0 || unit >= digits.size() || digits[unit] < 0)
            return std::nullopt;
        bits = (bits << 6) | static_cast<std::uint32_t>(digits[unit]);
        if (++count % 4 == 0) {
            for (const int shift : {16, 8, 0})
                out += static_cast<char16_t>((bits >> shift) & 0xFF);
        }
    }
    const std::size_t left = count % 4;
    if (left == 1 || (padding > 0 && padding != (4 - left) % 4))
        return std::nullopt;
    if (left >= 2)
        out += static_cast<char16_t>((bits >> (left == 2 ? 4 : 10)) & 0xFF);
    if (left == 3)
        out += static_cast<char16_t>((bits >> 2) & 0xFF);
    return out;
}

std::optional<std::u16string> encodedBase64(std::u16string_view bytes) {
    std::u16string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        std::uint32_t bits = 0;
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - at);
        for (std::size_t i = 0; i < 3; ++i) {
            const char16_t unit = i < count ? bytes[at + i] : u'\0';
            if (unit > 0xFF)
                return std::nullopt;
            bits = (bits << 8) | unit;
        }
        for (std::size_t i = 0; i < 4; ++i)
            out += i <= count ? alphabet[(bits >> (18 - 6 * i)) & 0x3F] : u'=';
    }
    return out;
}

std::optional<std::u16string> decodedText(std::string_view bytes, std::string_view encoding, bool isFatal) {
    if (encoding == "utf-8") {
        if (isFatal && !isUtf8(bytes))
            return std::nullopt;
        return unitsFromUtf8(bytes);
    }
    std::u16string out;
    if (encoding == "utf-16le") {
        if (isFatal && bytes.size() % 2 != 0)
            return std::nullopt;
        for (std::size_t at = 0; at + 1 < bytes.size(); at += 2)
            out += static_cast<char16_t>(static_cast<unsigned char>(bytes[at]) |
                                         static_cast<unsigned char>(bytes[at + 1]) << 8);
        return out;
    }
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        out += byte >= 0x80 && byte < 0xA0 ? windowsUnits[byte - 0x80] : static_cast<char16_t>(byte);
    }
    return out;
}

} // namespace tavrine
