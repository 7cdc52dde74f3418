#include "adapters/linux/NetlinkPathMonitor.h"

#include <QSocketNotifier>

#include <cstring>

#include <linux/rtnetlink.h>
#include <sys/socket.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

// The kernel tells of a change before it has drawn all the consequences.
constexpr auto settling = 100ms;
// A table that cannot be read is left alone until the next notice.
constexpr int mostFailures = 5;
constexpr unsigned unusable = RTNH_F_DEAD | RTNH_F_LINKDOWN;

/// Whether one of the hops of a route that has several can be used.
bool hasUsableHop(const void *bytes, std::size_t size) {
    const auto *at = static_cast<const char *>(bytes);
    rtnexthop hop{};
    while (size >= sizeof hop) {
        std::memcpy(&hop, at, sizeof hop);
        if (hop.rtnh_len < sizeof hop)
            return false;
        if ((hop.rtnh_flags & unusable) == 0)
            return true;
        const std::size_t step = RTNH_ALIGN(hop.rtnh_len);
        if (step >= size)
            return false;
        at += step;
        size -= step;
    }
    return false;
}

bool leadsOut(const nlmsghdr &message) {
    const auto route = bodyOf<rtmsg>(message);
    const bool isDefault = route && message.nlmsg_type == RTM_NEWROUTE && route->rtm_dst_len == 0 &&
                           route->rtm_type == RTN_UNICAST &&
                           (route->rtm_family == AF_INET || route->rtm_family == AF_INET6);
    if (!isDefault)
        return false;
    bool isUsable = (route->rtm_flags & unusable) == 0;
    forEachAttribute(message, sizeof *route, [&isUsable](int type, const void *bytes, std::size_t size) {
        if (type == RTA_MULTIPATH)
            isUsable = hasUsableHop(bytes, size);
    });
    return isUsable;
}

} // namespace

NetlinkPathMonitor::NetlinkPathMonitor()
    : m_notices({RTNLGRP_LINK, RTNLGRP_IPV4_IFADDR, RTNLGRP_IPV6_IFADDR, RTNLGRP_IPV4_ROUTE, RTNLGRP_IPV6_ROUTE}) {
    m_settling.setSingleShot(true);
    m_settling.callOnTimeout([this] { look(); });
}

NetlinkPathMonitor::~NetlinkPathMonitor() = default;

void NetlinkPathMonitor::start(Handler pathUpdateHandler) {
    m_handler = std::move(pathUpdateHandler);
    m_told.reset();
    if (!m_notices.isOpen())
        return;
    m_notifier = std::make_unique<QSocketNotifier>(m_notices.descriptor(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] {
        m_notifier->setEnabled(false); // what comes until the look is part of it
        m_settling.start(settling);
    });
    m_settling.start(0);
}

void NetlinkPathMonitor::look() {
    ++m_looks;
    m_notices.drain(); // before the look: what arrives during it calls for another one
    m_notifier->setEnabled(true);
    bool isSatisfied = false;
    const bool isWhole =
        m_kernel.dump(RTM_GETROUTE, [&](const nlmsghdr &message) { isSatisfied = isSatisfied || leadsOut(message); });
    if (!isWhole) {
        m_kernel = Netlink();
        if (++m_failures < mostFailures)
            m_settling.start(settling);
        return;
    }
    m_failures = 0;
    const PathStatus status = isSatisfied ? PathStatus::satisfied : PathStatus::unsatisfied;
    if (std::exchange(m_told, status) == status)
        return;
    if (const Handler handler = m_handler)
        handler(status);
}

} // namespace tavrine
