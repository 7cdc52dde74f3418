#pragma once

#include "utilities/awake/KeepAwakeManager.h"

namespace tavrine {

class Alerts;
class Time;

/// What the card in the menu shows of the manager, and what it asks of it. The manager keeps the state; here are the
/// words, and the rule of the alert.
///
/// Main thread; lives as long as its card. The alert is for who looks at the card: a wish for it that comes while
/// nobody does is kept until somebody does, and is taken back without a word when power came meanwhile. It is taken
/// back when the person has answered.
class KeepAwakeControlModel : public QObject {
    Q_OBJECT

public:
    static constexpr auto title = "Keep Awake";
    static constexpr auto symbol = "cup.and.saucer.fill";
    static constexpr auto advancedTitle = "Advanced Awake modes";
    static constexpr auto chargingOnlyTitle = "Charging Only";
    static constexpr auto scheduleTitle = "Schedule";
    static constexpr auto weekdaysOnlyTitle = "Weekdays only";
    static constexpr auto pausedNote = "Charging Only: paused while on battery";
    static constexpr auto lidNote = "Reliability varies by Mac model & macOS version.";
    static constexpr auto alertTitle = "Connect AC Power";
    static constexpr auto alertText =
        "Lid Closed mode requires AC power on Apple Silicon. Keep Awake will activate automatically when your charger "
        "is connected.";

    /// All outlive the model. `beforeAlert` may be empty.
    struct Parts {
        KeepAwakeManager &manager;
        Alerts &alerts;
        Time &time;
        std::function<void()> beforeAlert;
    };

    explicit KeepAwakeControlModel(Parts parts);

    [[nodiscard]] KeepAwakeManager &manager() { return m_parts.manager; }
    [[nodiscard]] const KeepAwakeManager &manager() const { return m_parts.manager; }
    /// "Active" or "Inactive".
    [[nodiscard]] QString status() const;
    [[nodiscard]] bool isPausedOnBattery() const { return manager().autoDisabledForBattery(); }
    [[nodiscard]] bool showsLidNote() const { return manager().selectedMode() == KeepAwakeMode::lidClosed; }
    [[nodiscard]] bool showsTimes() const { return manager().scheduleEnabled(); }

    void toggleAdvancedPanel();
    /// Whether somebody can look at the card.
    void setOnScreen(bool isOnScreen);

Q_SIGNALS:
    void changed();

private:
    void alertSoon();
    void alert();

    Parts m_parts;
    bool m_isOnScreen = false;
};

} // namespace tavrine
