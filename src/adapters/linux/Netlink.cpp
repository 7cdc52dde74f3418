#include "adapters/linux/Netlink.h"

#include <cerrno>

#include <linux/rtnetlink.h>
#include <sys/socket.h>

namespace tavrine {
namespace {

// The kernel fills no more than this into one part of an answer.
constexpr std::size_t partBytes = 32UL * 1024;
// Notices that are thrown away in one go; what arrives meanwhile wakes us again.
constexpr int longestDrain = 4096;

} // namespace

Netlink::Netlink(std::initializer_list<int> groups)
    : m_socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE)) {
    sockaddr_nl nobody{}; // the kernel passes over a socket that has no number yet
    nobody.nl_family = AF_NETLINK;
    if (::bind(m_socket.number(), reinterpret_cast<const sockaddr *>(&nobody), sizeof nobody) != 0)
        m_socket.close();
    for (const int group : groups)
        if (::setsockopt(m_socket.number(), SOL_NETLINK, NETLINK_ADD_MEMBERSHIP, &group, sizeof group) != 0)
            m_socket.close();
}

bool Netlink::ask(quint16 request) {
    struct {
        nlmsghdr header;
        rtgenmsg family;
    } message{};
    message.header.nlmsg_len = NLMSG_LENGTH(sizeof message.family);
    message.header.nlmsg_type = request;
    message.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    message.header.nlmsg_seq = ++m_sequence;
    message.family.rtgen_family = AF_UNSPEC;
    return ::send(m_socket.number(), &message, message.header.nlmsg_len, 0) ==
           static_cast<ssize_t>(message.header.nlmsg_len);
}

Netlink::Part Netlink::readPart(const Handler &handler) {
    const ssize_t size = ::recv(m_socket.number(), m_buffer.data(), m_buffer.size(), MSG_TRUNC);
    if (size <= 0 || static_cast<std::size_t>(size) > m_buffer.size())
        return Part::broken;
    auto left = static_cast<unsigned>(size);
    for (const auto *message = reinterpret_cast<const nlmsghdr *>(m_buffer.data()); NLMSG_OK(message, left);
         message = NLMSG_NEXT(message, left)) {
        if (message->nlmsg_seq != m_sequence) // of an answer that was given up
            continue;
        // The table changed between two parts: a row may be missing, or be there twice.
        if (message->nlmsg_type == NLMSG_ERROR || message->nlmsg_flags & NLM_F_DUMP_INTR)
            return Part::broken;
        if (message->nlmsg_type == NLMSG_DONE)
            return Part::end;
        handler(*message);
    }
    return Part::more;
}

bool Netlink::dump(quint16 request, const Handler &handler) {
    m_buffer.resize(partBytes);
    if (!isOpen() || !ask(request))
        return false;
    Part part = Part::more;
    while (part == Part::more)
        part = readPart(handler);
    return part == Part::end;
}

void Netlink::drain() {
    char unused = 0;
    for (int i = 0; i < longestDrain; ++i)
        if (::recv(m_socket.number(), &unused, sizeof unused, MSG_TRUNC) < 0 && errno != ENOBUFS && errno != EINTR)
            return;
}

void forEachAttribute(const nlmsghdr &message, std::size_t bodyBytes,
                      const std::function<void(int type, const void *bytes, std::size_t size)> &each) {
    const std::size_t start = NLMSG_ALIGN(NLMSG_LENGTH(bodyBytes));
    if (message.nlmsg_len < start)
        return;
    const auto *attribute = reinterpret_cast<const rtattr *>(reinterpret_cast<const char *>(&message) + start);
    // With a sign: the last one may end before its padding, and what is left is less than nothing behind it.
    for (auto left = static_cast<int>(message.nlmsg_len - start); RTA_OK(attribute, left);
         attribute = RTA_NEXT(attribute, left))
        each(attribute->rta_type, RTA_DATA(attribute), RTA_PAYLOAD(attribute));
}

} // namespace tavrine
