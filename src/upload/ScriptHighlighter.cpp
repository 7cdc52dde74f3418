#include "upload/ScriptHighlighter.h"

namespace tavrine {

namespace {

/// Longer lines are no lines that a person wrote, and are left in one colour.
constexpr qsizetype longestLine = 5000;

} // namespace

// Each stands at 4.5:1 or better on the theme's field.
QColor ScriptHighlighter::colourOf(ScriptTokenKind kind, bool isDark) {
    switch (kind) {
    case ScriptTokenKind::keyword:
        return isDark ? QColor(0xFF, 0x7A, 0xB2) : QColor(0xA0, 0x1F, 0x8A);
    case ScriptTokenKind::number:
        return isDark ? QColor(0xD9, 0xC9, 0x7C) : QColor(0x1C, 0x3F, 0xC4);
    case ScriptTokenKind::string:
    case ScriptTokenKind::templateText:
        return isDark ? QColor(0xFF, 0x8A, 0x75) : QColor(0xB8, 0x26, 0x1C);
    case ScriptTokenKind::comment:
        return isDark ? QColor(0x8F, 0x9B, 0xA8) : QColor(0x5B, 0x66, 0x72);
    case ScriptTokenKind::regex:
        return isDark ? QColor(0xFF, 0xA1, 0x4F) : QColor(0x8F, 0x4A, 0x00);
    case ScriptTokenKind::functionName:
        return isDark ? QColor(0x6F, 0xC3, 0xFF) : QColor(0x0B, 0x5C, 0xAD);
    case ScriptTokenKind::bracket:
        return isDark ? QColor(0xC4, 0xCA, 0xD4) : QColor(0x45, 0x4B, 0x55);
    }
    Q_UNREACHABLE();
}

void ScriptHighlighter::setDark(bool isDark) {
    for (int i = 0; i < int(std::size(m_formats)); ++i)
        m_formats[i].setForeground(colourOf(ScriptTokenKind(i), isDark));
    m_formats[int(ScriptTokenKind::comment)].setFontItalic(true);
    rehighlight();
}

void ScriptHighlighter::highlightBlock(const QString &text) {
    ScriptLineState state = ScriptLineState::unpacked(previousBlockState());
    if (text.size() <= longestLine) {
        for (const ScriptToken &token : scriptTokens(text, state))
            setFormat(int(token.start), int(token.length), m_formats[int(token.kind)]);
    }
    setCurrentBlockState(state.packed());
}

} // namespace tavrine
