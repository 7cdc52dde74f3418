#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

namespace tavrine {

/// Where a picture stands in the place that shows it, and how large. A value; nothing here touches what is drawn on
/// the picture, which knows fractions only. All sizes are points: those of a picture are its pixels over its own scale.
///
/// It fits until a person zooms: the whole picture shows, never larger than it is unless it is tiny. A picture that is
/// larger than its place can be moved, but not out of sight; a smaller one stands in the middle.
class ImageZoom {
public:
    static constexpr double margin = 24;         ///< points beside and over a picture that fits
    static constexpr double bottomMargin = 76;   ///< and under it, where the pills float
    static constexpr double smallestShown = 240; ///< what a tiny picture's longer edge may grow to
    static constexpr double smallest = 0.02;
    static constexpr double largest = 16;
    static constexpr double step = 1.25;

    void setImageSize(QSizeF size);
    void setPlace(QSizeF size);

    [[nodiscard]] bool isFit() const { return m_isFit; }
    [[nodiscard]] double scale() const; ///< points shown for a point of the picture
    /// In the place's coordinates. Empty without a picture or a place.
    [[nodiscard]] QRectF imageRect() const;

    void fit();
    /// What stands under `anchor` stays there. A scale that is no number changes nothing.
    void zoomTo(double scale, QPointF anchor);
    void zoomBy(double factor, QPointF anchor) { zoomTo(scale() * factor, anchor); }
    void moveBy(QPointF distance);

    bool operator==(const ImageZoom &) const = default;

private:
    [[nodiscard]] double fittingScale() const;
    [[nodiscard]] double bounded(double scale) const;
    [[nodiscard]] QPointF fittingCorner(QSizeF shown) const;
    [[nodiscard]] QPointF presentMiddle() const;
    void clampMiddle();

    QSizeF m_imageSize;
    QSizeF m_place;
    bool m_isFit = true;
    double m_scale = 1;
    QPointF m_middle; // of the place, on the picture; used while it does not fit
};

} // namespace tavrine
