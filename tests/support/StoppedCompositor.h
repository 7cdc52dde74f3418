#pragma once

#include "adapters/wayland/WaylandLink.h"

#include <csignal>

#include <sys/socket.h>

namespace tavrine::testing {

/// The compositor of the test does nothing for as long.
class StoppedCompositor {
public:
    StoppedCompositor() {
        const WaylandLink link;
        ucred partner{};
        socklen_t size = sizeof partner;
        if (link.isOpen() && ::getsockopt(link.descriptor(), SOL_SOCKET, SO_PEERCRED, &partner, &size) == 0)
            m_process = partner.pid;
        if (m_process > 0 && ::kill(m_process, SIGSTOP) != 0)
            m_process = 0;
    }
    [[nodiscard]] bool hasBegun() const { return m_process > 0; }
    ~StoppedCompositor() {
        if (m_process > 0)
            ::kill(m_process, SIGCONT);
    }
    StoppedCompositor(const StoppedCompositor &) = delete;
    StoppedCompositor &operator=(const StoppedCompositor &) = delete;

private:
    pid_t m_process = 0;
};

} // namespace tavrine::testing
