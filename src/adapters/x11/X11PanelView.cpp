#include "adapters/x11/X11PanelView.h"

#include "adapters/x11/X11WindowDescription.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QScreen>
#include <QWindow>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr auto moveSettles = 150ms;      ///< without a further step it is over
constexpr qint64 noticesMayBeLate = 400; ///< milliseconds, in which a window manager tells of our own steps

Qt::WindowFlags flagsFor(const PanelDescription &description) {
    Qt::WindowFlags flags = Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint;
    if (!description.canBecomeKey)
        flags |= Qt::BypassWindowManagerHint | Qt::WindowDoesNotAcceptFocus;
    return flags;
}

QRect wholeDesktop() {
    const QScreen *screen = QGuiApplication::primaryScreen();
    return screen ? screen->virtualGeometry() : QRect();
}

} // namespace

X11PanelView::X11PanelView(const PanelDescription &description)
    : PanelView(description, flagsFor(description)), m_ignoresMouseEvents(description.ignoresMouseEvents) {
    create();
    m_frame.moveTopLeft(geometry().topLeft());
    m_moveEnds.setSingleShot(true);
    m_moveEnds.setInterval(moveSettles);
    QObject::connect(&m_moveEnds, &QTimer::timeout, this, [this] {
        if (onMoved)
            onMoved();
    });
    m_sinceAsked.start();
    m_desktop = wholeDesktop();
}

/// A window manager moves one that is larger than the screen, and the panel in it off the screen.
bool X11PanelView::isThereRoom() const {
    const QRect whole = m_frame.marginsAdded(m_description.shadow.room);
    const QScreen *under = QGuiApplication::screenAt(m_frame.center());
    return !under || (whole.width() <= under->geometry().width() && whole.height() <= under->geometry().height());
}

void X11PanelView::setFrame(const QRect &frame) {
    m_frame = frame;
    m_moveEnds.stop();
    m_sinceAsked.restart();
    setGeometry(frame.marginsAdded(room()));
}

void X11PanelView::insistOnFrame() {
    // The toolkit sends nothing for a geometry that it takes to be the present one.
    const QRect whole = m_frame.marginsAdded(room());
    setGeometry(whole.adjusted(0, 0, 1, 0));
    setGeometry(whole);
    m_sinceAsked.restart();
    shapeInput(*windowHandle(), m_ignoresMouseEvents, room());
}

void X11PanelView::setComposited(bool isComposited) {
    const bool isNews = std::exchange(m_isComposited, isComposited) != isComposited;
    const QMargins wanted =
        isComposited && isThereRoom() && m_description.hasShadow ? m_description.shadow.room : QMargins();
    if (isNews && isComposited)
        clearMask(); // of a content that masked its corners
    if (!isNews && room() == wanted)
        return;
    setRoom(wanted);
    if (isVisible()) {
        describeToDesktop(*windowHandle(), m_description, room());
        insistOnFrame();
        update();
    }
}

void X11PanelView::setIgnoresMouseEvents(bool ignores) {
    m_ignoresMouseEvents = ignores;
    shapeInput(*windowHandle(), ignores, room());
}

void X11PanelView::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    if (!room().isNull())
        shapeInput(*windowHandle(), m_ignoresMouseEvents, room());
}

/// A move that nobody here asked for: the person drags the panel by the window manager's means. Not so while it tells
/// of our own steps, and when it re-arranges windows on other screens.
bool X11PanelView::isMovedByWindowManager() {
    if (!isVisible() || m_grip || geometry().marginsRemoved(room()).size() != m_frame.size())
        return false;
    if (const QRect desktop = wholeDesktop(); std::exchange(m_desktop, desktop) != desktop)
        m_sinceAsked.restart();
    return m_sinceAsked.elapsed() > noticesMayBeLate;
}

void X11PanelView::moveEvent(QMoveEvent *event) {
    QWidget::moveEvent(event);
    const QPoint place = geometry().marginsRemoved(room()).topLeft();
    if (place == m_frame.topLeft() || !isMovedByWindowManager())
        return;
    m_frame.moveTopLeft(place);
    m_moveEnds.start(); // it may go on
}

void X11PanelView::mousePressEvent(QMouseEvent *event) {
    if (m_description.isMovableByBackground && event->button() == Qt::LeftButton)
        m_grip = event->globalPosition().toPoint() - m_frame.topLeft();
}

void X11PanelView::mouseMoveEvent(QMouseEvent *event) {
    if (m_grip)
        setFrame(QRect(event->globalPosition().toPoint() - *m_grip, m_frame.size()));
}

void X11PanelView::mouseReleaseEvent(QMouseEvent *) {
    if (std::exchange(m_grip, std::nullopt) && onMoved)
        onMoved();
}

} // namespace tavrine
