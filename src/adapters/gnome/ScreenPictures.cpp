#include "adapters/gnome/ScreenPictures.h"

#include "adapters/frozen/PictureFile.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

constexpr int longestSide = PictureFile::longestSide;
constexpr double mostFine = 8; // pixels for one of the plane's

bool isPlace(const QRect &area) {
    return !area.isEmpty() && area.x() >= 0 && area.y() >= 0 && area.right() < longestSide &&
           area.bottom() < longestSide;
}

double fineness(const ScreenPicture &screen) {
    return double(screen.pixels.width()) / screen.area.width();
}

/// A picture of fewer pixels than its place, or of another shape, is none of that screen.
bool isOfItsPlace(const ScreenPicture &screen) {
    const double across = fineness(screen);
    return across >= 1 && across <= mostFine && screen.pixels.height() >= screen.area.height() &&
           std::abs(screen.pixels.height() - screen.area.height() * across) <= across;
}

QImage blank(QSize size) {
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(Qt::black);
    return picture;
}

/// Pixel by pixel.
void put(QImage &into, QPoint place, const QImage &picture) {
    QPainter painter(&into);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(place, picture);
}

/// All screens in one picture of that many pixels for one of the plane's. None where a screen would begin between two
/// pixels, or is not that fine.
QImage onePicture(const std::vector<ScreenPicture> &screens, QSize plane, double fine) {
    const auto pixels = [fine](int length) { return static_cast<int>(std::lround(length * fine)); };
    const auto fits = [&](int length) { return std::abs(length * fine - pixels(length)) < 0.01; };
    const bool fitAll = std::ranges::all_of(screens, [&](const ScreenPicture &screen) {
        return fits(screen.area.x()) && fits(screen.area.y()) &&
               screen.pixels.size() == QSize(pixels(screen.area.width()), pixels(screen.area.height()));
    });
    const QSize size(pixels(plane.width()), pixels(plane.height()));
    if (!fitAll || size.width() > longestSide || size.height() > longestSide)
        return {};
    QImage all = blank(size);
    if (all.isNull())
        return {};
    for (const ScreenPicture &screen : screens)
        put(all, {pixels(screen.area.x()), pixels(screen.area.y())}, screen.pixels);
    return all;
}

QImage planePicture(const std::vector<ScreenPicture> &screens, QSize plane, Shrinking shrinking) {
    QImage all = blank(plane);
    if (all.isNull())
        return {};
    const auto how = shrinking == Shrinking::mixed ? Qt::SmoothTransformation : Qt::FastTransformation;
    for (const ScreenPicture &screen : screens)
        put(all, screen.area.topLeft(), screen.pixels.scaled(screen.area.size(), Qt::IgnoreAspectRatio, how));
    return all;
}

bool write(QFile &to, const void *bytes, qint64 count) {
    return to.write(static_cast<const char *>(bytes), count) == count;
}

bool writePixels(QFile &to, const QImage &picture) {
    return write(to, picture.constBits(), picture.sizeInBytes()); // lines of 32 bits a pixel have no gaps between them
}

} // namespace

std::vector<ScreenPicture> readScreenPictures(int descriptor, const std::vector<GnomePicture> &pictures) {
    QFile from;
    if (!from.open(descriptor, QIODevice::ReadOnly) || !from.seek(0))
        return {};
    qint64 left = from.size();
    std::vector<ScreenPicture> screens;
    for (const GnomePicture &picture : pictures) {
        if (!isPlace(picture.area) || picture.length <= 0 || picture.length > left)
            return {};
        left -= picture.length;
        QByteArray bytes = from.read(picture.length);
        QBuffer buffer(&bytes);
        QImageReader reader(&buffer, "png");
        if (reader.size().width() > longestSide || reader.size().height() > longestSide)
            return {};
        screens.push_back({picture.area, reader.read().convertToFormat(QImage::Format_RGB32)});
        if (screens.back().pixels.isNull() || !isOfItsPlace(screens.back()))
            return {};
    }
    return screens;
}

bool writeScreenPictures(const std::vector<ScreenPicture> &screens, QPoint pointer, Shrinking shrinking,
                         int descriptor) {
    QRect whole(0, 0, 0, 0);
    for (const ScreenPicture &screen : screens)
        whole |= QRect(QPoint(0, 0), screen.area.bottomRight());
    QFile to;
    if (screens.empty() || screens.size() > PictureFile::mostParts ||
        !to.open(descriptor, QIODevice::WriteOnly | QIODevice::Unbuffered))
        return false;
    std::vector<ScreenPicture> fine;
    QImage plane = onePicture(screens, whole.size(), 1);
    if (plane.isNull()) {
        plane = planePicture(screens, whole.size(), shrinking);
        const QImage all = onePicture(screens, whole.size(), fineness(screens.front()));
        fine = all.isNull() ? screens : std::vector<ScreenPicture>{{whole, all}};
    }
    PictureFileHead head;
    head.width = whole.width();
    head.height = whole.height();
    head.pointerX = pointer.x();
    head.pointerY = pointer.y();
    head.parts = static_cast<qint32>(fine.size());
    bool isWritten = !plane.isNull() && write(to, &head, sizeof head);
    for (const ScreenPicture &each : fine) {
        const PictureFilePart part{each.area.x(),      each.area.y(),       each.area.width(),
                                   each.area.height(), each.pixels.width(), each.pixels.height()};
        isWritten = isWritten && write(to, &part, sizeof part);
    }
    isWritten = isWritten && writePixels(to, plane);
    for (const ScreenPicture &each : fine)
        isWritten = isWritten && writePixels(to, each.pixels);
    return isWritten;
}

} // namespace tavrine
