#pragma once

#include <QBuffer>
#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QtEndian>

namespace tavrine {

inline QImage coloured(int width, int height, QColor color = QColor(10, 120, 230)) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

inline QByteArray pngOf(const QImage &image) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "png");
    return bytes;
}

/// A small PNG whose header announces this size, with the right check sum: no decoder refuses it for its form.
inline QByteArray pngThatSays(quint32 width, quint32 height) {
    QByteArray bytes = pngOf(coloured(10, 10));
    qToBigEndian(width, bytes.data() + 16);
    qToBigEndian(height, bytes.data() + 20);
    quint32 sum = 0xFFFFFFFF;
    for (qsizetype i = 12; i < 29; ++i) {
        sum ^= static_cast<quint8>(bytes[i]);
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum >> 1) ^ ((sum & 1) ? 0xEDB88320u : 0u);
    }
    qToBigEndian(~sum, bytes.data() + 29);
    return bytes;
}

} // namespace tavrine
