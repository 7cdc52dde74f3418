#include "base/CaseInsensitiveText.h"

#include <algorithm>

namespace tavrine {
namespace {

bool isAscii(QStringView text) {
    // Joining all characters first lets the compiler take many at once.
    char16_t joined = 0;
    for (const QChar c : text)
        joined |= c.unicode();
    return joined < 0x80;
}

bool isMark(QStringView text, qsizetype position) {
    if (position >= text.size())
        return false;
    const QChar c = text.at(position);
    // Half of a pair may be a mark of another script; taking it for one only costs the slower comparison.
    return c.isMark() || c.isSurrogate();
}

/// The few ranges in which Unicode has letters that fold to several. Asking for the others would cost most of the time.
bool mayFoldToSeveral(QChar c) {
    const char16_t code = c.unicode();
    return code == 0x00DF || (code >= 0x0130 && code <= 0x01F0) || code == 0x0390 || code == 0x03B0 || code == 0x0587 ||
           (code >= 0x1E96 && code <= 0x1E9E) || (code >= 0x1F50 && code <= 0x1FFC) ||
           (code >= 0xFB00 && code <= 0xFB17);
}

/// The full folding of a letter for which Unicode has one of several letters, such as "ss" for "ß".
QString longFolding(QChar c) {
    constexpr QChar capitalDottedI(0x0130);
    if (c == capitalDottedI)
        return QString(c).toLower();
    const QString upper = QString(c).toUpper();
    return upper.size() > 1 ? upper.toCaseFolded() : QString();
}

} // namespace

QString foldedCase(const QString &text) {
    if (isAscii(text))
        return text.toLower();
    const QString folded = text.normalized(QString::NormalizationForm_C).toCaseFolded();
    QString result;
    result.reserve(folded.size());
    for (const QChar c : folded) {
        const QString several = mayFoldToSeveral(c) ? longFolding(c) : QString();
        if (several.isEmpty())
            result += c;
        else
            result += several;
    }
    return result.normalized(QString::NormalizationForm_C);
}

CaseInsensitiveText::CaseInsensitiveText(const QString &text)
    : m_matcher(text, Qt::CaseInsensitive), m_folded(foldedCase(text)), m_isAscii(isAscii(text)) {}

bool CaseInsensitiveText::isIn(const QString &other) const {
    const qsizetype length = m_matcher.pattern().size();
    if (length == 0)
        return true;
    const qsizetype found = m_matcher.indexIn(other);
    // Letter by letter a find is right unless an accent follows that belongs to its last letter, and a miss is right
    // unless one of the two has letters that fold to several or can be composed.
    if (found >= 0 && !isMark(other, found + length))
        return true;
    if (found < 0 && m_isAscii && isAscii(other))
        return false;
    return foldedCase(other).contains(m_folded);
}

} // namespace tavrine
