#pragma once

#include "base/NotificationCenter.h"

#include <QColor>
#include <QObject>

namespace tavrine {

class UserDefaults;

/// What the page of Keep Awake shows and changes: how the tray item looks while the machine is kept awake. Everything
/// stands in the preferences, and the page follows them whoever changes them. Main thread; lives as long as its page.
class KeepAwakeSettingsModel : public QObject {
    Q_OBJECT

public:
    static constexpr auto title = "Keep Awake";
    static constexpr auto subtitle = "Menu bar indicator settings";
    static constexpr auto section = "Menu Bar Indicator";
    static constexpr auto indicatorTitle = "Show active indicator";
    static constexpr auto indicatorNote = "Colour the menu bar icon when Keep Awake is on";
    static constexpr auto colorTitle = "Indicator colour";
    static constexpr auto colorNote = "Background colour applied to the menu bar icon";
    static constexpr auto resetTitle = "Reset";
    static constexpr auto resetHelp = "Reset to default";

    /// Both outlive the model.
    KeepAwakeSettingsModel(UserDefaults &defaults, NotificationCenter &center);

    [[nodiscard]] bool showsIndicator() const;
    void setShowsIndicator(bool isShown);

    /// As the tray item has it: the system's blue while nothing that can be read is stored.
    [[nodiscard]] QColor indicatorColor() const;
    /// Stored as "#RRGGBB". Opacity is dropped; no colour changes nothing.
    void setIndicatorColor(const QColor &color);
    void resetIndicatorColor();

Q_SIGNALS:
    void changed();

private:
    UserDefaults &m_defaults;
    NotificationCenter::Token m_observer;
};

} // namespace tavrine
