#include "clipboard/ClipboardExperienceSettings.h"

#include "clipboard/ClipboardPreferences.h"

namespace tavrine {

ClipboardExperienceSettings::ClipboardExperienceSettings(UserDefaults &defaults, QObject *parent)
    : QObject(parent), m_defaults(defaults) {
    if (preference::searchPrimaryMigration.get(defaults)) {
        m_selectedExperience = preference::clipboardExperience.get(defaults);
        return;
    }
    preference::clipboardExperience.set(defaults, m_selectedExperience);
    preference::searchPrimaryMigration.set(defaults, true);
}

void ClipboardExperienceSettings::setSelectedExperience(ClipboardExperience experience) {
    m_selectedExperience = experience;
    Q_EMIT selectedExperiencePublished(experience);
    preference::clipboardExperience.set(m_defaults, experience);
}

} // namespace tavrine
