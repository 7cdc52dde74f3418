#include "clipboard/RowThumbnails.h"

#include "clipboard/ClipboardRowActions.h"

#include <cmath>

namespace tavrine {

QPixmap RowThumbnails::thumbnail(const ClipboardItem &item, qreal side, qreal scale) {
    if (!item.imageFileName || m_missing.contains(*item.imageFileName))
        return {};
    const std::optional<QImage> image = clipboardRow::thumbnail(m_manager, item);
    if (!image || image->isNull()) {
        m_missing.insert(*item.imageFileName);
        return {};
    }
    const int pixels = static_cast<int>(std::ceil(side * scale));
    const QPixmap *known = m_scaled.object(image->cacheKey());
    if (known && std::min(known->width(), known->height()) == std::min({pixels, image->width(), image->height()}))
        return *known;
    QPixmap made;
    if (std::min(image->width(), image->height()) <= pixels)
        made = QPixmap::fromImage(*image);
    else
        made =
            QPixmap::fromImage(image->scaled(pixels, pixels, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation));
    m_scaled.insert(image->cacheKey(), new QPixmap(made));
    return made;
}

} // namespace tavrine
