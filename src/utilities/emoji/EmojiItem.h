#pragma once

#include <QString>
#include <QStringList>

namespace tavrine {

/// One row of the emoji table. The emoji itself names the row.
struct EmojiItem {
    QString emoji; ///< the character sequence that is inserted
    QString name;
    QStringList keywords;
    QString category; ///< the long name of its category

    bool operator==(const EmojiItem &) const = default;
};

} // namespace tavrine
