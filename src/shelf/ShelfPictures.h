#pragma once

#include "ports/FileIcons.h"
#include "shelf/ShelfItem.h"

#include <QCache>
#include <QPixmap>

#include <functional>

namespace tavrine {

/// What is shown of items, at the size of a tile: the icon of a file or, for a picture, what is in it once that was
/// read; an image made small; nothing for a text. Made when a tile is first painted, and kept for as many as are soon
/// seen again. Belongs to a view; main thread.
class ShelfPictures {
public:
    static constexpr int countLimit = 64;

    /// `onRead` is called when there is a better picture of the item.
    ShelfPictures(FileIcons &icons, std::function<void(const QUuid &id)> onRead);

    /// Fits into a square of `side` points at `scale`; null for an item without a picture.
    [[nodiscard]] QPixmap picture(const ShelfItem &item, qreal side, qreal scale);

private:
    struct Picture {
        QPixmap pixmap;
        int pixels = 0; ///< of the square it was made for
        FileIcons::Token reading;
    };

    void read(const ShelfItem &item, int pixels, qreal scale, Picture &into);

    FileIcons &m_icons;
    const std::function<void(const QUuid &id)> m_onRead;
    QCache<QUuid, Picture> m_pictures{countLimit};
};

} // namespace tavrine
