#include "shelf/DropDetectionView.h"

#include "base/Print.h"
#include "base/Time.h"
#include "ports/Dragging.h"
#include "shelf/NotchViewModel.h"
#include "shelf/ShelfDrop.h"

#include <QDragEnterEvent>
#include <QMimeData>

#include <algorithm>
#include <memory>
#include <utility>

namespace tavrine {
namespace {

/// Files, addresses, pictures and texts in all their forms. Browsers give a picture's bytes without saying that it is
/// one.
bool mayBeKept(const QMimeData &data) {
    const QStringList formats = data.formats();
    return std::any_of(formats.begin(), formats.end(), [](const QString &format) {
        return format.startsWith(QStringLiteral("text/")) || format.startsWith(QStringLiteral("image/")) ||
               format == QStringLiteral("application/rtf") || format == QStringLiteral("application/octet-stream") ||
               format == QStringLiteral("application/x-qt-image");
    });
}

/// The shelf never takes a thing away from where it was, whatever the other program proposes.
void answerCopy(QDropEvent &event) {
    event.setDropAction(Qt::CopyAction);
    event.accept();
}

} // namespace

DropDetectionView::DropDetectionView(NotchViewModel &viewModel, Time &time, Dragging &dragging, QWidget *parent)
    : QWidget(parent), m_viewModel(&viewModel), m_time(time), m_dragging(dragging) {
    setAcceptDrops(true);
    connect(&viewModel, &NotchViewModel::dragEnded, this, &DropDetectionView::awaitDrop);
}

void DropDetectionView::setContent(QWidget *shelf) {
    delete m_content.data();
    m_content = shelf;
    shelf->setParent(this);
    shelf->setGeometry(rect());
    shelf->show();
    setFocusProxy(shelf);
}

void DropDetectionView::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    if (m_content)
        m_content->setGeometry(rect());
}

void DropDetectionView::setTargetActive(bool isActive) {
    m_time.async(this, [this, isActive] {
        if (!m_viewModel)
            return;
        m_viewModel->setDragTargetActive(isActive);
        if (isActive)
            m_viewModel->setHovering(true);
    });
}

void DropDetectionView::dragEnterEvent(QDragEnterEvent *event) {
    if (!mayBeKept(*event->mimeData()))
        return;
    printLine(QStringLiteral("[NotchShelf] Drag entered!"));
    ++m_entered;
    m_isUndecided = true;
    setTargetActive(true);
    answerCopy(*event);
}

void DropDetectionView::dragMoveEvent(QDragMoveEvent *event) {
    answerCopy(*event);
}

void DropDetectionView::dragLeaveEvent(QDragLeaveEvent *) {
    printLine(QStringLiteral("[NotchShelf] Drag exited"));
    setTargetActive(false);
}

/// One that was here has ended somewhere. A drop tells its own end.
void DropDetectionView::awaitDrop() {
    m_time.asyncAfter(untilDropHasCome, this, [this, entered = m_entered] {
        if (entered == m_entered && std::exchange(m_isUndecided, false))
            printLine(QStringLiteral("[NotchShelf] Drag ended"));
    });
}

/// The desktop tells of no end of its own after a drop: it is this one. A drop of which nothing could be kept is
/// refused, so that the other program shows it as one that failed; one that is not read in time counts as taken.
void DropDetectionView::dropEvent(QDropEvent *event) {
    answerCopy(*event);
    m_isUndecided = false;
    const auto isKept = std::make_shared<bool>(true);
    m_dragging.readDrop(*event->mimeData(),
                        [self = QPointer(this), model = m_viewModel, isKept](const DroppedContent &content) {
                            *isKept = performDragOperation(model, content);
                            printLine(QStringLiteral("[NotchShelf] Drag ended"));
                            if (self)
                                self->setTargetActive(false);
                            else if (model)
                                model->setDragTargetActive(false);
                        });
    if (*isKept)
        return;
    event->setDropAction(Qt::IgnoreAction);
    event->ignore();
}

} // namespace tavrine
