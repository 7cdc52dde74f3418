#include "adapters/linux/NetlinkCounters.h"

#include <cstring>

#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <net/if.h>

namespace tavrine {
namespace {

// Interfaces that come and go while the list is read spoil it; a table that never comes to rest is none.
constexpr int mostTries = 3;

static_assert(interfaceFlag::up == IFF_UP && interfaceFlag::loopback == IFF_LOOPBACK &&
              interfaceFlag::running == IFF_RUNNING);

InterfaceAddress entryOf(const nlmsghdr &message, const ifinfomsg &body) {
    InterfaceAddress entry{.flags = body.ifi_flags, .isLinkLayer = true};
    forEachAttribute(message, sizeof body, [&entry](int type, const void *bytes, std::size_t size) {
        // The kernel counts in 64 bits and gives both forms; this one has the lower 32.
        if (rtnl_link_stats counts{}; type == IFLA_STATS && size >= sizeof counts) {
            std::memcpy(&counts, bytes, sizeof counts);
            entry.data = {counts.rx_bytes, counts.tx_bytes};
        }
    });
    return entry;
}

} // namespace

std::optional<std::vector<InterfaceAddress>> NetlinkCounters::interfaces() {
    if (!m_kernel.isOpen())
        m_kernel = Netlink();
    for (int i = 0; i < mostTries; ++i) {
        std::vector<InterfaceAddress> entries;
        const bool isWhole = m_kernel.dump(RTM_GETLINK, [&entries](const nlmsghdr &message) {
            if (const auto body = bodyOf<ifinfomsg>(message); body && message.nlmsg_type == RTM_NEWLINK)
                entries.push_back(entryOf(message, *body));
        });
        if (isWhole)
            return entries;
    }
    m_kernel = Netlink(); // nothing of an answer that was given up is left in a new one
    return std::nullopt;
}

} // namespace tavrine
