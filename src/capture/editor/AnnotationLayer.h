#pragma once

#include "capture/editor/DrawingPath.h"

#include <QImage>
#include <QRegion>

namespace tavrine {

/// The picture and the annotations on it as pixels of the screen, kept between two frames: of the part of the canvas
/// that shows, which may be far smaller than the canvas. Only what differs from the last list is painted again; the
/// pixels are those of a picture painted from nothing. A member of the view; main thread only.
///
/// All rectangles are device pixels of the whole canvas.
class AnnotationLayer {
public:
    /// Which part of which canvas is kept.
    struct Place {
        QSizeF canvas; ///< in points
        QRect area;
        double scale = 1; ///< device pixels per point
        bool operator==(const Place &) const = default;
    };

    /// `ground` is what lies under the annotations there, pixel for pixel. Whatever was shown is painted anew by the
    /// next `show`.
    void setGround(const QImage &ground, const Place &place);
    /// Returns what looks different now.
    QRegion show(const std::vector<DrawingPath> &drawings);

    /// The pixels of `place().area`. Null until there is a ground with an area.
    [[nodiscard]] const QImage &image() const { return m_image; }
    [[nodiscard]] const Place &place() const { return m_place; }

private:
    struct Shown {
        DrawingPath path;
        QRect area;
    };
    [[nodiscard]] QRect areaOf(const DrawingPath &path) const;
    [[nodiscard]] QRegion takeOver(const std::vector<DrawingPath> &drawings);
    void paint(const QRegion &region, size_t first);

    QImage m_ground;
    QImage m_image;
    Place m_place;
    bool m_isFresh = false; // nothing of the list is in the image yet
    std::vector<Shown> m_shown;
};

} // namespace tavrine
