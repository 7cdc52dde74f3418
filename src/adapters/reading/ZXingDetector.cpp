#include "adapters/reading/ZXingDetector.h"

#include <QPolygonF>

#define ZX_USE_UTF8 // the texts as UTF-8, as the next release has them
#include <algorithm>
#include <cmath>

#include <ZXing/ReadBarcode.h>

namespace tavrine {
namespace {

constexpr double mostPixels = 40e6; // larger pictures are looked at smaller

QImage luminance(const QImage &image) {
    if (image.isNull())
        return {};
    QImage picture = image;
    const double pixels = static_cast<double>(image.width()) * image.height();
    if (pixels > mostPixels)
        picture = picture.scaled(picture.size() * std::sqrt(mostPixels / pixels), Qt::KeepAspectRatio,
                                 Qt::SmoothTransformation);
    if (picture.hasAlphaChannel()) {
        picture = picture.convertToFormat(QImage::Format_ARGB32);
        for (int y = 0; y < picture.height(); ++y) {
            auto *line = reinterpret_cast<QRgb *>(picture.scanLine(y));
            for (int x = 0; x < picture.width(); ++x) { // what is transparent stands on white
                const int alpha = qAlpha(line[x]);
                const int grey = (qGray(line[x]) * alpha + 255 * (255 - alpha)) / 255;
                line[x] = qRgb(grey, grey, grey);
            }
        }
    }
    return picture.convertToFormat(QImage::Format_Grayscale8);
}

QRectF boxOf(const ZXing::Position &position, const QSize &size) {
    QPolygonF corners;
    for (const ZXing::PointI &corner : position)
        corners << QPointF(double(corner.x) / size.width(), 1 - double(corner.y) / size.height());
    return corners.boundingRect() & QRectF(0, 0, 1, 1);
}

QList<DetectedCode> read(const QImage &grey) {
    auto hints = ZXing::DecodeHints();
    hints.setFormats(ZXing::BarcodeFormat::QRCode).setTryHarder(true).setTryRotate(true).setTryDownscale(true);
    const ZXing::ImageView view(grey.constBits(), grey.width(), grey.height(), ZXing::ImageFormat::Lum,
                                static_cast<int>(grey.bytesPerLine()));
    QList<DetectedCode> found;
    for (const ZXing::Result &result : ZXing::ReadBarcodes(view, hints))
        if (result.isValid())
            found.append({QString::fromStdString(result.text()), boxOf(result.position(), grey.size())});
    return found;
}

} // namespace

CodeDetector::Result ZXingDetector::detect(const QImage &image, std::stop_token /*stop*/) {
    QImage grey = luminance(image);
    if (grey.isNull())
        return Failure{QStringLiteral("the picture has no pixels, or memory is wanting")};
    QList<DetectedCode> codes = read(grey);
    grey.invertPixels(); // light codes on dark ground
    const QList<DetectedCode> negatives = read(grey);
    for (const DetectedCode &code : negatives) {
        const bool isKnown = std::any_of(codes.cbegin(), codes.cend(), [&](const DetectedCode &known) {
            return known.payload == code.payload && known.boundingBox.intersects(code.boundingBox);
        });
        if (!isKnown)
            codes.append(code);
    }
    return codes;
}

} // namespace tavrine
