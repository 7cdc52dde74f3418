#pragma once

#include "ports/ImageCoder.h"

namespace tavrine {

/// JPEG through libjpeg-turbo, reading through Qt's image formats.
///
/// One instance serves all threads. What is read is hostile until decoded: a file that is no regular one is not
/// opened, and a picture of more than `maxPixels` is not decoded.
class TurboImageCoder final : public ImageCoder {
public:
    static constexpr qint64 maxPixels = maxImagePixels;
    /// Of larger pictures nothing is kept beside their pixels: 128 megapixels with planes would take 700 MB.
    static constexpr qint64 planesPixels = 32'000'000;

    /// Raises the limit that Qt sets to the memory of one decoded picture, for the whole process, to what `maxPixels`
    /// needs.
    TurboImageCoder();

    /// Transparent pixels become white, as on paper: JPEG has no transparency.
    [[nodiscard]] std::unique_ptr<JpegSource> bitmapRepresentation(const QImage &image) override;
    [[nodiscard]] std::unique_ptr<JpegSource> tiffRepresentation(const QImage &image) override;
    [[nodiscard]] std::optional<QImage> thumbnail(const QString &path, int maxPixelSize) override;
    [[nodiscard]] std::optional<QImage> load(const QString &path) override;
};

} // namespace tavrine
