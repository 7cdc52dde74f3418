#pragma once

#include <QObject>

#include <array>
#include <optional>

namespace tavrine {

class UserDefaults;

/// Which clipboard panel the trigger opens.
enum class ClipboardExperience { classic, search };

inline constexpr std::array allClipboardExperiences{ClipboardExperience::classic, ClipboardExperience::search};

/// The stored text of the choice, and its way back. None for any other text.
[[nodiscard]] QString rawValue(ClipboardExperience experience);
[[nodiscard]] std::optional<ClipboardExperience> clipboardExperienceFromRawValue(const QString &text);

/// The person's choice of clipboard panel. One instance, made at first use, as long as the process; lives on the main
/// thread. A change counts from the next opening of a panel.
class ClipboardExperienceSettings : public QObject {
    Q_OBJECT

public:
    static constexpr auto experienceKey = "ClipboardExperience";
    static constexpr auto searchPrimaryMigrationKey = "ClipboardSearchPrimaryMigrationV1";

    /// Once in the life of the preferences everyone is switched to the search panel, whatever was chosen before it.
    explicit ClipboardExperienceSettings(UserDefaults &defaults, QObject *parent = nullptr);

    [[nodiscard]] ClipboardExperience selectedExperience() const { return m_selectedExperience; }
    void setSelectedExperience(ClipboardExperience experience);

Q_SIGNALS:
    void selectedExperiencePublished(tavrine::ClipboardExperience experience);

private:
    UserDefaults &m_defaults;
    ClipboardExperience m_selectedExperience = ClipboardExperience::search;
};

} // namespace tavrine
