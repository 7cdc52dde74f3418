#include "clipboard/LikePattern.h"

#include "clipboard/LiteralSearch.h"

#include <algorithm>
#include <cstring>
#include <tuple>

namespace tavrine {
namespace {

constexpr char32_t replacementCharacter = 0xFFFD;

constexpr unsigned char byteAt(const char *position) {
    return static_cast<unsigned char>(*position);
}
constexpr bool isContinuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

constexpr char32_t lowerAscii(char32_t c) {
    return c >= U'A' && c <= U'Z' ? c + (U'a' - U'A') : c;
}

/// The bits that a lead byte contributes: what follows its run of ones.
constexpr char32_t leadBits(unsigned char lead) {
    if (lead < 0xE0)
        return lead & 0x1F;
    if (lead < 0xF0)
        return lead & 0x0F;
    if (lead < 0xF8)
        return lead & 0x07;
    if (lead < 0xFC)
        return lead & 0x03;
    return lead < 0xFE ? lead & 0x01 : 0;
}

void appendUtf8(std::string &text, char32_t c) {
    const auto append = [&](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    const auto appendTail = [&](int shift) { append(0x80 | ((c >> shift) & 0x3F)); };
    if (c < 0x80) {
        append(c);
    } else if (c < 0x800) {
        append(0xC0 | (c >> 6));
        appendTail(0);
    } else if (c < 0x10000) {
        append(0xE0 | (c >> 12));
        appendTail(6);
        appendTail(0);
    } else {
        append(0xF0 | (c >> 18));
        appendTail(12);
        appendTail(6);
        appendTail(0);
    }
}

} // namespace

LikePattern::LikePattern(std::string_view pattern, char32_t escape) : m_escape(escape) {
    compile(std::string(pattern).c_str()); // whatever `pattern` was a part of, it ends in a NUL here
    recogniseLiteral();
}

char32_t LikePattern::readCharacter(const char **position) {
    const unsigned char lead = byteAt(*position);
    if (lead == 0)
        return 0;
    ++*position;
    if (lead < 0xC0)
        return lead;
    char32_t c = leadBits(lead);
    for (; isContinuation(byteAt(*position)); ++*position)
        c = (c << 6) + (byteAt(*position) & 0x3F); // wraps in 32 bits, as SQLite's reader does
    const bool isSurrogate = (c & 0xFFFFF800) == 0xD800;
    const bool isNoncharacter = (c & 0xFFFFFFFE) == 0xFFFE;
    return c < 0x80 || isSurrogate || isNoncharacter ? replacementCharacter : c;
}

void LikePattern::compile(const char *pattern) {
    while (char32_t c = readCharacter(&pattern)) {
        if (c == m_escape) {
            c = readCharacter(&pattern);
            if (c == 0) {
                m_isUnmatchable = true;
                return;
            }
            m_tokens.push_back({Kind::character, lowerAscii(c)});
        } else if (c == U'%') {
            if (m_tokens.empty() || m_tokens.back().kind != Kind::anyRun)
                m_tokens.push_back({Kind::anyRun, 0});
        } else if (c == U'_') {
            m_tokens.push_back({Kind::anyCharacter, 0});
        } else {
            m_tokens.push_back({Kind::character, lowerAscii(c)});
        }
    }
}

void LikePattern::recogniseLiteral() {
    if (m_isUnmatchable || m_tokens.size() < 3 || m_tokens.front().kind != Kind::anyRun ||
        m_tokens.back().kind != Kind::anyRun)
        return;
    const auto first = m_tokens.begin() + 1;
    const auto last = m_tokens.end() - 1;
    // U+FFFD has many spellings, and what lies beyond Unicode has no proper one: those are matched by characters.
    const bool hasOneSpelling = std::all_of(first, last, [](const Token &token) {
        return token.kind == Kind::character && token.character != replacementCharacter && token.character <= 0x10FFFF;
    });
    if (!hasOneSpelling)
        return;
    std::for_each(first, last, [&](const Token &token) { appendUtf8(m_literal, token.character); });
    m_isLiteral = true;
    m_isAsciiLiteral = std::all_of(first, last, [](const Token &token) { return token.character < 0x80; });
    std::tie(m_rarest, m_second) = rarestBytes(m_literal);
}

bool LikePattern::matches(std::string_view text) const {
    if (m_isUnmatchable)
        return false;
    return m_isLiteral ? matchesLiteral(text) : matchesTokens(text.data());
}

bool LikePattern::matchesLiteral(std::string_view text) const {
    const std::size_t at = findLiteral(text, m_literal, m_rarest, m_second);
    if (at != std::string_view::npos) {
        if (std::memchr(text.data(), 0, at))
            return matchesTokens(text.data()); // the text ends before
        // The literal begins with a lead byte, which always begins a character, and its characters end where the next
        // one begins. Only its last could be the head of a longer, malformed one.
        if (static_cast<unsigned char>(m_literal.back()) < 0x80 ||
            !isContinuation(byteAt(text.data() + at + m_literal.size())))
            return true;
        return matchesTokens(text.data());
    }
    // In a well-formed text every character has one spelling, and none of those is the literal's.
    return !m_isAsciiLiteral && !isWellFormedUtf8(text) && matchesTokens(text.data());
}

bool LikePattern::matchesTokens(const char *text) const {
    // A run first takes nothing, and one character more each time that what follows it does not fit. Only the last
    // run met may grow: whatever an earlier one could reach, the later one reaches too.
    constexpr auto none = static_cast<std::size_t>(-1);
    std::size_t afterRun = none;
    const char *runEnd = nullptr;
    std::size_t token = 0;
    while (true) {
        if (token < m_tokens.size() && m_tokens[token].kind == Kind::anyRun) {
            if (++token == m_tokens.size())
                return true;
            afterRun = token;
            runEnd = text;
            continue;
        }
        const char *next = text;
        const char32_t c = readCharacter(&next);
        if (c == 0)
            return token == m_tokens.size();
        const bool fits = token < m_tokens.size() &&
                          (m_tokens[token].kind == Kind::anyCharacter || m_tokens[token].character == lowerAscii(c));
        if (fits) {
            ++token;
            text = next;
        } else if (afterRun != none) {
            (void)readCharacter(&runEnd);
            text = runEnd;
            token = afterRun;
        } else {
            return false;
        }
    }
}

} // namespace tavrine
