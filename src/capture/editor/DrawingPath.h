#pragma once

#include "base/Uuid.h"

#include <QColor>
#include <QPointF>
#include <QString>

#include <optional>
#include <vector>

namespace tavrine {

/// The tools of the editor. The numbers are not the order of the tool row.
enum class DrawingTool {
    pen = 0,
    highlighter = 1,
    eraser = 2,
    arrow = 3,
    text = 4,
    rectangle = 5,
    oval = 6,
    numberStamp = 7,
};

enum class DrawingKind { path = 0, arrow = 1, rectangle = 2, oval = 3, text = 4, number = 5 };

enum class AnnotationThickness { thin = 0, medium = 1, thick = 2 };

/// One annotation, independent of the size at which the picture is shown.
struct DrawingPath {
    QString id; ///< new for each annotation
    DrawingKind kind = DrawingKind::path;
    /// Fractions of the canvas' width and height, the origin at the top left. A path has any number, arrow, rectangle
    /// and oval have two (start and end), text and number one.
    std::vector<QPointF> points;
    QColor color;
    double lineWidth = 3.0; ///< in points; no fraction of anything
    bool isHighlighter = false;
    std::optional<QString> text; ///< of a text
    std::optional<int> number;   ///< of a number stamp
    bool operator==(const DrawingPath &) const = default;
};

} // namespace tavrine
