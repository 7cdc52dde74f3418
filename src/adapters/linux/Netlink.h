#pragma once

#include "base/Descriptor.h"

#include <QtGlobal>

#include <cstring>
#include <functional>
#include <initializer_list>
#include <optional>
#include <vector>

#include <linux/netlink.h>

namespace tavrine {

/// A socket to the part of the kernel that knows interfaces and routes. No call ever waits: the kernel answers a
/// request within the call that sends it.
class Netlink {
public:
    using Handler = std::function<void(const nlmsghdr &message)>;

    /// `groups` are those whose notices the socket gets (RTNLGRP_…). Not open where the kernel refuses.
    explicit Netlink(std::initializer_list<int> groups = {});

    [[nodiscard]] bool isOpen() const { return m_socket.isOpen(); }
    [[nodiscard]] int descriptor() const { return m_socket.number(); }

    /// Asks for the whole table behind `request` (RTM_GET…) and hands each row to `handler`. False when it did not come
    /// whole; a table that changes meanwhile is asked for again by the caller.
    [[nodiscard]] bool dump(quint16 request, const Handler &handler);

    /// Throws away the notices that have arrived. What was lost because there were too many is not missed here.
    void drain();

private:
    enum class Part { more, end, broken };

    [[nodiscard]] bool ask(quint16 request);
    [[nodiscard]] Part readPart(const Handler &handler);

    Descriptor m_socket;
    std::vector<char> m_buffer;
    quint32 m_sequence = 0;
};

/// The fixed beginning of a row (struct ifinfomsg, struct rtmsg). None when the row is too short for it.
template <class Body>
[[nodiscard]] std::optional<Body> bodyOf(const nlmsghdr &message) {
    if (message.nlmsg_len < NLMSG_LENGTH(sizeof(Body)))
        return std::nullopt;
    Body body{};
    std::memcpy(&body, &message + 1, sizeof body);
    return body;
}

/// The attributes behind a beginning of `bodyBytes`. `each` gets the type and the bytes of one.
void forEachAttribute(const nlmsghdr &message, std::size_t bodyBytes,
                      const std::function<void(int type, const void *bytes, std::size_t size)> &each);

} // namespace tavrine
