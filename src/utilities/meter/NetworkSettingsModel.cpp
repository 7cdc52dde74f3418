#include "utilities/meter/NetworkSettingsModel.h"

namespace tavrine {

NetworkSettingsModel::NetworkSettingsModel(UserDefaults &defaults, NotificationCenter &center) : m_defaults(defaults) {
    m_observer = center.addObserver(QLatin1String(UserDefaults::didChangeNotification),
                                    [this](const Notification &) { Q_EMIT changed(); });
}

bool NetworkSettingsModel::showsInternetSpeed() const {
    return preference::showInternetSpeed.get(m_defaults);
}

void NetworkSettingsModel::setShowsInternetSpeed(bool shows) {
    if (shows != showsInternetSpeed())
        preference::showInternetSpeed.set(m_defaults, shows);
}

SpeedDisplayMode NetworkSettingsModel::displayMode() const {
    return preference::speedDisplayMode.get(m_defaults);
}

void NetworkSettingsModel::setDisplayMode(SpeedDisplayMode mode) {
    preference::speedDisplayMode.set(m_defaults, mode);
}

SpeedTheme NetworkSettingsModel::theme() const {
    return preference::speedTheme.get(m_defaults);
}

void NetworkSettingsModel::setTheme(SpeedTheme theme) {
    preference::speedTheme.set(m_defaults, theme);
}

QStringList NetworkSettingsModel::displayModeLabels() {
    QStringList labels;
    for (const auto &row : speedDisplayModeTexts)
        labels.append(QLatin1String(row.text));
    return labels;
}

QStringList NetworkSettingsModel::themeLabels() {
    QStringList labels;
    for (const SpeedThemeTraits &traits : speedThemes)
        labels.append(QLatin1String(traits.pickerLabel));
    return labels;
}

} // namespace tavrine
