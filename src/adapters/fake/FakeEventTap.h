#pragma once

#include "adapters/fake/VirtualTime.h"
#include "ports/EventTap.h"

#include <algorithm>
#include <vector>

namespace tavrine {

/// A keyboard that a test types on, lets another program hold, or takes away.
class FakeEventTaps final : public EventTaps {
public:
    explicit FakeEventTaps(VirtualTime &time) : m_time(time) {}

    void setPermitted(bool isPermitted) { m_isPermitted = isPermitted; }
    /// A desktop that lets no program have a tap.
    void setThere(bool isThere) { m_isThere = isThere; }
    /// Another program holds the keyboard, or lets it go.
    void hold() { m_isHeld = true; }
    void letGo() {
        m_isHeld = false;
        for (Tap *tap : std::vector(m_taps))
            if (tap->state() == EventTap::State::waiting)
                tap->change(EventTap::State::dropping);
    }
    /// The desktop is gone.
    void lose() {
        for (Tap *tap : std::vector(m_taps))
            tap->change(EventTap::State::ended);
    }
    /// The session is locked.
    void lock() {
        for (Tap *tap : std::vector(m_taps))
            tap->change(EventTap::State::gaveWay);
    }
    /// Whether a key reaches a program.
    [[nodiscard]] bool keyArrives() const {
        return std::none_of(m_taps.begin(), m_taps.end(),
                            [](const Tap *tap) { return tap->state() == EventTap::State::dropping; });
    }
    [[nodiscard]] int creations() const { return m_creations; }

    [[nodiscard]] bool areThere() const override { return m_isThere; }
    [[nodiscard]] std::unique_ptr<EventTap> create(std::function<void()> onChange) override {
        ++m_creations;
        if (!m_isPermitted || !m_isThere)
            return nullptr;
        auto tap = std::make_unique<Tap>(*this, std::move(onChange));
        if (m_isHeld)
            m_time.asyncAfter(longestWait, [alive = std::weak_ptr(tap->m_alive), raw = tap.get()] {
                if (!alive.expired() && raw->state() == EventTap::State::waiting)
                    raw->change(EventTap::State::ended);
            });
        return tap;
    }

private:
    static constexpr Seconds longestWait{1.0};

    class Tap final : public EventTap {
    public:
        Tap(FakeEventTaps &owner, std::function<void()> onChange)
            : m_owner(owner), m_onChange(std::move(onChange)),
              m_state(owner.m_isHeld ? State::waiting : State::dropping) {
            m_owner.m_taps.push_back(this);
        }
        ~Tap() override { std::erase(m_owner.m_taps, this); }
        [[nodiscard]] State state() const override { return m_state; }
        void change(State state) {
            m_state = state;
            if (const auto handler = m_onChange)
                handler();
        }
        std::shared_ptr<int> m_alive = std::make_shared<int>();

    private:
        FakeEventTaps &m_owner;
        std::function<void()> m_onChange;
        State m_state;
    };

    VirtualTime &m_time;
    std::vector<Tap *> m_taps;
    int m_creations = 0;
    bool m_isPermitted = true;
    bool m_isThere = true;
    bool m_isHeld = false;
};

} // namespace tavrine
