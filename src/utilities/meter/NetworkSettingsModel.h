#pragma once

#include "base/NotificationCenter.h"
#include "utilities/meter/SpeedPreferences.h"

#include <QObject>

namespace tavrine {

class UserDefaults;

/// What the page of the speed meter shows and changes. Everything stands in the preferences, and the page follows them
/// whoever changes them. Main thread; lives as long as its page.
class NetworkSettingsModel : public QObject {
    Q_OBJECT

public:
    /// Both outlive the model.
    NetworkSettingsModel(UserDefaults &defaults, NotificationCenter &center);

    [[nodiscard]] bool showsInternetSpeed() const;
    void setShowsInternetSpeed(bool shows);

    /// A stored text that is none of the choices shows as the one that counts for it, and stays stored.
    [[nodiscard]] SpeedDisplayMode displayMode() const;
    void setDisplayMode(SpeedDisplayMode mode);
    [[nodiscard]] SpeedTheme theme() const;
    void setTheme(SpeedTheme theme);

    // What the pickers list, in the order of the choices.
    [[nodiscard]] static QStringList displayModeLabels();
    [[nodiscard]] static QStringList themeLabels();

Q_SIGNALS:
    void changed();

private:
    UserDefaults &m_defaults;
    NotificationCenter::Token m_observer;
};

} // namespace tavrine
