#pragma once

#include "base/Time.h"
#include "shell/updates/UpdateCheck.h"

#include <QObject>

#include <memory>

namespace tavrine {

class UrlOpener;
class UserDefaults;
class UserNotifications;

/// The software updater: asks the package system, and the feed where the build names one, and tells the person. It
/// installs nothing. AppDelegate owns the one instance; main thread.
///
///  1. It looks when the person asks, and says what came of it, whatever it is.
///  2. By itself it looks once a day, and speaks only of a version that the person has not been told of. It never
///     starts the package system for that. A look that nobody answers is repeated an hour later.
///  3. There is one look at a time. A person who asks twice is answered once; one who asks while it looks by itself has
///     it begin anew, for that look spares the package system.
///
/// The day is counted by the clock on the wall, over the end of the program and the machine's sleep. A last look that
/// lies in the future is none: somebody has set the clock.
class SoftwareUpdater : public QObject {
    Q_OBJECT

public:
    enum class State { idle, lookingByItself, lookingForPerson };

    static constexpr Seconds firstLook{120}; ///< after the launch, which has the machine to itself
    static constexpr Seconds pulse{3600};    ///< how often it is asked whether a day has passed
    static constexpr Seconds day{24 * 3600};
    static constexpr Seconds quietLook{2};     ///< after which a person who waits hears that something happens
    static constexpr Seconds longestAnswer{5}; ///< of the desktop's notifications, on whether they are shown

    /// All outlive the updater.
    struct Ports {
        Time &time;
        UserDefaults &defaults;
        PackageUpdates &packages;
        UpdateFeed *feed; ///< null where the build names none
        UserNotifications &notifications;
        UrlOpener &urlOpener;
    };
    /// `version` is this program's own.
    SoftwareUpdater(const Ports &ports, const QString &version);

    /// Begins to look by itself. Once, in the launch.
    void start();
    /// Looks now, because the person asked.
    void checkForUpdates();

    [[nodiscard]] State state() const { return m_state; }
    /// That it looks because the person asked, or what the last look brought; empty before the first one.
    [[nodiscard]] QString status() const;

Q_SIGNALS:
    /// The state or the status is another.
    void changed();
    /// The person asked, and the desktop shows no notification of what came of it.
    void unheard();

private:
    void lookIfDue();
    void look(State state);
    void onFinished(const UpdateOutcome &outcome);
    void tellByItself(const UpdateOutcome &outcome);
    void tell(const UpdateOutcome &outcome, State asked);
    struct Echoes {
        std::function<void()> pressed = {}; ///< by the person
        std::function<void()> shown = {};   ///< by the desktop
        std::function<void()> unshown = {}; ///< not by the desktop, but as a line
    };
    void say(const QString &sentence, Echoes echoes);

    Ports m_ports;
    QString m_version;
    State m_state = State::idle;
    QString m_lastSentence;
    Date m_began;
    std::unique_ptr<UpdateCheck> m_check;
    std::unique_ptr<Timer> m_pulse;
};

} // namespace tavrine
