#include "adapters/wayland/LayerEdgeView.h"

#include "adapters/wayland/LayerShell.h"

#include <QEvent>
#include <QGuiApplication>
#include <QRegion>
#include <QScreen>
#include <QWindow>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr auto untilAside = 150ms; ///< who is hovered over opens within this
constexpr auto asideFor = 700ms;
constexpr auto untilTaken = 40ms; ///< a compositor that takes the keyboard back does so in 2
constexpr int mostReturns = 5;    ///< one after the other
constexpr std::chrono::milliseconds untilForgotten{5000};

} // namespace

LayerEdgeView::LayerEdgeView(LayerShell &shell, LayerStack &stack, const EdgeWindowDescription &description)
    : EdgeView(description), m_shell(shell), m_stack(stack) {
    m_waits.setSingleShot(true);
    m_waits.setInterval(untilAside);
    QObject::connect(&m_waits, &QTimer::timeout, this, [this] { stepAside(); });
    m_comesBack.setSingleShot(true);
    m_comesBack.setInterval(asideFor);
    QObject::connect(&m_comesBack, &QTimer::timeout, this, [this] {
        m_isAside = false;
        shapeInput();
    });
    m_leaves.setSingleShot(true);
    m_leaves.setInterval(untilTaken);
    QObject::connect(&m_leaves, &QTimer::timeout, this, [this] { lookWhetherLeft(); });
    // A compositor that is busy tells of the keyboard when it is no longer wanted, however long ago that is.
    QObject::connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, [this] {
        if (hasUnwantedKeyboard())
            m_leaves.start();
    });
    follow();
}

LayerEdgeView::~LayerEdgeView() {
    vanish();
}

LayerPlace LayerEdgeView::place() const {
    const LayerStack::Standing standing = m_standing ? (*m_standing)->standing : LayerStack::Standing{};
    return {.rect = geometry(), .takesKeyboard = standing.takesKeyboard, .isOverFullScreen = standing.isOverFullScreen};
}

QScreen *LayerEdgeView::screenOfPlace() const {
    QScreen *screen = QGuiApplication::screenAt(takingPart().translated(geometry().topLeft()).center());
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    return screen && !screen->geometry().isEmpty() ? screen : nullptr;
}

void LayerEdgeView::putAt(const QRect &place) {
    EdgeView::putAt(place);
    if (m_role && m_role->screen() == screenOfPlace())
        m_role->setPlace(this->place());
    else if (m_isAppearing)
        QMetaObject::invokeMethod( // once its frame is settled
            this,
            [this] {
                if (std::exchange(m_isAppearing, false)) {
                    vanish();
                    appear();
                }
            },
            Qt::QueuedConnection);
}

void LayerEdgeView::appear() {
    m_isAppearing = true;
    QScreen *screen = m_role ? nullptr : screenOfPlace();
    if (!screen)
        return;
    stand(false);
    windowHandle()->setGeometry(geometry()); // its points may have another size than when it was last shown
    m_role = std::make_unique<LayerRole>(m_shell, *windowHandle(), *screen, place(), [this] {
        QMetaObject::invokeMethod( // its screen is gone
            this,
            [this] {
                if (!std::exchange(m_isAppearing, false))
                    return;
                vanish();
                appear();
            },
            Qt::QueuedConnection);
    });
    if (!m_role->isGiven()) {
        m_role.reset();
        return fall();
    }
    m_isDraggedOver = false;
    windowHandle()->installEventFilter(this); // once, however often
    shapeInput();
    show();
}

void LayerEdgeView::vanish() {
    m_isAppearing = false;
    m_waits.stop();
    fall();
    if (!m_role)
        return;
    m_role.reset();
    hide();
    m_shell.flush();
}

void LayerEdgeView::stand(bool wantsKeyboard) {
    fall();
    m_standing = m_stack.add({.level = m_description.level,
                              .rect = inputRect(),
                              .wantsKeyboard = wantsKeyboard,
                              .stand = [this](const LayerStack::Standing &) {
                                  if (m_role)
                                      m_role->setPlace(place());
                              }});
    if (m_role)
        m_role->setPlace(place());
}

void LayerEdgeView::fall() {
    if (m_standing)
        m_stack.remove(*std::exchange(m_standing, std::nullopt));
}

void LayerEdgeView::takeKeyboard() {
    if (m_role && !(*m_standing)->wantsKeyboard)
        stand(true);
}

void LayerEdgeView::returnKeyboard() {
    if (!m_role || !(*m_standing)->wantsKeyboard)
        return;
    stand(false);
    m_leaves.start();
}

bool LayerEdgeView::hasUnwantedKeyboard() const {
    return m_role && !(*m_standing)->wantsKeyboard && QGuiApplication::focusWindow() == windowHandle();
}

/// A press in it, a drag out of it or one over it ends with its window.
bool LayerEdgeView::isHeld() const {
    return m_isDraggedOver || m_shell.isDragging() || (underMouse() && QGuiApplication::mouseButtons() != Qt::NoButton);
}

/// Some compositors take the keyboard back from nobody who is there. Such a window goes and comes again; not for ever,
/// where one gives it to whatever comes.
void LayerEdgeView::lookWhetherLeft() {
    if (!hasUnwantedKeyboard())
        return;
    if (isHeld())
        return m_leaves.start();
    if (!m_sinceReturn.isValid() || m_sinceReturn.hasExpired(untilForgotten.count()))
        m_returns = 0;
    m_sinceReturn.start();
    if (++m_returns > mostReturns)
        return;
    vanish();
    appear();
}

/// In the toolkit's plane.
QRect LayerEdgeView::inputRect() const {
    const QRect all = takingPart().translated(geometry().topLeft());
    return ignoresMouseEvents() ? QRect(all.topLeft(), QSize(all.width(), 1)) : all;
}

void LayerEdgeView::shapeInput() {
    if (!m_role)
        return;
    const QRect input = inputRect();
    m_stack.follow(*m_standing, input);
    const bool isThrough = m_isAside && ignoresMouseEvents();
    m_role->setInputRegion(isThrough ? QRegion() : QRegion(input.translated(-geometry().topLeft())));
}

bool LayerEdgeView::event(QEvent *event) {
    switch (event->type()) {
    case QEvent::Enter:
        m_waits.start();
        break;
    case QEvent::Leave:
        m_waits.stop();
        break;
    case QEvent::MouseButtonRelease: // with the button down nothing would change for the mouse
        if (ignoresMouseEvents())
            stepAside();
        break;
    default:
        break;
    }
    return EdgeView::event(event);
}

bool LayerEdgeView::eventFilter(QObject *object, QEvent *event) {
    if (object == windowHandle() && (event->type() == QEvent::DragEnter || event->type() == QEvent::DragMove))
        m_isDraggedOver = true;
    else if (object == windowHandle() && (event->type() == QEvent::DragLeave || event->type() == QEvent::Drop))
        m_isDraggedOver = false;
    return EdgeView::eventFilter(object, event);
}

/// At rest only: what is open takes the mouse.
void LayerEdgeView::stepAside() {
    m_waits.stop();
    if (!ignoresMouseEvents())
        return;
    m_isAside = true;
    shapeInput();
    m_comesBack.start();
}

} // namespace tavrine
