#pragma once

#include <QImage>
#include <QList>
#include <QString>
#include <QStringList>

namespace tavrine::bench {

/// A picture of text as a screen shows it, and what stands in it.
struct ScreenPicture {
    QString name; ///< "prose 11 px light ×1"
    bool isCode = false;
    QStringList lines;
    QImage image;
};

/// Sixty lines of prose and of code, in 11 and 13 pixels, light and dark, at scales 1 and 2, in the fonts that a
/// desktop uses. Reads prose.txt and code.txt in `folder`.
[[nodiscard]] QList<ScreenPicture> screenPictures(const QString &folder);

/// How much of a text was recognised.
struct Score {
    qsizetype characters = 0; ///< that stand in the picture
    qsizetype errors = 0;     ///< characters to insert, delete or replace
    [[nodiscard]] double accuracy() const {
        return characters == 0 ? 1 : 1 - static_cast<double>(errors) / static_cast<double>(characters);
    }
};

/// The edit distance, blanks at the ends of lines left out and runs of blanks taken as one: a recogniser tells words
/// and lines, not columns.
[[nodiscard]] Score score(const QStringList &expected, const QStringList &found);

} // namespace tavrine::bench
