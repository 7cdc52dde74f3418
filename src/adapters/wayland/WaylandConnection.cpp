#include "adapters/wayland/WaylandConnection.h"

#include "base/ErrorText.h"

#include <cerrno>
#include <cstdint>

namespace tavrine {

WaylandConnection::WaylandConnection() : m_display(wl_display_connect(nullptr)) {}

WaylandConnection::~WaylandConnection() {
    if (!m_display)
        return;
    wl_display_flush(m_display);
    for (wl_event_queue *const queue : m_queues)
        wl_event_queue_destroy(queue);
    wl_display_disconnect(m_display);
}

std::string WaylandConnection::whyClosed() const {
    const int error = m_display ? wl_display_get_error(m_display) : ENOTCONN;
    if (error != EPROTO)
        return errorText(error);
    const wl_interface *interface = nullptr;
    std::uint32_t object = 0;
    const std::uint32_t code = wl_display_get_protocol_error(m_display, &interface, &object);
    return std::string("protocol error ") + std::to_string(code) + " of " + (interface ? interface->name : "nothing");
}

wl_event_queue *WaylandConnection::makeQueue() {
    return m_queues.emplace_back(wl_display_create_queue(m_display));
}

} // namespace tavrine
