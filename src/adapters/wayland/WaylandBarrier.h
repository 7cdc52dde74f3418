#pragma once

#include "adapters/wayland/WaylandLink.h"

#include <functional>
#include <utility>

namespace tavrine {

/// Calls back once the compositor has done all that it was told before, and all that it sent until then was heard.
/// Destroying it, also within the call, takes the question back.
class WaylandBarrier {
public:
    WaylandBarrier(WaylandLink &link, std::function<void()> onPassed)
        : m_onPassed(std::move(onPassed)), m_callback(link.sync()) {
        static constexpr wl_callback_listener listener{.done = [](void *barrier, wl_callback *, std::uint32_t) {
            static_cast<WaylandBarrier *>(barrier)->pass();
        }};
        wl_callback_add_listener(m_callback, &listener, this);
    }
    ~WaylandBarrier() {
        if (m_callback)
            wl_callback_destroy(m_callback);
    }
    WaylandBarrier(const WaylandBarrier &) = delete;
    WaylandBarrier &operator=(const WaylandBarrier &) = delete;

private:
    void pass() {
        wl_callback_destroy(std::exchange(m_callback, nullptr));
        const auto onPassed = std::move(m_onPassed); // it may end this object
        onPassed();
    }

    std::function<void()> m_onPassed;
    wl_callback *m_callback;
};

} // namespace tavrine
