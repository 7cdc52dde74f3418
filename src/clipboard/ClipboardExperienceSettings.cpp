#include "clipboard/ClipboardExperienceSettings.h"

#include "base/UserDefaults.h"

namespace tavrine {
namespace {

constexpr auto classicText = "classic";
constexpr auto searchText = "search";

} // namespace

ClipboardExperienceSettings::ClipboardExperienceSettings(UserDefaults &defaults, QObject *parent)
    : QObject(parent), m_defaults(defaults) {
    const QString migrationKey = QLatin1String(searchPrimaryMigrationKey);
    if (!defaults.get<bool>(migrationKey, false)) {
        setSelectedExperience(ClipboardExperience::search);
        defaults.set(migrationKey, true);
    } else if (defaults.get<QString>(QLatin1String(experienceKey)) == QLatin1String(classicText)) {
        m_selectedExperience = ClipboardExperience::classic;
    }
}

void ClipboardExperienceSettings::setSelectedExperience(ClipboardExperience experience) {
    m_selectedExperience = experience;
    Q_EMIT selectedExperiencePublished(experience);
    m_defaults.set(QLatin1String(experienceKey),
                   QString(QLatin1String(experience == ClipboardExperience::classic ? classicText : searchText)));
}

} // namespace tavrine
