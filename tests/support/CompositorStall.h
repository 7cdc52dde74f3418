#pragma once

#include "adapters/wayland/WaylandLink.h"

#include <chrono>
#include <csignal>
#include <thread>

#include <sys/socket.h>

namespace tavrine::testing {

/// The compositor of the session stands still, as on a machine that has no time for it, and goes on by itself.
class CompositorStall {
public:
    explicit CompositorStall(std::chrono::milliseconds length) {
        const WaylandLink link;
        ucred credentials{};
        socklen_t size = sizeof credentials;
        if (::getsockopt(link.descriptor(), SOL_SOCKET, SO_PEERCRED, &credentials, &size) == 0)
            m_compositor = credentials.pid;
        if (!hasBegun())
            return;
        ::kill(m_compositor, SIGSTOP);
        m_end = std::thread([compositor = m_compositor, length] {
            std::this_thread::sleep_for(length);
            ::kill(compositor, SIGCONT);
        });
    }
    ~CompositorStall() {
        if (m_end.joinable())
            m_end.join();
    }
    CompositorStall(const CompositorStall &) = delete;
    CompositorStall &operator=(const CompositorStall &) = delete;

    [[nodiscard]] bool hasBegun() const { return m_compositor > 0; }

private:
    pid_t m_compositor = 0;
    std::thread m_end;
};

} // namespace tavrine::testing
