#pragma once

#include "base/NotificationCenter.h"

#include <QObject>

namespace tavrine {

class ClipboardManager;
class LoginItem;
class UserDefaults;

/// What the general page shows and changes. Lives as long as its page; main thread.
class GeneralSettingsModel : public QObject {
    Q_OBJECT

public:
    /// All outlive the model.
    struct Ports {
        UserDefaults &defaults;
        NotificationCenter &center;
        LoginItem &loginItem;
        ClipboardManager &clipboardManager; ///< knows of the login item, for whoever shows it
    };
    explicit GeneralSettingsModel(Ports ports);

    /// A change that the desktop refuses goes back, without a word.
    [[nodiscard]] bool launchAtLogin() const { return m_launchAtLogin; }
    void setLaunchAtLogin(bool isOn);

    /// At once: the item's owner hears of each change, whoever made it.
    [[nodiscard]] bool showInMenuBar() const;
    void setShowInMenuBar(bool isVisible);

Q_SIGNALS:
    void changed();

private:
    void preferencesChanged();

    Ports m_ports;
    bool m_launchAtLogin;
    bool m_toldVisible; ///< what the item's owner has heard last
    NotificationCenter::Token m_observer;
};

} // namespace tavrine
