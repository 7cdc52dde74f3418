#pragma once

#include "base/Time.h"
#include "utilities/awake/KeepAwakeDuration.h"
#include "utilities/awake/KeepAwakeMode.h"
#include "utilities/awake/KeepAwakeSchedule.h"

#include <QObject>

#include <utility>

namespace tavrine {

class Calendar;
class PowerSource;
class UserDefaults;
class UserNotifications;

/// Keeps the machine awake, with one assertion at most. The person, a timer, the schedule and the power source switch
/// it on and off; a stop by the battery undoes itself when power comes back, and no other does.
///
/// One instance, made when the tool is first on or shown; main thread. Making it is its launch: the preferences are
/// read, the power source too as soon as the desktop has told it, and the ticks run. It always starts asleep.
///
///  1. `isAwake` and `isPluggedIn` are what people see; they change in a later turn than what changes them, and
///     `isAwake` becomes true when the machine has answered. Decisions go by the assertion that is held or asked for,
///     so two calls within a turn act as one after the other: what was switched off stays off, and a mode that is
///     chosen before the answer is the mode that is held.
///  2. A timed session lasts as long as its duration says on a clock that nobody sets: a clock that jumps changes
///     nothing, and time during which the machine was suspended counts. A session whose end passed meanwhile ends with
///     the first power tick afterwards, 10 s at most.
///  3. The schedule goes by the clock on the wall at the moment of each check, in the time zone of that moment. Its two
///     times are times of day: 09:00 stays 09:00 on the days of the year that are longer or shorter, and in another
///     zone.
///  4. A stored text that is no mode or duration, a stored number that is no second of a day and a value of another
///     type count as absent, and the next save replaces them.
class KeepAwakeManager : public QObject {
    Q_OBJECT

public:
    static constexpr Seconds powerPollInterval{10};
    static constexpr Seconds scheduleInterval{60};
    static constexpr auto assertionName = "Tavrine Keep Awake";
    static constexpr auto warningIdentifier = "keepAwake.lidWarning";

    /// All outlive the manager.
    struct Ports {
        Time &time;
        UserDefaults &defaults;
        Calendar &calendar;
        PowerAssertions &assertions;
        PowerSource &powerSource;
        UserNotifications &notifications;
    };

    explicit KeepAwakeManager(const Ports &ports);
    ~KeepAwakeManager() override;

    [[nodiscard]] bool isAwake() const { return m_isAwake; }
    /// Whether an assertion is held or asked for: what the switch shows, so that it follows the hand.
    [[nodiscard]] bool isHolding() const { return m_assertionId != 0; }
    [[nodiscard]] bool isPluggedIn() const { return m_isPluggedIn; }
    [[nodiscard]] KeepAwakeMode selectedMode() const { return m_selectedMode; }
    [[nodiscard]] KeepAwakeDuration selectedDuration() const { return m_selectedDuration; }
    [[nodiscard]] bool chargingOnly() const { return m_chargingOnly; }
    [[nodiscard]] bool scheduleEnabled() const { return m_scheduleEnabled; }
    [[nodiscard]] TimeOfDay scheduleStart() const { return m_scheduleStart; }
    [[nodiscard]] TimeOfDay scheduleEnd() const { return m_scheduleEnd; }
    [[nodiscard]] bool weekdaysOnly() const { return m_weekdaysOnly; }
    [[nodiscard]] bool showAdvancedPanel() const { return m_showAdvancedPanel; }
    [[nodiscard]] bool showLidClosedNoPowerWarning() const { return m_showLidClosedNoPowerWarning; }
    [[nodiscard]] bool autoDisabledForBattery() const { return m_autoDisabledForBattery; }
    /// When the timed session ends; none while there is none.
    [[nodiscard]] std::optional<Date> activeAwakeDeadline() const;

    /// The person's or the schedule's switch on.
    void enable();
    /// The main switch.
    void toggle();
    /// Releases everything, and does not come back by itself.
    void disable() { disable(Cause::asked); }
    /// The tool's own switch. Off ends what is held or paused, and the schedule rests until it is on again.
    void setFeatureOn(bool isOn);

    void setMode(KeepAwakeMode mode);
    void setDuration(KeepAwakeDuration duration);
    void setChargingOnly(bool chargingOnly);
    void setScheduleEnabled(bool isEnabled);
    // The next check applies these.
    void setScheduleStart(TimeOfDay start);
    void setScheduleEnd(TimeOfDay end);
    void setWeekdaysOnly(bool weekdaysOnly);

    void setShowAdvancedPanel(bool isShown);
    /// The wish for the warning is taken by one of those who can warn, and given back with its end.
    [[nodiscard]] bool beginWarning() { return m_showLidClosedNoPowerWarning && !std::exchange(m_isWarning, true); }
    void endWarning() {
        m_isWarning = false;
        setShowLidClosedNoPowerWarning(false);
    }
    void setShowLidClosedNoPowerWarning(bool isWanted);

Q_SIGNALS:
    void changed();           ///< anything of the above
    void awakeStateChanged(); ///< `isAwake` or the mode
    void showAdvancedPanelChanged(bool isShown);
    void showLidClosedNoPowerWarningChanged(bool isWanted);

private:
    enum class Cause { asked, battery };
    enum class Deadline { kept, reset };

    [[nodiscard]] bool readPowerSource();
    void publishPluggedIn(bool isPluggedIn);
    void takeFirstReading();
    void makeAssertion(Deadline deadline);
    void onCreated(int result, KeepAwakeMode mode, Deadline deadline);
    void releaseAssertion();
    void setAwake(bool isAwake);
    void setAutoDisabledForBattery(bool isPaused);
    void disable(Cause cause);
    void startDurationTimer(Deadline deadline);
    void clearDurationTimer();
    void warnIfLidNeedsPower(bool isPluggedIn);
    void powerTick();
    void endPastSession();
    void notifyOfBattery();
    void startScheduleTimer();
    void checkSchedule();
    void loadPreferences();
    void save();
    void changePreference() {
        save();
        Q_EMIT changed();
    }

    Ports m_ports;
    bool m_isAwake = false;
    bool m_isPluggedIn = true;
    KeepAwakeMode m_selectedMode = KeepAwakeMode::displayAwake;
    KeepAwakeDuration m_selectedDuration = KeepAwakeDuration::indefinite;
    bool m_chargingOnly = false;
    bool m_isFeatureOn = true;
    bool m_scheduleEnabled = false;
    TimeOfDay m_scheduleStart;
    TimeOfDay m_scheduleEnd;
    bool m_weekdaysOnly = true;
    bool m_showAdvancedPanel = false;
    bool m_showLidClosedNoPowerWarning = false;
    bool m_isWarning = false;
    quint32 m_assertionId = 0; ///< also of one whose result has not come yet; 0 for none
    std::unique_ptr<Timer> m_powerPollTimer;
    std::unique_ptr<Timer> m_scheduleTimer;
    std::unique_ptr<Timer> m_durationTimer;
    std::optional<Seconds> m_deadline; ///< on the clock that nobody sets
    bool m_autoDisabledForBattery = false;
};

} // namespace tavrine
