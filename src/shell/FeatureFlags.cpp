#include "shell/FeatureFlags.h"

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
        m_isOn[static_cast<std::size_t>(text.feature)] = text.preference.get(defaults);
}

void FeatureFlags::set(Feature feature, bool isOn) {
    Q_EMIT objectWillChange();
    m_isOn[static_cast<std::size_t>(feature)] = isOn;
    Q_EMIT published(feature, isOn);
    textOf(feature).preference.set(m_defaults, isOn);
}

} // namespace tavrine
