#include "upload/ScriptTokenizer.h"

#include <QString>

#include <algorithm>
#include <array>

namespace tavrine {

namespace {

using Kind = ScriptTokenKind;
using State = ScriptLineState;

// Sorted.
constexpr std::array<QStringView, 46> keywords{
    u"Infinity", u"NaN",       u"async",      u"await",   u"break",  u"case",     u"catch", u"class",
    u"const",    u"continue",  u"debugger",   u"default", u"delete", u"do",       u"else",  u"export",
    u"extends",  u"false",     u"finally",    u"for",     u"from",   u"function", u"get",   u"if",
    u"import",   u"in",        u"instanceof", u"let",     u"new",    u"null",     u"of",    u"return",
    u"set",      u"static",    u"super",      u"switch",  u"this",   u"throw",    u"true",  u"try",
    u"typeof",   u"undefined", u"var",        u"void",    u"while",  u"with"};

// Keywords behind which a slash divides.
constexpr std::array<QStringView, 8> operands{u"Infinity", u"NaN",  u"false", u"null",
                                              u"super",    u"this", u"true",  u"undefined"};

bool isWordStart(QChar c) {
    return c.isLetter() || c == QLatin1Char('_') || c == QLatin1Char('$') || c == QLatin1Char('#') || c.isSurrogate();
}

bool isWordPart(QChar c) {
    return isWordStart(c) || c.isDigit() || c.isMark();
}

bool isAsciiDigit(QChar c) {
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

/// Reads one line from left to right.
class Reader {
public:
    Reader(QStringView line, State &state) : m_line(line), m_state(state) {}

    std::vector<ScriptToken> read() {
        while (m_at < m_line.size()) {
            switch (m_state.mode) {
            case State::Mode::comment:
                readComment(m_at, m_at);
                break;
            case State::Mode::templateText:
                readTemplate(m_at, m_at);
                break;
            case State::Mode::code:
                readCode();
                break;
            }
        }
        return std::move(m_tokens);
    }

private:
    [[nodiscard]] QChar peek(qsizetype ahead = 0) const {
        return m_at + ahead < m_line.size() ? m_line[m_at + ahead] : QChar();
    }
    void add(qsizetype start, Kind kind) {
        if (m_at > start)
            m_tokens.push_back({start, m_at - start, kind});
    }

    void readCode() {
        const QChar c = peek();
        const qsizetype start = m_at;
        if (c.isSpace()) {
            ++m_at;
        } else if (c == QLatin1Char('/') && peek(1) == QLatin1Char('/')) {
            m_at = m_line.size();
            add(start, Kind::comment);
        } else if (c == QLatin1Char('/') && peek(1) == QLatin1Char('*')) {
            readComment(start, start + 2);
        } else if (c == QLatin1Char('/') && !m_state.endsOperand && readRegex()) {
            m_state.endsOperand = true;
        } else if (c == QLatin1Char('"') || c == QLatin1Char('\'')) {
            readString(c);
        } else if (c == QLatin1Char('`')) {
            readTemplate(start, start + 1);
        } else if (isAsciiDigit(c) || (c == QLatin1Char('.') && isAsciiDigit(peek(1)))) {
            readNumber();
        } else if (isWordStart(c)) {
            readWord();
        } else {
            readSign(c);
        }
    }

    void readComment(qsizetype start, qsizetype from) {
        const qsizetype end = m_line.indexOf(QLatin1String("*/"), from);
        m_at = end < 0 ? m_line.size() : end + 2;
        m_state.mode = end < 0 ? State::Mode::comment : State::Mode::code;
        add(start, Kind::comment);
    }

    void readTemplate(qsizetype start, qsizetype from) {
        m_state.mode = State::Mode::templateText;
        for (m_at = from; m_at < m_line.size(); ++m_at) {
            const QChar c = peek();
            if (c == QLatin1Char('\\')) {
                ++m_at;
            } else if (c == QLatin1Char('`')) {
                ++m_at;
                m_state.mode = State::Mode::code;
                m_state.endsOperand = true;
                break;
            } else if (c == QLatin1Char('$') && peek(1) == QLatin1Char('{') && m_state.depth < State::deepest) {
                m_at += 2;
                m_state.braces[m_state.depth++] = 0;
                m_state.mode = State::Mode::code;
                m_state.endsOperand = false;
                break;
            }
        }
        m_at = std::min(m_at, m_line.size());
        add(start, Kind::templateText);
    }

    void readString(QChar quote) {
        const qsizetype start = m_at++;
        while (m_at < m_line.size() && peek() != quote)
            m_at += peek() == QLatin1Char('\\') ? 2 : 1;
        m_at = std::min(m_at + 1, m_line.size());
        add(start, Kind::string);
        m_state.endsOperand = true;
    }

    /// False when the line has no end for it: then the slash is a sign.
    bool readRegex() {
        bool isInClass = false;
        qsizetype at = m_at + 1;
        for (; at < m_line.size(); ++at) {
            const QChar c = m_line[at];
            if (c == QLatin1Char('\\'))
                ++at;
            else if (c == QLatin1Char('['))
                isInClass = true;
            else if (c == QLatin1Char(']'))
                isInClass = false;
            else if (c == QLatin1Char('/') && !isInClass)
                break;
        }
        if (at >= m_line.size())
            return false;
        const qsizetype start = std::exchange(m_at, at + 1);
        while (peek().isLetter())
            ++m_at; // the flags
        add(start, Kind::regex);
        return true;
    }

    void readNumber() {
        const qsizetype start = m_at;
        const bool isPrefixed = peek() == QLatin1Char('0') && peek(1).isLetter();
        while (m_at < m_line.size()) {
            const QChar c = peek();
            const bool isSigned = (c == QLatin1Char('+') || c == QLatin1Char('-')) && !isPrefixed && m_at > start &&
                                  m_line[m_at - 1].toLower() == QLatin1Char('e');
            if (!isWordPart(c) && c != QLatin1Char('.') && !isSigned)
                break;
            ++m_at;
        }
        add(start, Kind::number);
        m_state.endsOperand = true;
    }

    void readWord() {
        const qsizetype start = m_at;
        while (m_at < m_line.size() && isWordPart(peek()))
            ++m_at;
        const QStringView word = m_line.mid(start, m_at - start);
        const bool isMember =
            start > 0 && m_line[start - 1] == QLatin1Char('.') && !(start > 1 && m_line[start - 2] == QLatin1Char('.'));
        m_state.endsOperand = true;
        if (!isMember && std::ranges::binary_search(keywords, word)) {
            m_state.endsOperand = std::ranges::binary_search(operands, word);
            add(start, Kind::keyword);
            return;
        }
        qsizetype next = m_at;
        while (next < m_line.size() && m_line[next].isSpace())
            ++next;
        if (next < m_line.size() && m_line[next] == QLatin1Char('('))
            add(start, Kind::functionName);
    }

    void readSign(QChar c) {
        const qsizetype start = m_at++;
        int *braces = m_state.depth > 0 ? &m_state.braces[m_state.depth - 1] : nullptr;
        if (c == QLatin1Char('}') && braces && *braces == 0) {
            --m_state.depth;
            readTemplate(start, m_at);
            return;
        }
        if (c == QLatin1Char('{') && braces)
            *braces = std::min(*braces + 1, State::mostBraces);
        if (c == QLatin1Char('}') && braces)
            --*braces;
        m_state.endsOperand = c == QLatin1Char(')') || c == QLatin1Char(']') || c == QLatin1Char('}');
        if (QStringView(u"()[]{}").contains(c))
            add(start, Kind::bracket);
    }

    QStringView m_line;
    State &m_state;
    qsizetype m_at = 0;
    std::vector<ScriptToken> m_tokens;
};

} // namespace

int ScriptLineState::packed() const {
    int value = int(mode) | (endsOperand ? 4 : 0) | (depth << 3);
    for (int i = 0; i < deepest; ++i)
        value |= braces[i] << (5 + 7 * i);
    return value;
}

ScriptLineState ScriptLineState::unpacked(int packed) {
    ScriptLineState state;
    if (packed < 0)
        return state;
    state.mode = Mode(std::min(packed & 3, 2));
    state.endsOperand = packed & 4;
    state.depth = (packed >> 3) & 3;
    for (int i = 0; i < deepest; ++i)
        state.braces[i] = (packed >> (5 + 7 * i)) & 127;
    return state;
}

std::vector<ScriptToken> scriptTokens(QStringView line, ScriptLineState &state) {
    return Reader(line, state).read();
}

} // namespace tavrine
