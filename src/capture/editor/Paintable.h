#pragma once

#include <QImage>

namespace tavrine {

/// The picture in one of the two formats that are painted, and painted on, without a conversion each time. Shares the
/// pixels of a picture that has it already; null when there is no memory for others.
[[nodiscard]] inline QImage paintable(const QImage &picture) {
    return picture.convertToFormat(picture.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                                             : QImage::Format_RGB32);
}

} // namespace tavrine
