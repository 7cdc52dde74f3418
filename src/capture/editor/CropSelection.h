#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <optional>

namespace tavrine {

/// What a person drags out to crop to: two corners as fractions of the picture, the origin at the top left. A value.
class CropSelection {
public:
    static constexpr double smallestPart = 0.01; ///< of the picture's width or height

    /// A drag on a picture that is shown `size` large, from where it began to where it is now. Places outside the
    /// picture count as its edge. Nothing changes for a picture without a size or a place that is no number.
    void drag(QPointF start, QPointF present, QSizeF size);
    void clear();

    [[nodiscard]] const std::optional<QPointF> &start() const { return m_start; }
    [[nodiscard]] const std::optional<QPointF> &end() const { return m_end; }
    [[nodiscard]] bool isEmpty() const { return !m_start || !m_end; }

    /// The whole picture while nothing is selected.
    [[nodiscard]] QRectF rect() const;

    bool operator==(const CropSelection &) const = default;

private:
    std::optional<QPointF> m_start;
    std::optional<QPointF> m_end;
};

} // namespace tavrine
