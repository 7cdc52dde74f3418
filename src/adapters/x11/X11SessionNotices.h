#pragma once

#include "adapters/linux/SessionEvents.h"
#include "adapters/x11/XcbClient.h"
#include "ports/SessionNotices.h"

#include <QObject>

#include <memory>
#include <vector>

namespace tavrine {

/// What happens to a session under an X server. Waking and unlocking come from logind and the lock screen, the
/// desktop's number and whether its windows are hidden from the window manager, the screens from the server's own
/// screen saver, and the keyboard from the toolkit.
///
/// Lives on the main thread; has a connection only while somebody follows. The server tells nobody that a display was
/// switched off and on past its screen saver, so that is not heard.
class X11SessionNotices final : public QObject, public SessionNotices {
public:
    ~X11SessionNotices() override;

    [[nodiscard]] Token follow(std::function<void(SessionNotice)> handler) override;

private:
    using Handler = std::function<void(SessionNotice)>;

    void begin();
    void end();
    void watchServer();
    void handle(const xcb_generic_event_t &event);
    void onRootProperty(xcb_atom_t property);
    [[nodiscard]] quint32 rootNumber(const char *property);
    void tell(SessionNotice notice);

    std::vector<std::shared_ptr<Handler>> m_followers;
    SessionEvents m_events;
    SessionEvents::Listening m_listening;
    std::unique_ptr<XcbClient> m_client;
    std::unique_ptr<QObject> m_toolkit; ///< holds the connections to its signals
    quint32 m_desktop = 0;
    quint8 m_screenSaverNotice = 0;
    bool m_isShowingDesktop = false;
    bool m_areScreensOff = false;
    bool m_hasKeyboard = false;
};

} // namespace tavrine
