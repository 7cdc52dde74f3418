#include "adapters/wayland/WaylandEventMonitors.h"

#include "adapters/wayland/LayerParts.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWindow>

namespace tavrine {
namespace {

constexpr quint32 presses = eventMask::leftMouseDown | eventMask::rightMouseDown;
constexpr quint32 lockBit = 1U << 1; ///< of every keymap

/// 0 for a key that is none.
quint32 flagOf(const QKeyEvent &key) {
    switch (key.key()) {
    case Qt::Key_Shift:
        return modifierFlag::shift;
    case Qt::Key_Control:
        return modifierFlag::control;
    case Qt::Key_Alt:
        return modifierFlag::option;
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
        return modifierFlag::command;
    default:
        return 0;
    }
}

} // namespace

WaylandEventMonitors::WaylandEventMonitors(std::function<LayerParts &()> parts)
    : m_parts(std::move(parts)), m_global([this] { watchPresses(); }), m_local([] {}) {
    qApp->installEventFilter(this);
    // What is let go while another program has the keyboard is not told.
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, [this] { m_held.clear(); });
}

WaylandEventMonitors::~WaylandEventMonitors() {
    if (!m_watched)
        return;
    m_watched->catchers.setWanted(false);
    m_watched->catchers.setOnPress(nullptr);
}

std::unique_ptr<EventMonitor> WaylandEventMonitors::addGlobalMonitor(quint32 mask, GlobalHandler handler) {
    return m_global.add(mask, std::move(handler));
}

void WaylandEventMonitors::watchPresses() {
    const bool areWanted = m_global.asked() & presses;
    if (areWanted && !m_watched && m_parts) {
        m_watched = &m_parts();
        m_watched->catchers.setOnPress([this](const QMouseEvent &press) { m_global.tellOwn(press); });
    }
    if (m_watched)
        m_watched->catchers.setWanted(areWanted);
}

std::unique_ptr<EventMonitor> WaylandEventMonitors::addLocalMonitor(quint32 mask, LocalHandler handler) {
    return m_local.add(mask, std::move(handler));
}

bool WaylandEventMonitors::eventFilter(QObject *watched, QEvent *event) {
    // Qt hands an event to the window first and then to each widget: the first time is the one that counts.
    if (!watched->isWindowType() || m_local.isEmpty() || ClickCatchers::isCatcher(watched))
        return false;
    const bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease;
    if (isKey && flagOf(static_cast<const QKeyEvent &>(*event)) != 0) {
        noteModifier(static_cast<const QKeyEvent &>(*event));
        return false;
    }
    return m_local.tellOwn(*event);
}

void WaylandEventMonitors::noteModifier(const QKeyEvent &key) {
    if (key.isAutoRepeat())
        return;
    const bool isNews = key.type() == QEvent::KeyPress ? m_held.emplace(key.nativeScanCode(), flagOf(key)).second
                                                       : m_held.erase(key.nativeScanCode()) > 0;
    if (!isNews)
        return;
    quint32 flags = key.nativeModifiers() & lockBit ? modifierFlag::capsLock : 0;
    for (const auto &[position, flag] : m_held)
        flags |= flag;
    m_local.tell({.type = eventMask::flagsChanged, .modifierFlags = flags, .keyCode = -1, .scrollDelta = {}});
}

} // namespace tavrine
