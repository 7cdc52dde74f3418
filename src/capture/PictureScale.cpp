#include "capture/PictureScale.h"

#include <cmath>

namespace tavrine {
namespace {

constexpr double plainDotsPerMetre = 96 / 0.0254;
constexpr double largestScale = 4; // of a desktop
constexpr double largestText = 3;  // which a person may want on top of it
constexpr double quarters = 4;
constexpr double rounding = 0.002; // dots per metre are whole numbers
constexpr double steps = 1000;     // and so is the scale, in thousandths

} // namespace

QImage withScaleOfItsFile(QImage picture, PictureSource source) {
    double scale = std::round(picture.dotsPerMeterX() / plainDotsPerMetre * steps) / steps;
    const double inQuarters = std::round(scale * quarters) / quarters;
    if (std::abs(scale - inQuarters) <= rounding)
        scale = inQuarters;
    else if (source == PictureSource::elsewhere)
        scale = 1;
    const double most = source == PictureSource::captureTool ? largestScale * largestText : largestScale;
    if (scale < 1 || scale > most || picture.dotsPerMeterX() != picture.dotsPerMeterY())
        scale = 1;
    picture.setDevicePixelRatio(scale);
    return picture;
}

QImage withoutScale(QImage picture) {
    picture.setDevicePixelRatio(1);
    picture.setDotsPerMeterX(int(std::lround(plainDotsPerMetre)));
    picture.setDotsPerMeterY(int(std::lround(plainDotsPerMetre)));
    return picture;
}

} // namespace tavrine
