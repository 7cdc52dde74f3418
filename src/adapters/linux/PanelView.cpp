#include "adapters/linux/PanelView.h"

#include "adapters/linux/IdleMemory.h"
#include "base/DesktopWords.h"

#include <QApplication>
#include <QBackingStore>
#include <QCloseEvent>
#include <QDialog>
#include <QPainter>
#include <QVBoxLayout>
#include <QWindow>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr auto untilRest = 1s; ///< a panel that was just closed is often wanted again

} // namespace

PanelView::PanelView(const PanelDescription &description, Qt::WindowFlags flags)
    : QWidget(nullptr, flags), m_description(description), m_frame(QPoint(), description.contentSize.toSize()) {
    setAttribute(Qt::WA_TranslucentBackground, description.isClear);
    setAttribute(Qt::WA_ShowWithoutActivating, !description.canBecomeKey);
    setAttribute(Qt::WA_QuitOnClose, false);
    setAttribute(Qt::WA_AlwaysShowToolTips); // of a panel that never has the keyboard as well
    setWindowTitle(inDesktopWords(description.title));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSizeConstraint(QLayout::SetNoConstraint); // a panel shrinks below what its content would like
    resize(m_frame.size());
    m_restsSoon.setSingleShot(true);
    m_restsSoon.setInterval(untilRest);
    QObject::connect(&m_restsSoon, &QTimer::timeout, this, [this] { rest(); });
}

void PanelView::setContent(QWidget *content) {
    delete m_content.data();
    m_content = content;
    if (!content)
        return;
    if (m_description.isInTaskBar)
        setWindowIcon(content->windowIcon());
    layout()->addWidget(content);
}

void PanelView::setRoom(const QMargins &room) {
    m_room = room;
    layout()->setContentsMargins(room);
}

/// One that stands before this panel would be left alone.
void PanelView::withdrawQuestion() {
    auto *question = qobject_cast<QDialog *>(QApplication::activeModalWidget());
    if (question && question->windowHandle() && question->windowHandle()->transientParent() == windowHandle())
        question->reject();
}

void PanelView::paintEvent(QPaintEvent *) {
    if (m_room.isNull())
        return;
    QPainter painter(this);
    m_description.shadow.paint(painter, QRectF(rect().marginsRemoved(m_room)));
}

void PanelView::closeEvent(QCloseEvent *event) {
    event->ignore(); // it goes by the program's own way, which answers what it asked
    if (onClosed)
        onClosed();
}

void PanelView::showEvent(QShowEvent *event) {
    m_restsSoon.stop();
    QWidget::showEvent(event);
}

void PanelView::hideEvent(QHideEvent *event) {
    QWidget::hideEvent(event);
    m_restsSoon.start();
}

/// The picture of a hidden panel takes a megabyte or more, and its next showing paints all of it anyway.
void PanelView::rest() {
    if (QBackingStore *picture = backingStore())
        picture->resize(QSize(1, 1)); // none at all is no size for it
    giveIdleMemoryBack();
}

} // namespace tavrine
