#include "shell/settings/KeepAwakeSettingsModel.h"

#include "base/UserDefaults.h"
#include "shell/ShellPreferences.h"
#include "shell/StatusIcon.h"

namespace tavrine {

KeepAwakeSettingsModel::KeepAwakeSettingsModel(UserDefaults &defaults, NotificationCenter &center)
    : m_defaults(defaults), m_observer(center.addObserver(QLatin1String(UserDefaults::didChangeNotification),
                                                          [this](const Notification &) { Q_EMIT changed(); })) {}

bool KeepAwakeSettingsModel::showsIndicator() const {
    return preference::keepAwakeShowBgIndicator.get(m_defaults);
}

void KeepAwakeSettingsModel::setShowsIndicator(bool isShown) {
    if (isShown != showsIndicator())
        preference::keepAwakeShowBgIndicator.set(m_defaults, isShown);
}

QColor KeepAwakeSettingsModel::indicatorColor() const {
    return tavrine::indicatorColor(preference::keepAwakeBgColor.get(m_defaults));
}

void KeepAwakeSettingsModel::setIndicatorColor(const QColor &color) {
    if (color.isValid())
        preference::keepAwakeBgColor.set(m_defaults, color.toRgb().name(QColor::HexRgb).toUpper());
}

void KeepAwakeSettingsModel::resetIndicatorColor() {
    preference::keepAwakeBgColor.set(m_defaults, preference::keepAwakeBgColor.fallbackValue());
}

} // namespace tavrine
