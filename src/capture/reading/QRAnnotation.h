#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QUuid>

namespace tavrine {

/// A code that was found in the editor's picture.
struct QRAnnotation {
    QUuid id;
    QString payload;
    /// Fractions of the picture, the origin at the bottom left.
    QRectF boundingBox;
    bool operator==(const QRAnnotation &) const = default;
};

/// Whether a bubble opens its payload. By the letter: an address in capitals is copied.
[[nodiscard]] bool isUrlForBubble(const QString &payload);

/// Where the bubble of a code stands over a picture of `view` points, by its centre, the origin at the top left: 22
/// points under the code, 100 away from either side and 18 from the bottom. On a picture narrower than 200 points it is
/// in the middle.
[[nodiscard]] QPointF bubbleCentre(const QRectF &boundingBox, const QSizeF &view);

} // namespace tavrine
