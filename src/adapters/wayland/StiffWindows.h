#pragma once

#include <QObject>

class QWidget;
class QWindow;

namespace tavrine {

/// Has large windows that can hardly shrink float where a compositor tiles: a tile that is smaller would cut them. Such
/// compositors let a window float whose least and largest size are one when it comes; once it is there both are its own
/// again. Lives on the main thread.
class StiffWindows final : public QObject {
public:
    StiffWindows();

    /// More than half of its size is its least, both ways.
    [[nodiscard]] static bool isStiff(const QWidget &window);

protected:
    bool eventFilter(QObject *object, QEvent *event) override;
};

} // namespace tavrine
