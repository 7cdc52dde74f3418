#pragma once

#include "base/Preference.h"
#include "base/SerialQueue.h"

#include <QObject>
#include <QString>

#include <chrono>
#include <memory>

namespace tavrine {

class Keychain;
class Time;

namespace preference {
inline constexpr Preference<bool> cloudUploadEnabled{"cloudUploadEnabled", false};
}

/// The person's upload script and the switch that turns uploading on. A script can hold the keys of an account, so it
/// lives in the key ring and never in the preferences.
///
/// Main thread, from its first use to the end of the process; the key ring is asked on a queue of its own, one call
/// after the other.
///
///  1. Until the key ring has answered, and whenever it does not, the script is empty in memory. What was read is never
///     written back, so an answer that did not come erases nothing.
///  2. What the person saves stands: an answer to a question that was asked before the save is dropped.
///  3. The end of the program waits for a save that is under way, `longestGoodbye` at most, and for nothing else.
class CustomUploadManager final : public QObject {
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds longestGoodbye{500};

    /// All outlive the manager, which cancels the key ring at its own end.
    struct Ports {
        UserDefaults &defaults;
        Keychain &keychain;
        Time &time;
    };

    explicit CustomUploadManager(Ports ports, QObject *parent = nullptr);
    ~CustomUploadManager() override;

    [[nodiscard]] bool isEnabled() const { return m_isEnabled; }
    [[nodiscard]] const QString &savedScript() const { return m_savedScript; }
    /// Whether there is an upload button anywhere.
    [[nodiscard]] bool isConfigured() const;

    /// Written at once.
    void setEnabled(bool isEnabled);
    /// The preference has been changed by another.
    void takePreference();
    /// Written at once, on the key ring's queue. An empty script removes the stored one.
    void setScript(const QString &script);

    /// Asks the key ring again when it could not be asked before: it was locked, or not there. Nothing otherwise.
    void loadAgainIfFailed();

Q_SIGNALS:
    /// `isEnabled` or `savedScript` is another now.
    void changed();

private:
    /// Where the script in memory comes from.
    enum class Source { loading, keychain, failedToLoad, person };
    struct Writes;

    void load();
    void applyLoaded(const QString &script);
    void persistScript();

    Ports m_ports;
    bool m_isApplyingLoadedScript = false;
    bool m_isEnabled = false;
    QString m_savedScript;
    Source m_source = Source::loading;
    std::shared_ptr<Writes> m_writes; ///< under way, shared with the queue
    SerialQueue m_keychainQueue;      // the last member: it ends before what its work uses
};

} // namespace tavrine
