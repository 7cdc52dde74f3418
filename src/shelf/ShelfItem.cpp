#include "shelf/ShelfItem.h"

#include <QTextBoundaryFinder>

namespace tavrine {
namespace {

constexpr int longestName = 20; ///< characters of a text, as a person counts them
/// A character may carry any number of marks; no more of a text than this is looked at.
constexpr qsizetype longestNameUnits = 320;

QString firstCharacters(const QString &text) {
    const QString beginning = text.left(longestNameUnits);
    QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, beginning);
    for (int count = 0; count < longestName && characters.position() < beginning.size(); ++count)
        characters.toNextBoundary();
    return beginning.left(characters.position());
}

QString lastPathComponent(const QUrl &url) {
    QString path = url.path(QUrl::FullyDecoded);
    while (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    return path.size() > 1 ? path.mid(path.lastIndexOf(u'/') + 1) : path;
}

} // namespace

QString displayName(const ShelfItem &item) {
    if (item.url)
        return lastPathComponent(*item.url);
    return item.text ? firstCharacters(*item.text) : QStringLiteral("Image");
}

} // namespace tavrine
