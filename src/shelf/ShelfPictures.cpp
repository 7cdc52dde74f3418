#include "shelf/ShelfPictures.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavrine {
namespace {

/// Whether there may be a picture in the file: files of other kinds are not opened.
bool mayBePicture(const QString &path) {
    static const QStringList endings{QStringLiteral("png"),  QStringLiteral("jpg"), QStringLiteral("jpeg"),
                                     QStringLiteral("jpe"),  QStringLiteral("gif"), QStringLiteral("bmp"),
                                     QStringLiteral("webp"), QStringLiteral("tif"), QStringLiteral("tiff"),
                                     QStringLiteral("heic"), QStringLiteral("heif")};
    const QString name = path.mid(path.lastIndexOf(u'/') + 1);
    const auto dot = name.lastIndexOf(u'.');
    return dot <= 0 || endings.contains(name.mid(dot + 1).toLower());
}

/// Within the square. A huge picture is first made smaller the quick way, or it would hold up the whole program.
QPixmap fitted(const QImage &image, int pixels, qreal scale) {
    constexpr int coarse = 4;
    QImage small = image;
    const int longer = std::max(image.width(), image.height());
    if (longer > coarse * pixels)
        small = small.scaled(coarse * pixels, coarse * pixels, Qt::KeepAspectRatio, Qt::FastTransformation);
    if (longer > pixels)
        small = small.scaled(pixels, pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QPixmap pixmap = QPixmap::fromImage(small);
    pixmap.setDevicePixelRatio(scale);
    return pixmap;
}

} // namespace

ShelfPictures::ShelfPictures(FileIcons &icons, std::function<void(const QUuid &id)> onRead)
    : m_icons(icons), m_onRead(std::move(onRead)) {}

QPixmap ShelfPictures::picture(const ShelfItem &item, qreal side, qreal scale) {
    if (!item.image)
        return {};
    const int pixels = static_cast<int>(std::ceil(side * scale));
    const Picture *known = m_pictures.object(item.id);
    if (known && known->pixels == pixels)
        return known->pixmap;
    auto *made = new Picture{.pixmap = fitted(*item.image, pixels, scale), .pixels = pixels, .reading = {}};
    const QPixmap shown = made->pixmap;
    read(item, pixels, scale, *made);
    m_pictures.insert(item.id, made);
    return shown;
}

void ShelfPictures::read(const ShelfItem &item, int pixels, qreal scale, Picture &into) {
    const QString path = item.url ? item.url->toLocalFile() : QString();
    if (item.type != ItemType::file || !mayBePicture(path))
        return;
    into.reading = m_icons.thumbnail(path, pixels, [this, id = item.id, pixels, scale](const QImage &image) {
        Picture *waiting = m_pictures.object(id);
        if (!waiting || waiting->pixels != pixels)
            return;
        waiting->pixmap = fitted(image, pixels, scale);
        m_onRead(id);
    });
}

} // namespace tavrine
