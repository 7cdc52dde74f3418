#include "capture/PngData.h"

#include <QBuffer>
#include <QImageWriter>

namespace tavrine {

std::optional<QByteArray> pngData(const QImage &image) {
    if (image.isNull())
        return std::nullopt;
    QByteArray data;
    QBuffer buffer(&data);
    if (!buffer.open(QIODevice::WriteOnly) || !QImageWriter(&buffer, "png").write(image))
        return std::nullopt;
    return data;
}

} // namespace tavrine
