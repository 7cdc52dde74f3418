#pragma once

#include <QString>
#include <QStringList>

namespace tavrine {

/// One row of the emoji table. The emoji itself names the row.
struct EmojiItem {
    QString emoji; ///< the character sequence that is inserted
    QString name;
    QString keywordText; ///< the keywords with "," between them, none of them empty: thousands of lists would be costly
    QString category;    ///< the long name of its category

    [[nodiscard]] QStringList keywords() const { return keywordText.split(u',', Qt::SkipEmptyParts); }

    bool operator==(const EmojiItem &) const = default;
};

} // namespace tavrine
