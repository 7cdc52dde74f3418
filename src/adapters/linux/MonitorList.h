#pragma once

#include "ports/EventMonitors.h"

class QEvent;

namespace tavrine {

/// The monitors of one kind that are at work. Main thread. A monitor may outlive its list.
class MonitorList {
public:
    /// `changed` is called when a monitor comes or goes.
    explicit MonitorList(std::function<void()> changed);
    ~MonitorList();
    MonitorList(const MonitorList &) = delete;
    MonitorList &operator=(const MonitorList &) = delete;

    [[nodiscard]] std::unique_ptr<EventMonitor> add(quint32 mask, EventMonitors::LocalHandler handler);
    /// One that swallows nothing.
    [[nodiscard]] std::unique_ptr<EventMonitor> add(quint32 mask, EventMonitors::GlobalHandler handler);

    /// Tells those that want it, the first to come first, until one swallows it. True when one has.
    bool tell(const InputEvent &event) const;
    /// Tells of an event that the toolkit has for a window of this program, before the window has it. True when the
    /// window is not to have it: a key, a wheel or a press can be swallowed.
    bool tellOwn(const QEvent &event) const;

    [[nodiscard]] bool isEmpty() const;
    /// All kinds that somebody wants.
    [[nodiscard]] quint32 asked() const;

private:
    struct Entry;
    struct State;
    class Monitor;

    std::shared_ptr<State> m_state;
};

/// The modifiers of the toolkit's events as monitors are told them.
[[nodiscard]] quint32 modifierFlagsOf(Qt::KeyboardModifiers modifiers);

} // namespace tavrine
