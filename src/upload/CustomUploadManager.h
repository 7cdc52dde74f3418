#pragma once

#include "base/SerialQueue.h"

#include <QObject>
#include <QString>

namespace tavrine {

class Keychain;
class Time;
class UserDefaults;

/// The person's upload script and the switch that turns uploading on. A script can hold the keys of an account, so it
/// lives in the key ring and never in the preferences.
///
/// Main thread, as long as the process; the key ring is asked on a queue of its own, one call after the other. Until it
/// has answered, and whenever it does not, the script is empty.
class CustomUploadManager final : public QObject {
    Q_OBJECT

public:
    /// All outlive the manager.
    struct Ports {
        UserDefaults &defaults;
        Keychain &keychain;
        Time &time;
    };

    explicit CustomUploadManager(Ports ports, QObject *parent = nullptr);

    [[nodiscard]] bool isEnabled() const { return m_isEnabled; }
    [[nodiscard]] const QString &savedScript() const { return m_savedScript; }
    /// Whether there is an upload button anywhere.
    [[nodiscard]] bool isConfigured() const;

    /// Written at once.
    void setEnabled(bool isEnabled);
    /// Written at once, on the key ring's queue. An empty script removes the stored one.
    void setScript(const QString &script);

Q_SIGNALS:
    /// `isEnabled` or `savedScript` is another now.
    void changed();

private:
    void load();
    void apply(const QString &loadedScript);
    void persistScript();

    Ports m_ports;
    bool m_isApplyingLoadedScript = false;
    bool m_isEnabled = false;
    QString m_savedScript;
    SerialQueue m_keychainQueue; // the last member: it ends before what its work uses
};

} // namespace tavrine
