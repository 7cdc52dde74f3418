#include "upload/worker/http/NameLookup.h"

#include <array>
#include <atomic>
#include <mutex>
#include <system_error>
#include <thread>

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/eventfd.h>

namespace tavrine {
namespace {

std::atomic<int> underWay = 0;

std::string textOf(const addrinfo &found) {
    std::array<char, NI_MAXHOST> text{};
    if (getnameinfo(found.ai_addr, found.ai_addrlen, text.data(), text.size(), nullptr, 0, NI_NUMERICHOST) != 0)
        return {};
    return found.ai_family == AF_INET6 ? "[" + std::string(text.data()) + "]" : std::string(text.data());
}

NameLookup::Outcome lookUp(const std::string &host) {
    addrinfo wanted{};
    wanted.ai_family = AF_UNSPEC;
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    if (const int error = getaddrinfo(host.c_str(), nullptr, &wanted, &found))
        return {{}, gai_strerror(error)};
    NameLookup::Outcome outcome;
    for (const addrinfo *one = found; one; one = one->ai_next) {
        const std::string text = textOf(*one);
        if (!text.empty())
            outcome.addresses += (outcome.addresses.empty() ? "" : ",") + text;
    }
    freeaddrinfo(found);
    return outcome;
}

} // namespace

struct NameLookup::Shared {
    std::mutex mutex;
    std::optional<Outcome> outcome;
};

std::unique_ptr<NameLookup> NameLookup::start(const std::string &host, int wake) {
    if (++underWay > most) {
        --underWay;
        return nullptr;
    }
    auto lookup = std::make_unique<NameLookup>();
    lookup->m_shared = std::make_shared<Shared>();
    try {
        std::thread([shared = lookup->m_shared, host, wake] {
            Outcome outcome = lookUp(host);
            {
                const std::lock_guard guard(shared->mutex);
                shared->outcome = std::move(outcome);
            }
            --underWay;
            eventfd_write(wake, 1);
        }).detach();
    } catch (const std::system_error &) { // no thread
        --underWay;
        return nullptr;
    }
    return lookup;
}

std::optional<NameLookup::Outcome> NameLookup::outcome() const {
    const std::lock_guard guard(m_shared->mutex);
    return m_shared->outcome;
}

} // namespace tavrine
