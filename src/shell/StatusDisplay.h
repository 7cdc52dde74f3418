#pragma once

#include <QString>

namespace tavrine {

class FeatureFlags;
class NetworkMonitor;
class StatusItem;
class UserDefaults;

/// What the tray item tells of Keep Awake.
struct KeepAwakeState {
    bool isAwake = false;
    QString modeName = {}; ///< "Display Awake", "System Awake" or "Lid Closed"
};

/// What the tray item shows: its picture, its tip, and whether it is there. AppDelegate owns it; main thread.
class StatusDisplay {
public:
    /// All outlive the display.
    struct Parts {
        StatusItem &item;
        const UserDefaults &defaults;
        const FeatureFlags &flags;
        const NetworkMonitor &monitor;
    };

    explicit StatusDisplay(const Parts &parts) : m_parts(parts) {}

    /// Visibility by the preference, and the icon, whatever is to be shown in its place later.
    void setUp();
    void setVisible(bool isVisible);
    /// Tip and picture.
    void setKeepAwake(const KeepAwakeState &state);
    /// Shows the figures of the speed meter where its switch is on and the person wants them, else the icon, with the
    /// present values. Draws nothing while that looks the same.
    void updateStatusItem();

private:
    [[nodiscard]] bool showsSpeed() const;
    void showIcon();

    Parts m_parts;
    KeepAwakeState m_keepAwake;
};

} // namespace tavrine
