#pragma once

#include <QString>

namespace tavrine {

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
    StatusDisplay(StatusItem &item, const UserDefaults &defaults) : m_item(item), m_defaults(defaults) {}

    /// Visibility by the preference, and the icon.
    void setUp();
    void setVisible(bool isVisible);
    /// Tip and icon.
    void setKeepAwake(const KeepAwakeState &state);
    /// Draws it with the present values.
    void updateStatusItem();

private:
    StatusItem &m_item;
    const UserDefaults &m_defaults;
    KeepAwakeState m_keepAwake;
};

} // namespace tavrine
