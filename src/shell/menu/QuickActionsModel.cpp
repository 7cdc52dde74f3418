#include "shell/menu/QuickActionsModel.h"

#include "base/UserDefaults.h"
#include "shell/menu/LayoutPreferences.h"

#include <set>

namespace tavrine {

bool isWanted(QuickAction action, const FeatureFlags &flags, const UserDefaults &defaults) {
    switch (action) {
    case QuickAction::loFi:
        return flags.isOn(Feature::loFi);
    case QuickAction::keepAwake:
        return flags.isOn(Feature::keepAwake);
    case QuickAction::screenshot:
        return preference::layoutShowScreenshot.get(defaults) && flags.isOn(Feature::snippingTool);
    case QuickAction::screenRecord:
        return flags.isOn(Feature::screenRecorder);
    case QuickAction::qrScan:
        return preference::layoutShowQRScan.get(defaults);
    case QuickAction::cleanMode:
        return flags.isOn(Feature::cleaningMode);
    case QuickAction::settings:
        return true;
    case QuickAction::editor:
        return preference::layoutShowEditor.get(defaults) && flags.isOn(Feature::tavrineEditor);
    }
    return false;
}

QuickActionsModel::QuickActionsModel(FeatureFlags &flags, const UserDefaults &defaults, NotificationCenter &center,
                                     Time &time, Actions actions, QObject *parent)
    : QObject(parent), m_flags(flags), m_defaults(defaults), m_time(time), m_actions(std::move(actions)),
      m_observer(center.addObserver(QLatin1String(UserDefaults::didChangeNotification),
                                    [this](const Notification &) { Q_EMIT changed(); })) {
    connect(&flags, &FeatureFlags::published, this, &QuickActionsModel::changed);
}

bool QuickActionsModel::isVisible(QuickAction action) const {
    return m_actions.isBuilt(action) && isWanted(action, m_flags, m_defaults);
}

std::vector<LayoutRow> QuickActionsModel::rows() const {
    // Each place once, however often the stored order has it: its control stands in one place only.
    std::set<QuickAction> seen;
    return layoutRows(orderedIds(preference::layoutOrder.get(m_defaults)),
                      [this, &seen](QuickAction action) { return isVisible(action) && seen.insert(action).second; });
}

QString QuickActionsModel::subtitle(QuickAction action) const {
    if (!preference::layoutShowSubtitles.get(m_defaults))
        return {};
    if (action == QuickAction::cleanMode && !m_actions.canClean())
        return QStringLiteral("Not on This Desktop");
    return QLatin1String(isOn(action) ? textOf(action).subtitleOn : textOf(action).subtitle);
}

void QuickActionsModel::runLater(Seconds delay, const std::function<void()> &tool) {
    m_actions.onDismissMenu();
    m_time.asyncAfter(delay, this, tool);
}

void QuickActionsModel::run(QuickAction action) {
    switch (action) {
    case QuickAction::screenshot:
        if (m_actions.mayCaptureScreen())
            runLater(toolDelay, m_actions.startSnip);
        break;
    case QuickAction::screenRecord:
        if (m_actions.mayRecordScreen())
            runLater(toolDelay, m_actions.startScreenRecording);
        break;
    case QuickAction::qrScan:
        runLater(toolDelay, m_actions.startQrScan);
        break;
    case QuickAction::editor:
        runLater(toolDelay, m_actions.openEditor);
        break;
    case QuickAction::settings:
        runLater(settingsDelay, [this] {
            m_actions.openSettings();
            m_time.asyncAfter(secondDelay, this, m_actions.bringSettingsForward);
        });
        break;
    case QuickAction::cleanMode:
        m_actions.toggleCleaning();
        Q_EMIT changed();
        break;
    case QuickAction::loFi:
    case QuickAction::keepAwake:
        break; // a card has controls of its own
    }
}

} // namespace tavrine
