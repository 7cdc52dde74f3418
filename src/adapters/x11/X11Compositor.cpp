#include "adapters/x11/X11Compositor.h"

#include <QTimer>

#include <xcb/xfixes.h>

namespace tavrine {

X11Compositor::X11Compositor(std::function<void(bool isRunning)> onChange)
    : m_client([this](const xcb_generic_event_t &event) { handle(event); }), m_onChange(std::move(onChange)) {
    if (m_client.isConnected())
        watch();
    else
        m_onChange(false);
}

void X11Compositor::watch() {
    constexpr std::chrono::seconds betweenTries{1};
    xcb_connection_t *connection = m_client.connection();
    static_cast<void>(m_client.takeIsLate());
    const xcb_atom_t selection = compositorSelection(m_client.link());
    if (const auto *fixes = m_client.link().extension(xcb_xfixes_id)) {
        m_firstFixesEvent = fixes->first_event;
        xcb_xfixes_query_version(connection, 1, 0); // the extension answers nobody who has not asked for its version
        xcb_xfixes_select_selection_input(connection, m_client.root(), selection,
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                              XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                              XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    }
    m_onChange(isCompositorRunning(m_client.link()));
    m_client.flush();
    if (m_client.takeIsLate())
        QTimer::singleShot(betweenTries, &m_client, [this] { watch(); });
}

void X11Compositor::handle(const xcb_generic_event_t &event) {
    if (m_firstFixesEvent == 0 || (event.response_type & 0x7f) != m_firstFixesEvent + XCB_XFIXES_SELECTION_NOTIFY)
        return;
    const auto &notice = reinterpret_cast<const xcb_xfixes_selection_notify_event_t &>(event);
    m_onChange(notice.owner != XCB_WINDOW_NONE);
}

} // namespace tavrine
