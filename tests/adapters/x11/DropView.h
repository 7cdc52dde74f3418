#pragma once

#include "adapters/x11/X11ApplicationActivator.h"
#include "adapters/x11/X11Dragging.h"
#include "adapters/x11/X11EdgeWindow.h"
#include "adapters/x11/X11Screens.h"

#include <QDragEnterEvent>
#include <QElapsedTimer>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QWidget>

#include <atomic>

namespace tavrine {

/// Takes drops as the content of a window at the edge, and begins a drag of what it is given.
class DropView final : public QWidget {
public:
    explicit DropView(Dragging &dragging) : m_dragging(dragging) {
        setAcceptDrops(true);
        resize(300, 100);
    }

    int entered = 0;
    std::optional<DroppedContent> content;
    bool isWithinEvent = false;
    std::atomic<int> events = 0; ///< drops whose event is over
    double blockedMs = 0;        ///< how long the last drop's event took

    std::optional<DraggedItem> item;
    std::function<quint32()> mask = [] { return dragOperation::copy; };
    std::optional<quint32> done;

protected:
    void dragEnterEvent(QDragEnterEvent *event) override {
        ++entered;
        event->setDropAction(Qt::CopyAction);
        event->accept();
    }
    void dragMoveEvent(QDragMoveEvent *event) override {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    }
    void dropEvent(QDropEvent *event) override {
        content.reset();
        QElapsedTimer timer;
        timer.start();
        m_dragging.readDrop(*event->mimeData(), [view = QPointer(this)](const DroppedContent &dropped) {
            if (view)
                view->content = dropped;
        });
        blockedMs = double(timer.nsecsElapsed()) / 1e6;
        isWithinEvent = content.has_value();
        event->setDropAction(Qt::CopyAction);
        event->setAccepted(!content || !content->fileUrls.isEmpty() || content->fileUrlString ||
                           !content->images.isEmpty() || content->string);
        ++events;
    }
    void paintEvent(QPaintEvent *) override { QPainter(this).fillRect(rect(), Qt::darkBlue); }
    void mousePressEvent(QMouseEvent *) override {}
    void mouseMoveEvent(QMouseEvent *event) override {
        if (!item || !(event->buttons() & Qt::LeftButton))
            return;
        const DraggedItem dragged = *std::exchange(item, std::nullopt);
        const QPointer<DropView> alive(this);
        const quint32 operation = m_dragging.beginDragging(*this, dragged, mask);
        if (alive)
            done = operation;
    }

private:
    Dragging &m_dragging;
};

} // namespace tavrine
