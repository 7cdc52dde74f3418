#pragma once

#include <QImage>
#include <QString>
#include <QUrl>
#include <QUuid>

#include <optional>

namespace tavrine {

enum class ItemType { file, text, image };

/// One thing that the shelf holds. A value, in memory only: a file stays where it lies.
struct ShelfItem {
    QUuid id; ///< made fresh for each item, so that the same file can be held twice
    std::optional<QUrl> url;
    std::optional<QString> text;
    std::optional<QImage> image; ///< the icon of a file, the picture of an image item, nothing for a text
    ItemType type = ItemType::file;
};

/// The last part of the file's path, the beginning of the text, or "Image".
[[nodiscard]] QString displayName(const ShelfItem &item);

} // namespace tavrine
