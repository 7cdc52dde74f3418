#include "shell/settings/LayoutSettingsModel.h"

#include "base/UserDefaults.h"
#include "shell/menu/LayoutPreferences.h"
#include "shell/menu/QuickActionsModel.h"

#include <algorithm>

namespace tavrine {
namespace {

/// All places that the page orders, in the order of those that the stored text lacks.
constexpr QuickAction fixedList[] = {QuickAction::loFi,   QuickAction::keepAwake, QuickAction::screenshot,
                                     QuickAction::qrScan, QuickAction::cleanMode, QuickAction::settings,
                                     QuickAction::editor};

const Preference<bool> *preferenceOf(QuickAction action) {
    switch (action) {
    case QuickAction::screenshot:
        return &preference::layoutShowScreenshot;
    case QuickAction::editor:
        return &preference::layoutShowEditor;
    case QuickAction::qrScan:
        return &preference::layoutShowQRScan;
    default:
        return nullptr;
    }
}

/// The place whose switch is the tool's own.
std::optional<Feature> featureBehind(QuickAction action) {
    switch (action) {
    case QuickAction::loFi:
        return Feature::loFi;
    case QuickAction::keepAwake:
        return Feature::keepAwake;
    case QuickAction::cleanMode:
        return Feature::cleaningMode;
    default:
        return std::nullopt;
    }
}

} // namespace

LayoutSettingsModel::LayoutSettingsModel(FeatureFlags &flags, UserDefaults &defaults, NotificationCenter &center,
                                         QObject *parent)
    : QObject(parent), m_flags(flags), m_defaults(defaults) {
    load();
    m_observer = center.addObserver(QLatin1String(UserDefaults::didChangeNotification),
                                    [this](const Notification &) { Q_EMIT changed(); });
    connect(&flags, &FeatureFlags::published, this, &LayoutSettingsModel::changed);
}

void LayoutSettingsModel::load() {
    const QString stored =
        preference::layoutOrder.stored(m_defaults).value_or(QLatin1String(preference::layoutOrderOfPage));
    const auto add = [this](QuickAction action) {
        if (std::ranges::find(m_items, action) == m_items.end())
            m_items.push_back(action);
    };
    for (const QString &id : stored.split(u',', Qt::SkipEmptyParts)) {
        const auto action = quickActionOf(id);
        if (action && std::ranges::find(fixedList, *action) != std::end(fixedList))
            add(*action);
    }
    for (const QuickAction action : fixedList)
        add(action);
    store();
}

void LayoutSettingsModel::store() {
    QStringList ids;
    for (const QuickAction action : m_items)
        ids.append(QLatin1String(textOf(action).id));
    preference::layoutOrder.set(m_defaults, ids.join(u','));
}

std::vector<LayoutRow> LayoutSettingsModel::rows() const {
    QStringList ids;
    for (const QuickAction action : m_items)
        ids.append(QLatin1String(textOf(action).id));
    return layoutRows(ids, [this](QuickAction action) { return isWanted(action, m_flags, m_defaults); });
}

bool LayoutSettingsModel::isShown(QuickAction action) const {
    if (const auto feature = featureBehind(action))
        return m_flags.isOn(*feature);
    const Preference<bool> *preference = preferenceOf(action);
    return !preference || preference->get(m_defaults);
}

void LayoutSettingsModel::setShown(QuickAction action, bool isShown) {
    if (isShown == this->isShown(action))
        return;
    if (const auto feature = featureBehind(action))
        m_flags.set(*feature, isShown);
    else if (const Preference<bool> *preference = preferenceOf(action))
        preference->set(m_defaults, isShown);
}

bool LayoutSettingsModel::isSwitchEnabled(QuickAction action) const {
    return action != QuickAction::screenshot || m_flags.isOn(Feature::snippingTool);
}

bool LayoutSettingsModel::showsSubtitles() const {
    return preference::layoutShowSubtitles.get(m_defaults);
}

void LayoutSettingsModel::setShowsSubtitles(bool isOn) {
    if (isOn != showsSubtitles())
        preference::layoutShowSubtitles.set(m_defaults, isOn);
}

void LayoutSettingsModel::setDragging(std::optional<QuickAction> action) {
    m_dragging = action;
    Q_EMIT changed();
}

void LayoutSettingsModel::dropEntered(QuickAction target) {
    if (!m_dragging || *m_dragging == target)
        return;
    const auto from = std::ranges::find(m_items, *m_dragging);
    const auto to = std::ranges::find(m_items, target);
    if (from == m_items.end() || to == m_items.end())
        return;
    // Behind the target on the way down, before it on the way up.
    if (from < to)
        std::rotate(from, from + 1, to + 1);
    else
        std::rotate(to, from, from + 1);
    store();
}

bool LayoutSettingsModel::moveBy(QuickAction action, int direction) {
    std::vector<QuickAction> shown;
    for (const LayoutRow &row : rows())
        shown.insert(shown.end(), row.items.begin(), row.items.end());
    const auto found = std::ranges::find(shown, action);
    const auto at = found - shown.begin();
    if (found == shown.end() || at + direction < 0 || at + direction >= std::ssize(shown))
        return false;
    beginDrag(action);
    dropEntered(shown[static_cast<std::size_t>(at + direction)]);
    performDrop();
    return true;
}

} // namespace tavrine
