#pragma once

#include <QByteArray>
#include <QImage>

#include <optional>

namespace tavrine {

/// The picture as the bytes of a PNG file, pixel for pixel. None when it has no pixels or cannot be written.
[[nodiscard]] std::optional<QByteArray> pngData(const QImage &image);

} // namespace tavrine
