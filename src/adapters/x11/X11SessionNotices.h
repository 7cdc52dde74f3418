#pragma once

#include "adapters/linux/LinuxSessionNotices.h"
#include "adapters/x11/XcbClient.h"

#include <memory>

namespace tavrine {

/// What happens to a session under an X server: beside what every desktop tells, the desktop's number and whether its
/// windows are hidden from the window manager, and the screens from the server's own screen saver.
///
/// Has a connection only while somebody follows. The server tells nobody that a display was switched off and on past
/// its screen saver, so that is not heard.
class X11SessionNotices final : public LinuxSessionNotices {
public:
    ~X11SessionNotices() override;

    [[nodiscard]] bool tells(SessionNotice /*notice*/) const override { return true; }

protected:
    void begin() override;
    void end() override;

private:
    void watchServer();
    void handle(const xcb_generic_event_t &event);
    void onRootProperty(xcb_atom_t property);
    [[nodiscard]] quint32 rootNumber(const char *property);

    std::unique_ptr<XcbClient> m_client;
    quint32 m_desktop = 0;
    quint8 m_screenSaverNotice = 0;
    bool m_isShowingDesktop = false;
    bool m_areScreensOff = false;
};

} // namespace tavrine
