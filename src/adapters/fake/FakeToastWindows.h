#pragma once

#include "ports/ToastWindow.h"

#include <QStringList>

#include <algorithm>
#include <optional>
#include <vector>

namespace tavrine {

/// Toasts that a test looks at. An animation is at its end as soon as it begins; how long it takes stands beside it.
class FakeToastWindows final : public ToastWindows {
public:
    struct State {
        ToastDescription description;
        QPointF origin;
        double alpha = 1.0;
        bool isShown = false;
        std::optional<Seconds> lastDuration; ///< of the last animation
        int animations = 0;
    };

    [[nodiscard]] std::unique_ptr<ToastWindow> makeToastWindow(const ToastDescription &description) override {
        return std::make_unique<Window>(*this, description);
    }

    /// The windows that are not closed, from the oldest.
    [[nodiscard]] std::vector<State> windows() const {
        std::vector<State> states;
        for (const State *state : m_windows)
            states.push_back(*state);
        return states;
    }
    [[nodiscard]] QStringList messages() const {
        QStringList list;
        for (const State *state : m_windows)
            list.append(state->description.message);
        return list;
    }

private:
    class Window final : public ToastWindow {
    public:
        Window(FakeToastWindows &owner, const ToastDescription &description) : m_owner(owner) {
            m_state.description = description;
            m_owner.m_windows.push_back(&m_state);
        }
        ~Window() override { std::erase(m_owner.m_windows, &m_state); }
        [[nodiscard]] QPointF frameOrigin() const override { return m_state.origin; }
        void setFrameOrigin(QPointF origin) override { m_state.origin = origin; }
        void setAlpha(double alpha) override { m_state.alpha = alpha; }
        void orderFront() override { m_state.isShown = true; }
        void animate(double alpha, QPointF origin, Seconds duration) override {
            m_state.alpha = alpha;
            m_state.origin = origin;
            m_state.lastDuration = duration;
            ++m_state.animations;
        }

    private:
        FakeToastWindows &m_owner;
        State m_state;
    };
    std::vector<State *> m_windows;
};

} // namespace tavrine
