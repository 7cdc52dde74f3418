#pragma once

#include <QImage>
#include <QRect>
#include <QStringList>

#include <vector>

namespace tavrine::reading {

/// A word as it was read, and where it stands on the page.
struct ReadWord {
    QString text;
    QRect box;
    int baseline = 0; ///< the row that its letters stand on
};

/// The words of one line put together. The engine was made for books, and the page tells where it was wrong about a
/// screen: a low stroke between two words is an underscore that it took for a blank, and words that all but touch are
/// one. `page` is grey, dark on light.
[[nodiscard]] QString joinedWords(const std::vector<ReadWord> &words, const QImage &page);

/// The same, with the blanks and underscores of the page where the line stands on a grid.
[[nodiscard]] QString repairedLine(const std::vector<ReadWord> &words, const QImage &page);

/// Straight quotes that were taken for typographic ones, as the engine likes to do in programs. Where a page has both,
/// or opens what nothing closes, they are straight.
[[nodiscard]] QStringList withPlausibleQuotes(QStringList lines);

} // namespace tavrine::reading
