#include "adapters/reading/ZBarDetector.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <string>

#include <iconv.h>
#include <zbar.h>

namespace tavrine {
namespace {

constexpr double mostPixels = 40e6; // larger pictures are looked at smaller
constexpr double enlargedPixels =
    3e6; // up to here codes of two pixels a module may be missed, and a second look is cheap

QImage greyPicture(const QImage &image) {
    QImage opaque(image.size(), QImage::Format_RGB32);
    if (image.isNull() || opaque.isNull())
        return {};
    opaque.fill(Qt::white);
    QImage picture = image;
    picture.setDevicePixelRatio(1);
    QPainter(&opaque).drawImage(0, 0, picture);
    const double pixels = static_cast<double>(image.width()) * image.height();
    if (pixels > mostPixels)
        opaque = opaque.scaled(opaque.size() * std::sqrt(mostPixels / pixels), Qt::KeepAspectRatio,
                               Qt::SmoothTransformation);
    return opaque.convertToFormat(QImage::Format_Grayscale8);
}

QRectF boxOf(const zbar::Symbol &symbol, const QSize &size) {
    double left = size.width();
    double top = size.height();
    double right = 0;
    double bottom = 0;
    for (int i = 0; i < symbol.get_location_size(); ++i) {
        left = std::min(left, double(symbol.get_location_x(static_cast<unsigned>(i))));
        right = std::max(right, double(symbol.get_location_x(static_cast<unsigned>(i))));
        top = std::min(top, double(symbol.get_location_y(static_cast<unsigned>(i))));
        bottom = std::max(bottom, double(symbol.get_location_y(static_cast<unsigned>(i))));
    }
    const double width = size.width();
    const double height = size.height();
    const QRectF box(left / width, 1 - bottom / height, (right - left) / width, (bottom - top) / height);
    return box & QRectF(0, 0, 1, 1);
}

QList<DetectedCode> look(const QImage &grey) {
    zbar::ImageScanner scanner;
    scanner.set_config(zbar::ZBAR_NONE, zbar::ZBAR_CFG_ENABLE, 0);
    scanner.set_config(zbar::ZBAR_QRCODE, zbar::ZBAR_CFG_ENABLE, 1);
    // It wants rows without padding.
    const auto width = static_cast<unsigned>(grey.width());
    const auto height = static_cast<unsigned>(grey.height());
    QByteArray pixels;
    pixels.reserve(grey.width() * qsizetype(grey.height()));
    for (int y = 0; y < grey.height(); ++y)
        pixels.append(reinterpret_cast<const char *>(grey.constScanLine(y)), grey.width());
    zbar::Image image(width, height, "Y800", pixels.constData(), static_cast<unsigned long>(pixels.size()));
    QList<DetectedCode> found;
    if (scanner.scan(image) > 0)
        for (auto symbol = image.symbol_begin(); symbol != image.symbol_end(); ++symbol)
            found.append({QString::fromStdString(symbol->get_data()), boxOf(*symbol, grey.size())});
    image.set_data(nullptr, 0);
    return found;
}

/// Codes that an earlier look missed; the same code found again is no second one.
void addNew(QList<DetectedCode> &all, const QList<DetectedCode> &found) {
    for (const DetectedCode &code : found) {
        const bool isKnown = std::any_of(all.cbegin(), all.cend(), [&](const DetectedCode &known) {
            return known.payload == code.payload && known.boundingBox.contains(code.boundingBox.center());
        });
        if (!isKnown)
            all.append(code);
    }
}

} // namespace

void ZBarDetector::prepare() {
    // What the library may take a code's bytes for. The C library loads a conversion with its first use and keeps it
    // as long as one is open, and these stay open.
    static constexpr const char *partOfIso = "ISO8859-";
    for (const char *name : {"CP437", "SJIS", "BIG-5", "UTF-8"})
        iconv_open("UTF-8", name);
    for (int part = 1; part <= 16; ++part)
        iconv_open("UTF-8", (partOfIso + std::to_string(part)).c_str());
}

CodeDetector::Result ZBarDetector::detect(const QImage &image, std::stop_token /*stop*/) {
    QImage grey = greyPicture(image);
    if (grey.isNull())
        return Failure{QStringLiteral("the picture has no pixels, or memory is wanting")};
    QList<DetectedCode> codes = look(grey);
    const bool isSmall = static_cast<double>(grey.width()) * grey.height() <= enlargedPixels;
    const QImage large = isSmall ? grey.scaled(grey.size() * 2) : QImage();
    if (isSmall)
        addNew(codes, look(large));
    // Light codes on dark ground are found in the negative alone.
    grey.invertPixels();
    addNew(codes, look(grey));
    return codes;
}

} // namespace tavrine
