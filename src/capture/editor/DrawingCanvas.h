#pragma once

#include "capture/editor/DrawingPath.h"

#include <QSizeF>

#include <functional>

namespace tavrine {

/// A value that someone else holds, to be read and written. Both closures are set, and live as long as their holder.
template <class Value>
struct Binding {
    std::function<Value()> get;
    std::function<void(Value)> set;
};

/// What the editor hands to the view that is drawn on; a new one whenever something in it changes.
struct DrawingCanvas {
    Binding<DrawingTool> tool;
    Binding<std::vector<DrawingPath>> drawings;
    QColor selectedColor;
    double lineWidth = 3.0;
    Binding<int> nextStampNumber;
    /// For reference. Points are fractions of the view's own bounds, whatever these say.
    QSizeF viewSize;
    QSizeF imageSize;
};

} // namespace tavrine
