#include "adapters/wayland/PlayedCompositor.h"

#include <algorithm>
#include <string_view>

#include <sys/socket.h>
#include <sys/un.h>
#include <wayland-server-core.h>

namespace tavrine {
namespace {

constexpr int turn = 5; ///< milliseconds

} // namespace

PlayedCompositor::PlayedCompositor(std::vector<const wl_interface *> offered, OnRequest onRequest)
    : m_displayBefore(qgetenv("WAYLAND_DISPLAY")), m_onRequest(std::move(onRequest)), m_display(wl_display_create()) {
    const QByteArray socket = m_folder.filePath(QStringLiteral("played")).toLocal8Bit();
    const int listening = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    std::copy(socket.begin(), socket.end(), address.sun_path);
    if (::bind(listening, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0 && ::listen(listening, 8) == 0)
        wl_display_add_socket_fd(m_display, listening);
    qputenv("WAYLAND_DISPLAY", socket);
    for (const wl_interface *each : offered) {
        auto &kind = m_offered[each] = {this, each};
        wl_global_create(m_display, each, each->version, &kind,
                         [](wl_client *client, void *data, std::uint32_t version, std::uint32_t id) {
                             const auto &[self, interface] =
                                 *static_cast<std::pair<PlayedCompositor *, const wl_interface *> *>(data);
                             wl_resource *const resource =
                                 wl_resource_create(client, interface, static_cast<int>(version), id);
                             self->adopt(resource);
                             self->note({resource, std::string(interface->name) + ".bind", nullptr});
                         });
    }
    m_logger = wl_display_add_protocol_logger(
        m_display,
        [](void *self, wl_protocol_logger_type direction, const wl_protocol_logger_message *message) {
            if (direction == WL_PROTOCOL_LOGGER_REQUEST && wl_resource_get_id(message->resource) == 1)
                static_cast<PlayedCompositor *>(self)->note(
                    {message->resource, std::string("wl_display.") + message->message->name, nullptr});
        },
        this);
    m_thread = std::thread([this] { run(); });
}

PlayedCompositor::~PlayedCompositor() {
    goOn();
    m_isEnding = true;
    m_thread.join();
    wl_protocol_logger_destroy(m_logger);
    wl_display_destroy_clients(m_display);
    wl_display_destroy(m_display);
    if (m_displayBefore.isEmpty())
        qunsetenv("WAYLAND_DISPLAY");
    else
        qputenv("WAYLAND_DISPLAY", m_displayBefore);
}

void PlayedCompositor::adopt(wl_resource *resource) {
    wl_resource_set_dispatcher(resource, dispatch, this, this, nullptr);
}

int PlayedCompositor::dispatch(const void *self, void *resource, std::uint32_t /*opcode*/, const wl_message *message,
                               wl_argument *arguments) {
    auto &compositor = *static_cast<PlayedCompositor *>(const_cast<void *>(self));
    auto *const asked = static_cast<wl_resource *>(resource);
    wl_resource *made = nullptr;
    int next = 0;
    for (const char *sign = message->signature; *sign; ++sign) {
        if (*sign == '?' || (*sign >= '0' && *sign <= '9'))
            continue;
        if (*sign == 'n') { // what is asked for is made
            made = wl_resource_create(wl_resource_get_client(asked), message->types[next],
                                      wl_resource_get_version(asked), arguments[next].n);
            compositor.adopt(made);
        }
        ++next;
    }
    compositor.note({asked, std::string(wl_resource_get_class(asked)) + "." + message->name, arguments, made});
    if (std::string_view(message->name) == "destroy" || std::string_view(message->name) == "release")
        wl_resource_destroy(asked);
    return 0;
}

void PlayedCompositor::note(const Request &request) {
    if (m_onRequest)
        m_onRequest(request);
    const std::lock_guard lock(m_mutex);
    ++m_counts[request.name];
}

int PlayedCompositor::count(const std::string &request) const {
    const std::lock_guard lock(m_mutex);
    const auto found = m_counts.find(request);
    return found == m_counts.end() ? 0 : found->second;
}

wl_resource *PlayedCompositor::make(wl_resource *other, const wl_interface &kind) {
    wl_resource *const made =
        wl_resource_create(wl_resource_get_client(other), &kind, wl_resource_get_version(other), 0);
    adopt(made);
    return made;
}

void PlayedCompositor::doThere(std::function<void()> work) {
    std::unique_lock lock(m_mutex);
    m_work = std::move(work);
    m_changed.wait(lock, [this] { return !m_work; });
}

void PlayedCompositor::stop() {
    std::unique_lock lock(m_mutex);
    m_isStopped = true;
    m_changed.wait(lock, [this] { return m_hasStopped; });
}

void PlayedCompositor::goOn() {
    const std::lock_guard lock(m_mutex);
    m_isStopped = false;
    m_changed.notify_all();
}

void PlayedCompositor::run() {
    while (!m_isEnding) {
        std::function<void()> work;
        {
            std::unique_lock lock(m_mutex);
            m_hasStopped = m_isStopped;
            m_changed.notify_all();
            m_changed.wait(lock, [this] { return !m_isStopped; });
            m_hasStopped = false;
            work = m_work;
        }
        if (work) {
            work();
            const std::lock_guard lock(m_mutex);
            m_work = nullptr;
            m_changed.notify_all();
        }
        wl_event_loop_dispatch(wl_display_get_event_loop(m_display), turn);
        wl_display_flush_clients(m_display);
    }
}

} // namespace tavrine
