#include "adapters/wayland/LayerPanelView.h"

#include "adapters/stream/ToolkitPoints.h"
#include "adapters/wayland/LayerShell.h"

#include <QBackingStore>
#include <QGraphicsOpacityEffect>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QWindow>

#include <utility>

namespace tavrine {
namespace {

/// Some compositors place a window in the turn after the one in which they are told.
constexpr int turnsToMove = 2;

Qt::WindowFlags flagsFor(const PanelDescription &description) {
    Qt::WindowFlags flags = Qt::Window | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint;
    if (!description.canBecomeKey)
        flags |= Qt::WindowDoesNotAcceptFocus;
    return flags;
}

qint64 areaWithin(const QRect &frame, const QScreen &screen) {
    const QRect part = frame & screen.geometry();
    return qint64{part.width()} * part.height();
}

} // namespace

LayerPanelView::LayerPanelView(LayerShell &shell, LayerStack &stack, const PanelDescription &description)
    : PanelView(description, flagsFor(description)), m_shell(shell), m_stack(stack),
      m_ignoresMouseEvents(description.ignoresMouseEvents) {
    setRoom(description.hasShadow ? description.shadow.room : QMargins());
    create();
}

LayerPanelView::~LayerPanelView() {
    orderOut();
}

QScreen *LayerPanelView::screenOfFrame() const {
    QScreen *best = QGuiApplication::primaryScreen();
    const auto screens = QGuiApplication::screens();
    for (QScreen *screen : screens)
        if (areaWithin(m_frame, *screen) > (best ? areaWithin(m_frame, *best) : -1))
            best = screen;
    return best && !best->geometry().isEmpty() ? best : nullptr;
}

LayerPlace LayerPanelView::place() const {
    const LayerStack::Standing standing = m_standing ? (*m_standing)->standing : LayerStack::Standing{};
    return {.rect = m_frame.marginsAdded(room()),
            .takesKeyboard = standing.takesKeyboard,
            .isOverFullScreen = standing.isOverFullScreen};
}

void LayerPanelView::setFrame(const QRect &frame) {
    const bool isResized = frame.size() != m_frame.size();
    m_frame = frame;
    setGeometry(frame.marginsAdded(room()));
    if (!m_standing)
        return;
    m_stack.follow(*m_standing, m_frame);
    if (!m_grip && (!m_role || m_role->screen() != screenOfFrame())) {
        vanish();
        return appear();
    }
    if (m_grip)
        return sendMove();
    m_role->setPlace(place());
    if (isResized)
        showInput();
}

void LayerPanelView::order(bool wantsKeyboard) {
    if (m_standing) {
        const bool wasCovered = !(*m_standing)->standing.isOverFullScreen;
        m_stack.remove(*std::exchange(m_standing, std::nullopt));
        if (wasCovered)
            vanish(); // not every compositor raises a window that changes its layer; all have a new one in its place
    }
    m_standing = m_stack.add({.level = m_description.level,
                              .rect = m_frame,
                              .wantsKeyboard = wantsKeyboard,
                              .stand = [this](const LayerStack::Standing &) {
                                  if (m_role)
                                      m_role->setPlace(place());
                              }});
    if (m_role && m_role->screen() == screenOfFrame())
        m_role->setPlace(place());
    else
        appear();
}

void LayerPanelView::orderOut() {
    m_grip.reset();
    vanish();
    if (m_standing)
        m_stack.remove(*std::exchange(m_standing, std::nullopt));
}

/// Without a screen it waits for one: whoever owns the panel gives it another frame then.
void LayerPanelView::appear() {
    QScreen *screen = screenOfFrame();
    if (!screen)
        return;
    // The toolkit would keep the picture with the pixels that its points had when it was last shown.
    const double factor = toolkitPoints::factor(screen);
    if (QBackingStore *picture = backingStore(); picture && std::exchange(m_factor, factor) != factor)
        picture->resize(QSize(1, 1));
    windowHandle()->setScreen(screen);
    setGeometry(m_frame.marginsAdded(room()));
    windowHandle()->setGeometry(geometry()); // its points may have another size than when it was last shown
    m_role = std::make_unique<LayerRole>(m_shell, *windowHandle(), *screen, place(), [this] {
        QMetaObject::invokeMethod(
            this, [this] { closed(); }, Qt::QueuedConnection);
    });
    if (!m_role->isGiven()) {
        m_role.reset();
        return;
    }
    showInput();
    m_known = geometry().topLeft();
    fade();
    show();
    showInput(); // a mask that its content has asked for by now is the toolkit's word for where it takes the mouse
}

void LayerPanelView::vanish() {
    if (m_answer)
        wl_callback_destroy(std::exchange(m_answer, nullptr));
    if (!m_role)
        return;
    m_role.reset();
    hide();
    m_shell.flush();
}

/// Its screen is gone, or has points of another size: what stood in the middle still does then.
void LayerPanelView::closed() {
    QScreen *screen = m_role ? m_role->screen() : nullptr;
    if (screen) {
        const QPoint corner = screen->geometry().topLeft();
        const double growth = toolkitPoints::factor(screen) / m_role->factor();
        m_frame.moveCenter(corner + (m_frame.center() - corner) / growth);
    }
    vanish();
    if (m_standing)
        appear();
}

void LayerPanelView::setIgnoresMouseEvents(bool ignores) {
    m_ignoresMouseEvents = ignores;
    showInput();
}

/// The room for the shadow takes no clicks, and neither does what a mask leaves out.
void LayerPanelView::showInput() {
    if (!m_role)
        return;
    QRegion input = m_ignoresMouseEvents ? QRegion() : QRegion(QRect({room().left(), room().top()}, m_frame.size()));
    if (!mask().isEmpty())
        input &= mask();
    m_role->setInputRegion(input);
}

void LayerPanelView::setAlpha(double alpha) {
    if (std::exchange(m_alpha, alpha) == alpha)
        return;
    fade();
    update();
}

/// The compositor knows no window's opacity, so the panel is painted through itself.
void LayerPanelView::fade() {
    QWidget *inside = content();
    if (!inside)
        return;
    auto *effect = qobject_cast<QGraphicsOpacityEffect *>(inside->graphicsEffect());
    if (m_alpha >= 1) {
        if (effect)
            inside->setGraphicsEffect(nullptr);
        return;
    }
    if (!effect) {
        effect = new QGraphicsOpacityEffect(inside);
        inside->setGraphicsEffect(effect);
    }
    effect->setOpacity(m_alpha);
}

void LayerPanelView::paintEvent(QPaintEvent *) {
    if (room().isNull() || m_alpha <= 0)
        return;
    QPainter painter(this);
    painter.setOpacity(m_alpha);
    m_description.shadow.paint(painter, QRectF(rect().marginsRemoved(room())));
}

// Moved by the person. What the compositor tells of the pointer is in the window's own points, from where the window
// was when it told it.

void LayerPanelView::mousePressEvent(QMouseEvent *event) {
    if (!m_description.isMovableByBackground || event->button() != Qt::LeftButton)
        return;
    m_grip = event->position().toPoint();
    m_known = geometry().topLeft();
}

void LayerPanelView::mouseMoveEvent(QMouseEvent *event) {
    if (!m_grip)
        return;
    const QPoint corner = m_known + event->position().toPoint() - *m_grip;
    setFrame(QRect(corner, size()).marginsRemoved(room()));
}

void LayerPanelView::mouseReleaseEvent(QMouseEvent *) {
    if (!std::exchange(m_grip, std::nullopt))
        return;
    setFrame(m_frame); // perhaps on another screen now
    if (onMoved)
        onMoved();
}

/// Until the compositor says that it has done what it was told, it tells the pointer's place in the window where that
/// was before. So it is told one move at a time.
void LayerPanelView::sendMove() {
    if (m_answer || !m_role)
        return;
    m_sent = geometry().topLeft();
    m_role->setPlace(place());
    m_answersLeft = turnsToMove;
    awaitMove();
}

void LayerPanelView::awaitMove() {
    static constexpr wl_callback_listener listener{.done = [](void *self, wl_callback *callback, std::uint32_t) {
        auto *view = static_cast<LayerPanelView *>(self);
        wl_callback_destroy(callback);
        view->m_answer = nullptr;
        if (--view->m_answersLeft > 0)
            view->awaitMove();
        else
            view->moved();
    }};
    m_answer = wl_display_sync(m_shell.display());
    wl_callback_add_listener(m_answer, &listener, this);
    m_shell.flush();
}

void LayerPanelView::moved() {
    m_known = m_sent;
    if (m_grip && m_sent != geometry().topLeft())
        sendMove();
}

} // namespace tavrine
