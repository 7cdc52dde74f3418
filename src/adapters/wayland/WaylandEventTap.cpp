#include "adapters/wayland/WaylandEventTap.h"

#include "adapters/wayland/LayerStack.h"
#include "adapters/wayland/WaylandKeyboardHold.h"

#include <QTimer>

#include <utility>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr auto longestHold = 1s;

class WaylandEventTap final : public EventTap {
public:
    WaylandEventTap(std::shared_ptr<WaylandReader> reader, LayerStack &stack, SessionEvents &sessionEvents,
                    std::function<void()> onChange)
        : m_stack(stack), m_onChange(std::move(onChange)),
          m_hold(std::make_unique<WaylandKeyboardHold>(std::move(reader), [this] { follow(); })) {
        if (m_hold->state() == WaylandKeyboardHold::State::gone)
            return;
        m_state = State::waiting;
        m_stack.setHeld(true);
        m_tooLong.setSingleShot(true);
        m_tooLong.callOnTimeout([this] { end(State::ended); });
        m_listening = sessionEvents.listen([this](SessionEvent event) {
            if (event == SessionEvent::goesToSleep || event == SessionEvent::isLocked)
                end(State::gaveWay);
        });
    }
    ~WaylandEventTap() override { giveBack(); }

    [[nodiscard]] State state() const override { return m_state; }

private:
    void follow() {
        switch (m_hold->state()) {
        case WaylandKeyboardHold::State::asking:
            break;
        case WaylandKeyboardHold::State::answered:
            if (!m_tooLong.isActive())
                m_tooLong.start(longestHold);
            break;
        case WaylandKeyboardHold::State::whole:
            m_tooLong.stop();
            if (m_state == State::waiting)
                change(State::dropping);
            break;
        case WaylandKeyboardHold::State::gone:
            m_tooLong.start(0); // it is still at work
            break;
        }
    }

    void end(State state) {
        if (isOver())
            return;
        giveBack();
        change(state);
    }

    void giveBack() {
        m_tooLong.stop();
        if (isOver())
            return;
        m_hold.release()->leave();
        m_stack.setHeld(false);
    }

    [[nodiscard]] bool isOver() const { return m_state == State::ended || m_state == State::gaveWay; }

    /// In a turn of its own: whoever hears of it may destroy the tap.
    void change(State state) {
        m_state = state;
        QMetaObject::invokeMethod(&m_tooLong, m_onChange, Qt::QueuedConnection);
    }

    LayerStack &m_stack;
    std::function<void()> m_onChange;
    QTimer m_tooLong;
    std::unique_ptr<WaylandKeyboardHold> m_hold; ///< null when it is over
    State m_state = State::ended;
    SessionEvents::Listening m_listening;
};

} // namespace

WaylandEventTaps::WaylandEventTaps(std::shared_ptr<WaylandReader> reader, LayerStack &stack)
    : m_reader(std::move(reader)), m_client(m_reader), m_stack(stack) {}

bool WaylandEventTaps::areThere() const {
    return WaylandKeyboardHold::isOffered(m_client.link());
}

std::unique_ptr<EventTap> WaylandEventTaps::create(std::function<void()> onChange) {
    auto tap = std::make_unique<WaylandEventTap>(m_reader, m_stack, m_sessionEvents, std::move(onChange));
    if (tap->state() == EventTap::State::ended)
        return nullptr;
    return tap;
}

} // namespace tavrine
