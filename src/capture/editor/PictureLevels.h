#pragma once

#include <QImage>

#include <memory>
#include <vector>

class QPainter;

namespace tavrine {

/// A picture to be shown at any size: itself, and each half as large as the one before, as far as they were needed. A
/// value whose copies share the pixels; main thread.
class PictureLevels {
public:
    PictureLevels() = default;
    PictureLevels(const QImage &picture); // NOLINT(google-explicit-constructor): a picture is shown as it is

    [[nodiscard]] bool isNull() const { return !m_levels; }
    [[nodiscard]] bool hasAlphaChannel() const;

    /// Paints what of the picture lies within `seen` when the whole fills `whole`, and nothing else: the whole may be
    /// many times larger than what is painted on. `dots` is device pixels for one of the painter's own.
    ///
    /// Pixel for pixel at its own size; smooth when smaller and when somewhat larger; in squares when much larger.
    void paint(QPainter &painter, const QRectF &whole, const QRectF &seen, double dots) const;

private:
    using Levels = std::vector<QImage>;

    [[nodiscard]] const QImage &levelFor(double dotsPerPixel) const;

    std::shared_ptr<Levels> m_levels; ///< null without a picture
};

} // namespace tavrine
