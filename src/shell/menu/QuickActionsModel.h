#pragma once

#include "base/NotificationCenter.h"
#include "base/Time.h"
#include "shell/FeatureFlags.h"
#include "shell/menu/QuickActionsLayout.h"

#include <QObject>

namespace tavrine {

/// What stands in the Quick Actions now, and what each of its tiles does. Belongs to the menu; main thread.
class QuickActionsModel : public QObject {
    Q_OBJECT

public:
    static constexpr Seconds toolDelay{0.15};     ///< from the end of the menu to the tool
    static constexpr Seconds settingsDelay{0.18}; ///< … to the settings
    static constexpr Seconds secondDelay{0.12};   ///< until they are brought forward once more

    /// The tools behind the tiles. `isBuilt`: a tile whose tool there is not yet is not shown.
    struct Actions {
        std::function<bool(QuickAction)> isBuilt;
        std::function<bool()> mayCaptureScreen;
        std::function<bool()> mayRecordScreen;
        std::function<void()> startSnip;
        std::function<void()> startScreenRecording;
        std::function<void()> startQrScan;
        std::function<void()> openEditor;
        std::function<void()> openSettings;
        std::function<void()> bringSettingsForward;
        std::function<bool()> canClean; ///< anywhere on this desktop
        std::function<bool()> isCleaning;
        std::function<void()> toggleCleaning;
        std::function<void()> onDismissMenu;
    };

    /// All outlive the model.
    QuickActionsModel(FeatureFlags &flags, const UserDefaults &defaults, NotificationCenter &center, Time &time,
                      Actions actions, QObject *parent = nullptr);

    [[nodiscard]] std::vector<LayoutRow> rows() const;
    [[nodiscard]] bool isVisible(QuickAction action) const;
    /// Empty when tiles show none.
    [[nodiscard]] QString subtitle(QuickAction action) const;
    [[nodiscard]] bool isToggle(QuickAction action) const { return action == QuickAction::cleanMode; }
    [[nodiscard]] bool isOn(QuickAction action) const { return isToggle(action) && m_actions.isCleaning(); }

    /// Runs a tile. One that flips something leaves the menu open; so does one that lacks a permission.
    void run(QuickAction action);
    /// The cleaner began or ended.
    void cleaningChanged() { Q_EMIT changed(); }

Q_SIGNALS:
    /// Rows, subtitles or states are others now.
    void changed();

private:
    void runLater(Seconds delay, const std::function<void()> &tool);

    FeatureFlags &m_flags;
    const UserDefaults &m_defaults;
    Time &m_time;
    Actions m_actions;
    NotificationCenter::Token m_observer;
};

/// Whether flags and preferences let a place be shown; that of the settings always is. The page that orders them asks
/// as well.
[[nodiscard]] bool isWanted(QuickAction action, const FeatureFlags &flags, const UserDefaults &defaults);

} // namespace tavrine
