#pragma once

#include <QRect>

namespace tavrine {

/// Where a magnifier stands beside the pixel that it enlarges, and where each enlarged pixel lies in it.
///
/// A value in device pixels. Its label (a place or a colour) hangs below the circle. It stays on the pixel's monitor
/// and never covers the pixel, as long as the monitor has room for it at all.
struct MagnifierGeometry {
    /// Enlarged pixels across the circle; odd, so that one is in the middle.
    static constexpr int cells = 13;

    QPoint pixel;
    QRect circle;
    QRect label;
    int cell = 0; ///< the side of an enlarged pixel

    /// `outward` says on which side of the pixel it stands by preference, each axis 1 or -1. It changes sides at the
    /// monitor's edges.
    [[nodiscard]] static MagnifierGeometry place(QPoint pixel, const QRect &monitor, double scale, QSize label,
                                                 QPoint outward = {1, 1});

    /// The screen's pixel that is shown in a column and a row of the circle; it may lie outside the screen.
    [[nodiscard]] QPoint pixelAt(int column, int row) const {
        return pixel + QPoint(column - cells / 2, row - cells / 2);
    }
    [[nodiscard]] QRect cellRect(int column, int row) const {
        return {circle.x() + column * cell, circle.y() + row * cell, cell, cell};
    }
    /// All that is painted, with the shadow.
    [[nodiscard]] QRect bounds() const;

    bool operator==(const MagnifierGeometry &) const = default;
};

} // namespace tavrine
