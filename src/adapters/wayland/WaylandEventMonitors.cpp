#include "adapters/wayland/WaylandEventMonitors.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QWindow>

namespace tavrine {
namespace {

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

WaylandEventMonitors::WaylandEventMonitors() : m_local([] {}) {
    qApp->installEventFilter(this);
    // What is let go while another program has the keyboard is not told.
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, [this] { m_held.clear(); });
}

WaylandEventMonitors::~WaylandEventMonitors() = default;

std::unique_ptr<EventMonitor> WaylandEventMonitors::addGlobalMonitor(quint32 /*mask*/, GlobalHandler /*handler*/) {
    return std::make_unique<EventMonitor>();
}

std::unique_ptr<EventMonitor> WaylandEventMonitors::addLocalMonitor(quint32 mask, LocalHandler handler) {
    return m_local.add(mask, std::move(handler));
}

bool WaylandEventMonitors::eventFilter(QObject *watched, QEvent *event) {
    // Qt hands an event to the window first and then to each widget: the first time is the one that counts.
    if (!watched->isWindowType() || m_local.isEmpty())
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
    quint32 flags = 0;
    for (const auto &[position, flag] : m_held)
        flags |= flag;
    m_local.tell({.type = eventMask::flagsChanged, .modifierFlags = flags, .keyCode = -1, .scrollDelta = {}});
}

} // namespace tavrine
