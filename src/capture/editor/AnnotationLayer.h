#pragma once

#include "capture/editor/DrawingPath.h"

#include <QImage>
#include <QRegion>

namespace tavrine {

/// The picture and the annotations on it as pixels of the screen, kept between two frames. Only what differs from the
/// last list is painted again; the pixels are those of a picture painted from nothing. A member of the view; main
/// thread only.
class AnnotationLayer {
public:
    /// The picture fills `pixelSize`; `scale` is device pixels per point. Null: the ground is clear. Whatever was shown
    /// is painted anew by the next `show`.
    void setGround(const QImage &picture, const QSize &pixelSize, double scale);
    /// Returns what looks different now, in device pixels.
    QRegion show(const std::vector<DrawingPath> &drawings);

    /// Null until there is a ground with an area.
    [[nodiscard]] const QImage &image() const { return m_image; }
    [[nodiscard]] double scale() const { return m_scale; }
    [[nodiscard]] QSize pixelSize() const { return m_image.size(); }

private:
    struct Shown {
        DrawingPath path;
        QRect area; ///< in device pixels
    };
    [[nodiscard]] QRect areaOf(const DrawingPath &path) const;
    [[nodiscard]] QRegion takeOver(const std::vector<DrawingPath> &drawings);
    void paint(const QRegion &region, size_t first);

    QImage m_ground;
    QImage m_image;
    double m_scale = 1;
    bool m_isFresh = false; // nothing of the list is in the image yet
    std::vector<Shown> m_shown;
};

} // namespace tavrine
