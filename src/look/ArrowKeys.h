#pragma once

#include <QPointF>
#include <Qt>

namespace tavrine::look {

/// Where an arrow key leads, one step of it, downwards being more. Null for every other key.
[[nodiscard]] constexpr QPointF arrowDirection(int key) {
    switch (key) {
    case Qt::Key_Left:
        return {-1, 0};
    case Qt::Key_Right:
        return {1, 0};
    case Qt::Key_Up:
        return {0, -1};
    case Qt::Key_Down:
        return {0, 1};
    default:
        return {};
    }
}

} // namespace tavrine::look
