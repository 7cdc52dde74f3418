#include "adapters/gnome/GnomeEventMonitors.h"

#include "adapters/x11/X11Screens.h"

#include <QGuiApplication>

#include <algorithm>
#include <vector>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

// A finger is on a key or a button for forty milliseconds and more.
constexpr auto betweenLooks = 15ms;

constexpr quint32 downs = eventMask::leftMouseDown | eventMask::rightMouseDown;
constexpr quint32 ups = eventMask::leftMouseUp | eventMask::rightMouseUp | eventMask::otherMouseUp;
constexpr quint32 motions =
    eventMask::mouseMoved | eventMask::leftMouseDragged | eventMask::rightMouseDragged | eventMask::otherMouseDragged;
constexpr quint32 seenByShell = eventMask::flagsChanged | downs | ups | motions;

struct Named {
    quint32 state;
    quint32 name;
};
constexpr Named flagNames[] = {{gnomeState::capsLock, modifierFlag::capsLock},
                               {gnomeState::shift, modifierFlag::shift},
                               {gnomeState::control, modifierFlag::control},
                               {gnomeState::alt, modifierFlag::option},
                               {gnomeState::super, modifierFlag::command}};
constexpr Named downNames[] = {{gnomeState::leftButton, eventMask::leftMouseDown},
                               {gnomeState::rightButton, eventMask::rightMouseDown}};
constexpr Named upNames[] = {{gnomeState::leftButton, eventMask::leftMouseUp},
                             {gnomeState::rightButton, eventMask::rightMouseUp},
                             {gnomeState::middleButton, eventMask::otherMouseUp}};
constexpr Named dragNames[] = {{gnomeState::leftButton, eventMask::leftMouseDragged},
                               {gnomeState::rightButton, eventMask::rightMouseDragged},
                               {gnomeState::middleButton, eventMask::otherMouseDragged}};

template <size_t n>
quint32 namesIn(quint32 state, const Named (&table)[n]) {
    quint32 names = 0;
    for (const Named &each : table)
        if (state & each.state)
            names |= each.name;
    return names;
}

/// The first of the buttons counts, as it does where the toolkit tells a drag.
quint32 motionOf(quint32 state) {
    for (const Named &each : dragNames)
        if (state & each.state)
            return each.name;
    return eventMask::mouseMoved;
}

} // namespace

class GnomeEventMonitors::Monitor final : public EventMonitor {
public:
    Monitor(std::shared_ptr<Entry> entry, GnomeShell::InputWatch watch)
        : m_entry(std::move(entry)), m_watch(std::move(watch)) {}
    ~Monitor() override { m_entry->handler = nullptr; } // also for an event that is under way

    std::unique_ptr<EventMonitor> onX;

private:
    std::shared_ptr<Entry> m_entry;
    GnomeShell::InputWatch m_watch;
};

GnomeEventMonitors::GnomeEventMonitors(GnomeShell &shell) : m_shell(shell) {
    connect(&shell, &GnomeShell::inputChanged, this, &GnomeEventMonitors::onInput);
}

std::unique_ptr<GnomeEventMonitors::Monitor> GnomeEventMonitors::add(Entry entry) {
    const auto kept = std::make_shared<Entry>(std::move(entry));
    m_entries.push_back(kept);
    return std::make_unique<Monitor>(kept, kept->mask == 0 ? nullptr : m_shell.watchInput(betweenLooks));
}

std::unique_ptr<EventMonitor> GnomeEventMonitors::addGlobalMonitor(quint32 mask, GlobalHandler handler) {
    auto monitor = add({mask & seenByShell, false, handler});
    // The X server hears some of the same, while the pointer is over one of its windows.
    monitor->onX = m_onX.addGlobalMonitor(mask, [this, handler = std::move(handler)](const InputEvent &event) {
        if (!m_shell.isAttached() || !(event.type & seenByShell))
            handler(event);
    });
    return monitor;
}

std::unique_ptr<EventMonitor> GnomeEventMonitors::addLocalMonitor(quint32 mask, LocalHandler handler) {
    auto monitor = add({mask & eventMask::flagsChanged, true, [handler](const InputEvent &event) { handler(event); }});
    monitor->onX = m_onX.addLocalMonitor(mask, [this, handler = std::move(handler)](const InputEvent &event) {
        return (m_shell.isAttached() && event.type == eventMask::flagsChanged) ? false : handler(event);
    });
    return monitor;
}

void GnomeEventMonitors::onInput(const GnomePointer &before) {
    const GnomePointer now = m_shell.pointer();
    const quint32 flags = namesIn(now.state, flagNames);
    const quint32 flagsBefore = namesIn(before.state, flagNames);
    if (flags != flagsBefore)
        tell(eventMask::flagsChanged, flags);
    const auto tellEach = [this, flags](quint32 types) {
        for (quint32 type = 1; types != 0; type <<= 1U, types >>= 1U)
            if (types & 1U)
                tell(type, flags);
    };
    if (now.place != before.place)
        tell(motionOf(before.state), flags);
    tellEach(namesIn(now.state & ~before.state, downNames));
    tellEach(namesIn(before.state & ~now.state, upNames));
}

/// To the local monitors where a window of this program has the keyboard, for what is done with modifiers; the mouse
/// over one is told by the toolkit.
void GnomeEventMonitors::tell(quint32 type, quint32 flags) {
    const bool isOurs = type == eventMask::flagsChanged
                            ? QGuiApplication::focusWindow() != nullptr
                            : QGuiApplication::topLevelAt(pointOfDevice(m_shell.pointer().place).toPoint()) != nullptr;
    std::erase_if(m_entries, [](const auto &entry) { return entry.expired(); });
    const auto entries = m_entries; // a handler may add and end monitors
    for (const auto &weak : entries)
        if (const auto entry = weak.lock(); entry && (entry->mask & type) && entry->isLocal == isOurs)
            if (const GlobalHandler handler = entry->handler)
                handler({.type = type, .modifierFlags = flags, .keyCode = -1, .scrollDelta = {}});
}

} // namespace tavrine
