#pragma once

#include "base/Descriptor.h"

#include <cstdint>

#include <sys/eventfd.h>
#include <unistd.h>

namespace tavrine {

/// Wakes a thread that waits for descriptors. Any thread wakes, one waits.
class Waker {
public:
    Waker() : m_event(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

    [[nodiscard]] int descriptor() const { return m_event.number(); }
    void wake() const {
        const std::uint64_t one = 1;
        static_cast<void>(::write(m_event.number(), &one, sizeof one) == sizeof one); // full means that it is awake
    }
    void clear() const {
        std::uint64_t count = 0;
        static_cast<void>(::read(m_event.number(), &count, sizeof count) == sizeof count);
    }

private:
    Descriptor m_event;
};

} // namespace tavrine
