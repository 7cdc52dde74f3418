#include "adapters/linux/MonitorList.h"

#include "base/VirtualKeys.h"

#include <QKeyEvent>
#include <QWheelEvent>

#include <optional>
#include <vector>

namespace tavrine {
namespace {

/// 0 for a press that nobody can ask for.
quint32 typeOf(const QMouseEvent &mouse) {
    const auto oneOf = [](Qt::MouseButtons buttons, quint32 left, quint32 right, quint32 other) {
        return buttons & Qt::LeftButton ? left : buttons & Qt::RightButton ? right : other;
    };
    if (mouse.type() == QEvent::MouseButtonPress)
        return oneOf(mouse.button(), eventMask::leftMouseDown, eventMask::rightMouseDown, 0);
    if (mouse.type() == QEvent::MouseButtonRelease)
        return oneOf(mouse.button(), eventMask::leftMouseUp, eventMask::rightMouseUp, eventMask::otherMouseUp);
    return mouse.buttons() == Qt::NoButton ? eventMask::mouseMoved
                                           : oneOf(mouse.buttons(), eventMask::leftMouseDragged,
                                                   eventMask::rightMouseDragged, eventMask::otherMouseDragged);
}

std::optional<InputEvent> told(const QEvent &event) {
    switch (event.type()) {
    case QEvent::KeyPress: {
        const auto &key = static_cast<const QKeyEvent &>(event);
        return InputEvent{.type = eventMask::keyDown,
                          .modifierFlags = modifierFlagsOf(key.modifiers()),
                          .keyCode = virtualKeyOfXKeycode(static_cast<int>(key.nativeScanCode())).value_or(-1),
                          .scrollDelta = {}};
    }
    case QEvent::Wheel: {
        const auto &wheel = static_cast<const QWheelEvent &>(event);
        return InputEvent{.type = eventMask::scrollWheel,
                          .modifierFlags = modifierFlagsOf(wheel.modifiers()),
                          .keyCode = -1,
                          .scrollDelta = wheel.angleDelta()};
    }
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseMove: {
        const auto &mouse = static_cast<const QMouseEvent &>(event);
        return InputEvent{.type = typeOf(mouse),
                          .modifierFlags = modifierFlagsOf(mouse.modifiers()),
                          .keyCode = -1,
                          .scrollDelta = {}};
    }
    default:
        return std::nullopt;
    }
}

} // namespace

struct MonitorList::Entry {
    quint32 mask;
    EventMonitors::LocalHandler handler;
};

struct MonitorList::State {
    std::vector<std::shared_ptr<Entry>> entries;
    std::function<void()> changed;
};

class MonitorList::Monitor final : public EventMonitor {
public:
    Monitor(std::weak_ptr<State> state, std::shared_ptr<Entry> entry)
        : m_state(std::move(state)), m_entry(std::move(entry)) {}
    ~Monitor() override {
        m_entry->handler = nullptr; // also for an event that is under way
        if (const auto state = m_state.lock()) {
            std::erase(state->entries, m_entry);
            state->changed();
        }
    }

private:
    std::weak_ptr<State> m_state;
    std::shared_ptr<Entry> m_entry;
};

MonitorList::MonitorList(std::function<void()> changed)
    : m_state(std::make_shared<State>(State{{}, std::move(changed)})) {}

MonitorList::~MonitorList() = default;

std::unique_ptr<EventMonitor> MonitorList::add(quint32 mask, EventMonitors::LocalHandler handler) {
    const auto entry = std::make_shared<Entry>(Entry{mask, std::move(handler)});
    m_state->entries.push_back(entry);
    auto monitor = std::make_unique<Monitor>(m_state, entry);
    m_state->changed();
    return monitor;
}

std::unique_ptr<EventMonitor> MonitorList::add(quint32 mask, EventMonitors::GlobalHandler handler) {
    return add(mask, EventMonitors::LocalHandler([handler = std::move(handler)](const InputEvent &event) {
                   handler(event);
                   return false;
               }));
}

bool MonitorList::tell(const InputEvent &event) const {
    const auto present = m_state->entries; // a handler may add or end monitors
    for (const auto &entry : present)
        if (entry->mask & event.type)
            if (const EventMonitors::LocalHandler handler = entry->handler; handler && handler(event))
                return true;
    return false;
}

bool MonitorList::tellOwn(const QEvent &event) const {
    if (isEmpty())
        return false;
    const auto input = told(event);
    const bool isToBeSeen = event.type() == QEvent::MouseButtonRelease || event.type() == QEvent::MouseMove;
    return input && tell(*input) && !isToBeSeen;
}

bool MonitorList::isEmpty() const {
    return m_state->entries.empty();
}

quint32 MonitorList::asked() const {
    quint32 all = 0;
    for (const auto &entry : m_state->entries)
        all |= entry->mask;
    return all;
}

quint32 modifierFlagsOf(Qt::KeyboardModifiers modifiers) {
    quint32 flags = 0;
    if (modifiers & Qt::ShiftModifier)
        flags |= modifierFlag::shift;
    if (modifiers & Qt::AltModifier)
        flags |= modifierFlag::option;
    // In the program's own windows the Control key gives the commands that Command gives elsewhere.
    if (modifiers & (Qt::MetaModifier | Qt::ControlModifier))
        flags |= modifierFlag::command;
    return flags;
}

} // namespace tavrine
