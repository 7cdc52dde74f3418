#include "upload/worker/WorkerText.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace tavrine {
namespace {

constexpr char32_t replacement = 0xFFFD;
constexpr std::string_view ellipsis = "\xE2\x80\xA6";

void appendUtf8(std::string &out, char32_t c) {
    const auto put = [&out](char32_t byte) { out += static_cast<char>(byte); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | (c >> 6));
        put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        put(0xE0 | (c >> 12));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xF0 | (c >> 18));
        put(0x80 | ((c >> 12) & 0x3F));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    }
}

/// Text that is cut before the first character that does not fit.
class BoundedText {
public:
    BoundedText(std::size_t expected, std::size_t maxBytes) : m_maxBytes(maxBytes) { m_text.reserve(expected); }

    /// False once the text is full.
    bool add(char32_t c) {
        appendUtf8(m_text, c);
        if (m_text.size() <= m_maxBytes) {
            if (m_text.size() + ellipsis.size() <= m_maxBytes)
                m_fit = m_text.size();
            return true;
        }
        m_text.resize(m_fit);
        m_text += ellipsis;
        return false;
    }
    std::string take() { return std::move(m_text); }

private:
    std::size_t m_maxBytes;
    std::size_t m_fit = 0; // the longest beginning that leaves room for the ellipsis
    std::string m_text;
};

bool isHigh(char16_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
bool isLow(char16_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

char32_t takeCharacter(std::u16string_view units, std::size_t &at) {
    const char16_t unit = units[at++];
    if (!isHigh(unit) && !isLow(unit))
        return unit;
    if (isHigh(unit) && at < units.size() && isLow(units[at]))
        return 0x10000 + ((char32_t{unit} - 0xD800) << 10) + (char32_t{units[at++]} - 0xDC00);
    return replacement;
}

/// The next character, or `replacement` with `isGood` false, having taken one byte.
char32_t takeCharacter(std::string_view bytes, std::size_t &at, bool &isGood) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned char first = byte(at);
    isGood = true;
    if (first < 0x80) {
        ++at;
        return first;
    }
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    static constexpr std::array<char32_t, 5> smallest{0, 0, 0x80, 0x800, 0x10000};
    if (first >= 0xC2 && first < 0xF5 && at + length <= bytes.size()) {
        char32_t c = first & (0x7Fu >> length);
        bool isWhole = true;
        for (std::size_t i = 1; i < length; ++i) {
            isWhole = isWhole && (byte(at + i) & 0xC0) == 0x80;
            c = (c << 6) | (byte(at + i) & 0x3F);
        }
        if (isWhole && c >= smallest[length] && c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF)) {
            at += length;
            return c;
        }
    }
    ++at;
    isGood = false;
    return replacement;
}

bool startsWith(std::string_view text, std::string_view lowerCaseStart) {
    return text.size() >= lowerCaseStart.size() &&
           std::equal(lowerCaseStart.begin(), lowerCaseStart.end(), text.begin(),
                      [](char wanted, char c) { return wanted == std::tolower(static_cast<unsigned char>(c)); });
}

bool isNeverInText(char16_t unit) {
    return unit < 0x20 && unit != u'\t' && unit != u'\n' && unit != u'\r' && unit != u'\f';
}

bool areBytes(std::u16string_view units, std::string_view contentType) {
    for (const std::string_view kind : {"image/", "audio/", "video/", "application/octet-stream"}) {
        if (startsWith(contentType, kind) && !startsWith(contentType, "image/svg"))
            return true;
    }
    return startsWith(contentType, "multipart/form-data") && std::any_of(units.begin(), units.end(), isNeverInText);
}

} // namespace

std::string utf8FromUnits(std::u16string_view units, std::size_t maxBytes) {
    BoundedText text(std::min(units.size(), maxBytes), maxBytes);
    for (std::size_t at = 0; at < units.size() && text.add(takeCharacter(units, at));) {
    }
    return text.take();
}

bool isUtf8(std::string_view bytes) {
    bool isGood = true;
    for (std::size_t at = 0; isGood && at < bytes.size();)
        takeCharacter(bytes, at, isGood);
    return isGood;
}

std::string repairedUtf8(std::string_view bytes, std::size_t maxBytes) {
    BoundedText text(std::min(bytes.size(), maxBytes), maxBytes);
    bool isGood = true;
    for (std::size_t at = 0; at < bytes.size() && text.add(takeCharacter(bytes, at, isGood));) {
    }
    return text.take();
}

std::u16string unitsFromUtf8(std::string_view bytes) {
    std::u16string out;
    out.reserve(bytes.size());
    bool isGood = true;
    for (std::size_t at = 0; at < bytes.size();) {
        const char32_t c = takeCharacter(bytes, at, isGood);
        if (c < 0x10000) {
            out += static_cast<char16_t>(c);
        } else {
            out += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
            out += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
        }
    }
    return out;
}

std::string requestBytes(std::u16string_view units, std::string_view contentType) {
    const bool fitsBytes = std::all_of(units.begin(), units.end(), [](char16_t unit) { return unit <= 0xFF; });
    if (!fitsBytes || !areBytes(units, contentType))
        return utf8FromUnits(units);
    std::string bytes(units.size(), '\0');
    std::transform(units.begin(), units.end(), bytes.begin(), [](char16_t unit) { return static_cast<char>(unit); });
    return bytes;
}

std::u16string responseUnits(std::string_view bytes) {
    if (isUtf8(bytes))
        return unitsFromUtf8(bytes);
    std::u16string units(bytes.size(), u'\0');
    std::transform(bytes.begin(), bytes.end(), units.begin(),
                   [](char byte) { return static_cast<char16_t>(static_cast<unsigned char>(byte)); });
    return units;
}

void appendJsonString(std::string &json, std::string_view text) {
    constexpr std::string_view hex = "0123456789abcdef";
    json += '"';
    const std::string repaired = isUtf8(text) ? std::string(text) : repairedUtf8(text);
    for (const char c : repaired) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            json += '\\';
            json += c;
        } else if (byte < 0x20) {
            json += "\\u00";
            json += hex[byte >> 4];
            json += hex[byte & 0xF];
        } else {
            json += c;
        }
    }
    json += '"';
}

} // namespace tavrine
