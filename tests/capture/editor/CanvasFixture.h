#pragma once

#include "capture/editor/DrawingCanvas.h"

#include <QFont>
#include <QGuiApplication>

#include <gtest/gtest.h>

namespace tavrine {

inline QString str(const char *text) {
    return QString::fromUtf8(text);
}

inline DrawingPath drawing(DrawingKind kind, std::vector<QPointF> points, const QColor &color = Qt::red,
                           double lineWidth = 3.0) {
    static int made = 0;
    DrawingPath path;
    path.id = QString::number(++made);
    path.kind = kind;
    path.points = std::move(points);
    path.color = color;
    path.lineWidth = lineWidth;
    return path;
}

inline DrawingPath highlighter(std::vector<QPointF> points, double lineWidth = 12.0, QColor color = Qt::yellow) {
    color.setAlphaF(0.4F);
    DrawingPath path = drawing(DrawingKind::path, std::move(points), color, lineWidth);
    path.isHighlighter = true;
    return path;
}

inline DrawingPath written(const QString &text, const QPointF &at, double lineWidth = 3.0,
                           const QColor &color = Qt::red) {
    DrawingPath path = drawing(DrawingKind::text, {at}, color, lineWidth);
    path.text = text;
    return path;
}

inline DrawingPath stamp(std::optional<int> number, const QPointF &at, double lineWidth = 3.0,
                         const QColor &color = Qt::red) {
    DrawingPath path = drawing(DrawingKind::number, {at}, color, lineWidth);
    path.number = number;
    return path;
}

/// What the editor holds, and the bindings to it.
struct CanvasState {
    DrawingTool tool = DrawingTool::pen;
    std::vector<DrawingPath> drawings;
    QColor selectedColor = Qt::red;
    double lineWidth = 3.0;
    int nextStampNumber = 1;
    int writes = 0; ///< how often the drawings were written

    [[nodiscard]] DrawingCanvas canvas() {
        DrawingCanvas made;
        made.tool = {[this] { return tool; }, [this](DrawingTool now) { tool = now; }};
        made.drawings = {[this] { return drawings; },
                         [this](std::vector<DrawingPath> now) {
                             drawings = std::move(now);
                             ++writes;
                         }};
        made.nextStampNumber = {[this] { return nextStampNumber; }, [this](int now) { nextStampNumber = now; }};
        made.selectedColor = selectedColor;
        made.lineWidth = lineWidth;
        return made;
    }
};

/// Letters are drawn in a family that every machine with the tests has, and which is asked for by its name.
struct KnownFont {
    KnownFont() : before(QGuiApplication::font()) { QGuiApplication::setFont(QFont(str("DejaVu Sans"))); }
    ~KnownFont() { QGuiApplication::setFont(before); }
    QFont before;
};

} // namespace tavrine
