#include "capture/reading/CharacterCount.h"

#include <QTextBoundaryFinder>

namespace tavrine {

qsizetype characterCount(const QString &text) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype count = 0;
    while (finder.toNextBoundary() > 0)
        ++count;
    return count;
}

QString characterCountText(const QString &text) {
    return QStringLiteral("%1 characters").arg(characterCount(text));
}

} // namespace tavrine
