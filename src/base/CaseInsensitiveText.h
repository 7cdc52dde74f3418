#pragma once

#include <QString>
#include <QStringMatcher>

namespace tavrine {

/// A text to look for in many others, the way people read: capitals do not count, nor does how an accented letter is
/// composed. "straße" is found in "STRASSE". An accent counts: "e" is not found in "é".
///
/// Texts without special letters, nearly all, are compared as they are; only the others are folded for it.
class CaseInsensitiveText {
public:
    explicit CaseInsensitiveText(const QString &text);

    /// The empty text is in every text.
    [[nodiscard]] bool isIn(const QString &other) const;

private:
    QStringMatcher m_matcher; ///< letter by letter
    QString m_folded;
    bool m_isAscii = false;
};

/// The text in composed form with every difference of case taken out, also where that changes the length.
[[nodiscard]] QString foldedCase(const QString &text);

} // namespace tavrine
