#pragma once

#include "ports/ImageCoder.h"

#include <functional>
#include <utility>
#include <vector>

namespace tavrine {

/// Pictures without pixels: what it encodes is a line with the picture's size and as many bytes of filling as a test
/// wants, and what it reads is a black picture of that size. It outlives the sources that it made.
class FakeImageCoder final : public ImageCoder {
public:
    enum class Way { bitmap, tiff };

    [[nodiscard]] std::unique_ptr<JpegSource> bitmapRepresentation(const QImage &image) override;
    [[nodiscard]] std::unique_ptr<JpegSource> tiffRepresentation(const QImage &image) override;
    [[nodiscard]] std::optional<QImage> thumbnail(const QString &path, int maxPixelSize) override;
    [[nodiscard]] std::optional<QImage> load(const QString &path) override;

    /// How many bytes a factor gives: none for an encoding that fails. At first ten thousand times the factor.
    void setSize(std::function<std::optional<qsizetype>(double factor)> size) { m_size = std::move(size); }

    /// Whether that way makes nothing of any picture.
    void setFails(Way way, bool fails) { (way == Way::bitmap ? m_failsBitmap : m_failsTiff) = fails; }

    /// The picture is known, from a part of it, to be larger whenever it is.
    void setKnowsSizeAhead(bool knows) { m_knowsSizeAhead = knows; }

    /// Every factor that was encoded with, in order, with the way that its picture came.
    [[nodiscard]] const std::vector<std::pair<Way, double>> &tried() const { return m_tried; }

private:
    class Source;
    std::unique_ptr<JpegSource> source(const QImage &image, Way way);

    std::function<std::optional<qsizetype>(double)> m_size = [](double factor) {
        return std::optional(static_cast<qsizetype>(factor * 10'000));
    };
    bool m_failsBitmap = false;
    bool m_failsTiff = false;
    bool m_knowsSizeAhead = false;
    std::vector<std::pair<Way, double>> m_tried;
};

} // namespace tavrine
