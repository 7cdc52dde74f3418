#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

#include <memory>
#include <optional>

namespace tavrine {

/// A picture from outside with more pixels than this is not decoded, wherever it comes from: 512 MB at four bytes each.
inline constexpr qint64 maxImagePixels = 128'000'000;

/// One picture made ready for JPEG encoding, so that trying several factors costs the preparation once.
class JpegSource {
public:
    virtual ~JpegSource() = default;

    /// The picture as JPEG data. `compressionFactor` runs from 0.0 (smallest) to 1.0 (best). None when it cannot be
    /// encoded.
    [[nodiscard]] virtual std::optional<QByteArray> encode(double compressionFactor) = 0;

    /// True when a part of the picture already proves that `encode` would give more than `size` bytes for this factor,
    /// which costs far less than to encode it whole. False proves nothing.
    [[nodiscard]] virtual bool isCertainlyLargerThan(qsizetype size, double compressionFactor) {
        static_cast<void>(size);
        static_cast<void>(compressionFactor);
        return false;
    }
};

/// Reading and writing of image files. May be called on any thread.
class ImageCoder {
public:
    virtual ~ImageCoder() = default;

    /// The bitmap representation of `image`, as it stands. None when the image has no size or no pixels.
    [[nodiscard]] virtual std::unique_ptr<JpegSource> bitmapRepresentation(const QImage &image) = 0;

    /// A bitmap representation made from the image's TIFF form, for pictures of which the direct way makes nothing.
    [[nodiscard]] virtual std::unique_ptr<JpegSource> tiffRepresentation(const QImage &image) = 0;

    /// The picture in the file at `path`, upright, scaled down so that its longer edge has at most `maxPixelSize`
    /// pixels. A smaller picture keeps its size. None for what is not a picture.
    [[nodiscard]] virtual std::optional<QImage> thumbnail(const QString &path, int maxPixelSize) = 0;

    /// The picture in the file at `path`, upright, in its own size. None for what is not a picture.
    [[nodiscard]] virtual std::optional<QImage> load(const QString &path) = 0;
};

} // namespace tavrine
