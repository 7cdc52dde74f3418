#include "adapters/wayland/TestPaster.h"

#include <array>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <wayland/wlr-data-control-unstable-v1.h>

namespace tavrine {

TestPaster::TestPaster()
    : m_manager(m_link.bind<zwlr_data_control_manager_v1>(zwlr_data_control_manager_v1_interface, 1)),
      m_device(zwlr_data_control_manager_v1_get_data_device(m_manager, m_link.bind<wl_seat>(wl_seat_interface, 1))) {
    static constexpr zwlr_data_control_offer_v1_listener offers{
        .offer = [](void *self, zwlr_data_control_offer_v1 *offer, const char *target) {
            static_cast<TestPaster *>(self)->m_offers[offer].append(target);
        }};
    static constexpr zwlr_data_control_device_v1_listener listener{
        .data_offer =
            [](void *self, zwlr_data_control_device_v1 *, zwlr_data_control_offer_v1 *offer) {
                static_cast<TestPaster *>(self)->m_offers[offer] = {};
                zwlr_data_control_offer_v1_add_listener(offer, &offers, self);
            },
        .selection = [](void *self, zwlr_data_control_device_v1 *,
                        zwlr_data_control_offer_v1 *offer) { static_cast<TestPaster *>(self)->set(offer); },
        .finished = [](void *, zwlr_data_control_device_v1 *) {},
        .primary_selection = [](void *, zwlr_data_control_device_v1 *, zwlr_data_control_offer_v1 *) {},
    };
    zwlr_data_control_device_v1_add_listener(m_device, &listener, this);
    static_cast<void>(m_link.finish());
}

TestPaster::~TestPaster() {
    if (m_hanging >= 0)
        ::close(m_hanging);
}

void TestPaster::set(zwlr_data_control_offer_v1 *offer) {
    m_current = offer;
    ++m_notices;
    if (!offer)
        ++m_timesEmpty;
}

QList<QByteArray> TestPaster::targets() {
    static_cast<void>(m_link.finish());
    return m_current ? m_offers[m_current] : QList<QByteArray>();
}

bool TestPaster::isOwned() {
    static_cast<void>(m_link.finish());
    return m_current != nullptr;
}

int TestPaster::notices() {
    static_cast<void>(m_link.finish());
    return m_notices;
}

int TestPaster::ask(const QByteArray &target) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return -1;
    askInto(target, ends[1]);
    ::close(ends[1]);
    return ends[0];
}

void TestPaster::askInto(const QByteArray &target, int descriptor) {
    static_cast<void>(m_link.finish());
    if (m_current)
        zwlr_data_control_offer_v1_receive(m_current, target.constData(), descriptor);
    static_cast<void>(m_link.finish());
}

QByteArray TestPaster::readAll(int pipe) const {
    QByteArray bytes;
    std::array<char, 65536> buffer{};
    pollfd descriptor{pipe, POLLIN, 0};
    while (::poll(&descriptor, 1, static_cast<int>(patience.count())) > 0) {
        const ssize_t got = ::read(pipe, buffer.data(), buffer.size());
        if (got <= 0)
            break;
        bytes.append(buffer.data(), got);
    }
    ::close(pipe);
    return bytes;
}

std::optional<QByteArray> TestPaster::paste(const QByteArray &target) {
    if (!targets().contains(target))
        return std::nullopt;
    const QByteArray bytes = readAll(ask(target));
    return bytes.isEmpty() ? std::nullopt : std::optional(bytes);
}

void TestPaster::askAndHang(const QByteArray &target) {
    m_hanging = ask(target);
}

void TestPaster::askAndLeave(const QByteArray &target) {
    ::close(ask(target));
}

QByteArray TestPaster::finish() {
    return readAll(std::exchange(m_hanging, -1));
}

} // namespace tavrine
