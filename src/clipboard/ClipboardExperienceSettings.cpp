#include "clipboard/ClipboardExperienceSettings.h"

#include "base/UserDefaults.h"

#include <algorithm>

namespace tavrine {
namespace {

struct StoredText {
    ClipboardExperience experience;
    QLatin1String text;
};

constexpr std::array storedTexts{
    StoredText{ClipboardExperience::classic, QLatin1String("classic")},
    StoredText{ClipboardExperience::search, QLatin1String("search")},
};

} // namespace

QString rawValue(ClipboardExperience experience) {
    return std::ranges::find(storedTexts, experience, &StoredText::experience)->text;
}

std::optional<ClipboardExperience> clipboardExperienceFromRawValue(const QString &text) {
    const auto *const found =
        std::ranges::find_if(storedTexts, [&](const StoredText &entry) { return entry.text == text; });
    return found == storedTexts.end() ? std::nullopt : std::optional(found->experience);
}

ClipboardExperienceSettings::ClipboardExperienceSettings(UserDefaults &defaults, QObject *parent)
    : QObject(parent), m_defaults(defaults) {
    if (!defaults.get<bool>(QLatin1String(searchPrimaryMigrationKey), false)) {
        defaults.set(QLatin1String(experienceKey), rawValue(m_selectedExperience));
        defaults.set(QLatin1String(searchPrimaryMigrationKey), true);
        return;
    }
    const QString stored = defaults.get<QString>(QLatin1String(experienceKey), QString());
    m_selectedExperience = clipboardExperienceFromRawValue(stored).value_or(ClipboardExperience::search);
}

void ClipboardExperienceSettings::setSelectedExperience(ClipboardExperience experience) {
    m_selectedExperience = experience;
    Q_EMIT selectedExperiencePublished(experience);
    m_defaults.set(QLatin1String(experienceKey), rawValue(experience));
}

} // namespace tavrine
