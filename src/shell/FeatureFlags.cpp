#include "shell/FeatureFlags.h"

#include "base/UserDefaults.h"

namespace tavrine {

static_assert(
    [] {
        for (std::size_t i = 0; i < featureTexts.size(); ++i) {
            if (featureTexts[i].feature != static_cast<Feature>(i))
                return false;
        }
        return true;
    }(),
    "the table is in the order of the enumeration");

FeatureFlags::FeatureFlags(UserDefaults &defaults, QObject *parent) : QObject(parent), m_defaults(defaults) {
    for (const FeatureText &text : featureTexts)
        m_isOn[static_cast<std::size_t>(text.feature)] = defaults.get<bool>(QLatin1String(text.key), true);
}

void FeatureFlags::set(Feature feature, bool isOn) {
    Q_EMIT objectWillChange();
    m_isOn[static_cast<std::size_t>(feature)] = isOn;
    Q_EMIT published(feature, isOn);
    m_defaults.set(QLatin1String(textOf(feature).key), isOn);
}

} // namespace tavrine
