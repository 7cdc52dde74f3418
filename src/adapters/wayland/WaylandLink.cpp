#include "adapters/wayland/WaylandLink.h"

#include "base/ErrorText.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include <poll.h>

namespace tavrine {
namespace {

/// So often a link that may be given up looks whether it was, while it waits for an answer.
constexpr WaylandLink::Wait betweenLooks{50};

int remaining(std::chrono::steady_clock::time_point end) {
    const auto left = std::chrono::ceil<WaylandLink::Wait>(end - std::chrono::steady_clock::now());
    return static_cast<int>(std::max<WaylandLink::Wait::rep>(left.count(), 0));
}

} // namespace

WaylandLink::WaylandLink(Wait longest, const std::atomic<bool> *isGivenUp)
    : m_isGivenUp(isGivenUp), m_connection(std::make_shared<WaylandConnection>()) {
    if (m_connection->isOpen())
        open(longest);
}

WaylandLink::WaylandLink(std::shared_ptr<WaylandConnection> connection, Wait longest)
    : m_isGivenUp(nullptr), m_connection(connection ? connection : std::make_shared<WaylandConnection>()) {
    if (!m_connection->isOpen())
        return;
    if (connection) {
        m_queue = m_connection->makeQueue();
        m_sameOnQueue = static_cast<wl_display *>(wl_proxy_create_wrapper(display()));
        wl_proxy_set_queue(reinterpret_cast<wl_proxy *>(m_sameOnQueue), m_queue);
    }
    open(longest);
}

WaylandLink::~WaylandLink() {
    close();
}

void WaylandLink::open(Wait longest) {
    static constexpr wl_registry_listener listener{
        .global =
            [](void *link, wl_registry *, std::uint32_t name, const char *interface, std::uint32_t version) {
                static_cast<WaylandLink *>(link)->added({name, interface, version});
            },
        .global_remove = [](void *link, wl_registry *,
                            std::uint32_t name) { static_cast<WaylandLink *>(link)->removed(name); },
    };
    m_registry = wl_display_get_registry(m_sameOnQueue ? m_sameOnQueue : display());
    wl_registry_add_listener(m_registry, &listener, this);
    if (finish(longest))
        return;
    close();
    m_connection.reset();
}

void WaylandLink::close() {
    if (m_registry)
        wl_registry_destroy(std::exchange(m_registry, nullptr));
    if (m_sameOnQueue)
        wl_proxy_wrapper_destroy(std::exchange(m_sameOnQueue, nullptr));
    if (m_connection && m_connection->isOpen())
        wl_display_flush(display());
}

std::string WaylandLink::whyClosed() const {
    return m_connection ? m_connection->whyClosed() : errorText(ENOTCONN);
}

wl_callback *WaylandLink::sync() const {
    return wl_display_sync(m_sameOnQueue ? m_sameOnQueue : display());
}

int WaylandLink::prepareRead() const {
    return m_queue ? wl_display_prepare_read_queue(display(), m_queue) : wl_display_prepare_read(display());
}

int WaylandLink::callHandlers() const {
    return m_queue ? wl_display_dispatch_queue_pending(display(), m_queue) : wl_display_dispatch_pending(display());
}

const WaylandLink::Global *WaylandLink::find(std::string_view interface) const {
    const auto found =
        std::find_if(m_globals.begin(), m_globals.end(), [&](const Global &g) { return g.interface == interface; });
    return found == m_globals.end() ? nullptr : &*found;
}

void WaylandLink::setOnGlobal(std::function<void(const Global &, bool)> onGlobal) {
    m_onGlobal = std::move(onGlobal);
}

void WaylandLink::added(const Global &global) {
    m_globals.push_back(global);
    if (m_onGlobal)
        m_onGlobal(global, true);
}

void WaylandLink::removed(std::uint32_t name) {
    const auto found =
        std::find_if(m_globals.begin(), m_globals.end(), [&](const Global &g) { return g.name == name; });
    if (found == m_globals.end())
        return;
    const Global global = *found;
    m_globals.erase(found);
    if (m_onGlobal)
        m_onGlobal(global, false);
}

void *WaylandLink::bindAs(const Global &global, const wl_interface &interface, std::uint32_t highest) {
    return isOpen() ? wl_registry_bind(m_registry, global.name, &interface, std::min(global.version, highest))
                    : nullptr;
}

bool WaylandLink::flush() {
    return !isOpen() || wl_display_flush(display()) >= 0 || errno != EAGAIN;
}

bool WaylandLink::finish(Wait longest) {
    if (!isOpen())
        return false;
    bool isDone = false;
    static constexpr wl_callback_listener listener{
        .done = [](void *done, wl_callback *, std::uint32_t) { *static_cast<bool *>(done) = true; }};
    wl_callback *const callback = sync();
    wl_callback_add_listener(callback, &listener, &isDone);
    const auto end = Clock::now() + longest;
    const auto piece = [&] {
        return m_isGivenUp ? std::min(Wait{remaining(end)}, betweenLooks) : Wait{remaining(end)};
    };
    while (!isDone && !(m_isGivenUp && *m_isGivenUp) && dispatch(piece()) && Clock::now() < end)
        ;
    wl_callback_destroy(callback);
    return isDone;
}

bool WaylandLink::dispatch(Wait longest, int wake) {
    if (!isOpen())
        return false;
    while (prepareRead() != 0) {
        if (callHandlers() == 0)
            continue;
        flush(); // something had been read already
        return isOpen();
    }
    if (waitForEvents(Clock::now() + longest, wake)) {
        wl_display_read_events(display());
        m_connection->wasRead();
    } else {
        wl_display_cancel_read(display());
    }
    callHandlers();
    flush();
    return isOpen();
}

/// Sends meanwhile what the compositor did not take at once.
bool WaylandLink::waitForEvents(Clock::time_point end, int wake) {
    for (;;) {
        const short wanted = flush() ? POLLIN : POLLIN | POLLOUT;
        std::array<pollfd, 2> descriptors{pollfd{descriptor(), wanted, 0}, pollfd{wake, POLLIN, 0}};
        const int found = ::poll(descriptors.data(), descriptors.size(), remaining(end));
        const bool isInterrupted = found < 0 && errno == EINTR;
        const bool isOnlyRoom = found > 0 && descriptors[0].revents == POLLOUT && descriptors[1].revents == 0;
        if (!isInterrupted && !isOnlyRoom)
            return found > 0 && (descriptors[0].revents & ~POLLOUT) != 0;
    }
}

} // namespace tavrine
