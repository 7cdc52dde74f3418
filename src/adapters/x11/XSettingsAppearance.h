#pragma once

#include "adapters/linux/DesktopThemes.h"
#include "adapters/x11/XcbClient.h"
#include "ports/Appearance.h"

#include <QByteArray>
#include <QString>

namespace tavrine {

/// What a desktop's settings service keeps on the X server and this program follows.
struct XSettings {
    QString theme; ///< "Net/ThemeName"
    DesktopThemes themes;
    bool hasAnimations = true; ///< "Gtk/EnableAnimations"
};
/// Nothing of what is missing, and of what stands behind bytes that are not what they should be.
[[nodiscard]] XSettings settingsIn(const QByteArray &bytes);

/// Dark looks by the theme of the desktop's settings service (XSETTINGS), which toolkits of all kinds follow, and
/// whether things move. Lives on the main thread, on a connection of its own; a service that comes later or goes is
/// heard.
class XSettingsAppearance final : public Appearance {
public:
    XSettingsAppearance();

    [[nodiscard]] DesktopAppearance settings() const override { return m_settings; }
    void setOnChange(std::function<void()> onChange) override { m_onChange = std::move(onChange); }
    /// As the service tells them now.
    [[nodiscard]] const DesktopThemes &themes() const { return m_themes; }

private:
    void handle(const xcb_generic_event_t &event);
    void findService();
    void read();

    XcbClient m_client;
    std::function<void()> m_onChange;
    DesktopAppearance m_settings;
    DesktopThemes m_themes;
    xcb_window_t m_service = XCB_WINDOW_NONE;
};

} // namespace tavrine
