#include "recording/RecordingGeometry.h"

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

/// H.264 and four pixels of colour to one of brightness: only even sizes can be coded.
int evenPixels(double length, double scale) {
    const int rounded = static_cast<int>(std::round(length * scale)); // ties go away from zero
    return std::max(rounded - rounded % 2, minPixelDimension);
}

} // namespace

QRectF recordingSourceRect(const QRectF &area, double screenHeight) {
    return {area.x(), screenHeight - area.y() - area.height(), area.width(), area.height()};
}

QSize recordingPixelSize(QSizeF area, double scale) {
    return {evenPixels(area.width(), scale), evenPixels(area.height(), scale)};
}

int recordingBitRate(QSize pixels) {
    const qint64 wanted = qint64{pixels.width()} * pixels.height() * bitsPerPixelPerSecond;
    return static_cast<int>(std::clamp<qint64>(wanted, minVideoBitRate, maxVideoBitRate));
}

} // namespace tavrine
