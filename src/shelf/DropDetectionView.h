#pragma once

#include "base/Date.h"

#include <QPointer>
#include <QWidget>

namespace tavrine {

class Dragging;
class NotchViewModel;
class Time;

/// The content of the shelf's window: it takes drops, and everything else is done by the view within it, which it fills
/// with it. Main thread.
///
/// The answer to a drag is a copy, always, and to a drop too unless nothing of it could be kept. The model is told in a
/// turn of its own, never within the toolkit's call.
class DropDetectionView final : public QWidget {
    Q_OBJECT
public:
    DropDetectionView(NotchViewModel &viewModel, Time &time, Dragging &dragging, QWidget *parent = nullptr);

    /// The end of a drag is heard of before its drop at times.
    static constexpr Seconds untilDropHasCome{0.3};

    /// Takes it over.
    void setContent(QWidget *shelf);

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void setTargetActive(bool isActive);
    void awaitDrop();

    QPointer<NotchViewModel> m_viewModel;
    Time &m_time;
    Dragging &m_dragging;
    QPointer<QWidget> m_content;
    int m_entered = 0;          ///< how often a drag came in
    bool m_isUndecided = false; ///< the last one has neither been dropped here nor been heard to end
};

} // namespace tavrine
