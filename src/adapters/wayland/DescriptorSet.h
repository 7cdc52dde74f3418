#pragma once

#include <array>
#include <cstdint>

#include <sys/epoll.h>
#include <unistd.h>

namespace tavrine {

/// Many descriptors behind one, which can be read while any of them is ready.
class DescriptorSet {
public:
    DescriptorSet() : m_set(::epoll_create1(EPOLL_CLOEXEC)) {}
    ~DescriptorSet() {
        if (m_set >= 0)
            ::close(m_set);
    }
    DescriptorSet(const DescriptorSet &) = delete;
    DescriptorSet &operator=(const DescriptorSet &) = delete;

    [[nodiscard]] int descriptor() const { return m_set; }
    /// False for what cannot be waited for, as a file on a disk.
    [[nodiscard]] bool add(int descriptor, std::uint32_t events) const {
        epoll_event event{.events = events, .data = {.fd = descriptor}};
        return ::epoll_ctl(m_set, EPOLL_CTL_ADD, descriptor, &event) == 0;
    }
    /// Before the descriptor is closed: another process may hold the same pipe open.
    void remove(int descriptor) const { ::epoll_ctl(m_set, EPOLL_CTL_DEL, descriptor, nullptr); }

    /// Calls back for each that is ready now; never waits.
    template <class OnReady>
    void forEachReady(OnReady onReady) const {
        std::array<epoll_event, 16> events{};
        const int count = ::epoll_wait(m_set, events.data(), static_cast<int>(events.size()), 0);
        for (int i = 0; i < count; ++i)
            onReady(events.at(static_cast<std::size_t>(i)).data.fd);
    }

private:
    const int m_set;
};

} // namespace tavrine
