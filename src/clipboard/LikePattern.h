#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tavrine {

/// One pattern of SQL's LIKE, compiled once and matched against many texts, with SQLite's meaning to the last detail:
/// "%" is any run of characters, "_" is one character, ASCII letters match in either case and nothing else does.
///
/// The common pattern "%literal%" is answered by a byte search. A value of its own: immutable, usable on any thread.
///
///  1. Texts and patterns end at their first NUL.
///  2. A character is what SQLite's reader makes of the bytes: a byte from 0xC0 up takes every continuation byte that
///     follows, however many; any other byte stands for itself; what no text may contain reads as U+FFFD. So malformed
///     bytes match as SQLite matches them, an over-long form matches the character that it spells, and every malformed
///     form that reads as U+FFFD matches U+FFFD.
///  3. A pattern that ends in the escape character matches nothing.
class LikePattern {
public:
    /// `escape` is the character, not a byte, that takes the next one's meaning away; 0 for none. An escape of "%" or
    /// "_" is no wildcard any more.
    explicit LikePattern(std::string_view pattern, char32_t escape = 0);

    [[nodiscard]] char32_t escape() const { return m_escape; }

    /// `text` must be followed by a NUL in memory, as all text that SQLite hands out is.
    [[nodiscard]] bool matches(std::string_view text) const;

    /// The character at `*position`, which is moved behind it; 0 at the NUL, where it stays. The bytes end in a NUL.
    [[nodiscard]] static char32_t readCharacter(const char **position);

private:
    enum class Kind { character, anyCharacter, anyRun };
    struct Token {
        Kind kind;
        char32_t character;
    };

    void compile(const char *pattern);
    void recogniseLiteral();
    [[nodiscard]] bool matchesTokens(const char *text) const;
    [[nodiscard]] bool matchesLiteral(std::string_view text) const;

    char32_t m_escape;
    bool m_isUnmatchable = false; ///< it ends in the escape character
    bool m_isLiteral = false;     ///< it is "%literal%", and `m_literal` is that literal, in lower case
    bool m_isAsciiLiteral = false;
    std::vector<Token> m_tokens;
    std::string m_literal;
    std::size_t m_rarest = 0; ///< where in the literal the byte stands that texts contain least often
    std::size_t m_second = 0; ///< and the next such byte
};

} // namespace tavrine
