#pragma once

#include <QObject>

namespace tavrine {

class UserDefaults;

/// Which clipboard panel the trigger opens.
enum class ClipboardExperience { classic, search };

/// The choice of the panel. Lives on the main thread, as long as the process.
///
/// The search panel became the chosen one once for everybody, whatever was stored before; from then on the stored
/// choice stands.
class ClipboardExperienceSettings : public QObject {
    Q_OBJECT

public:
    static constexpr auto experienceKey = "ClipboardExperience";
    static constexpr auto searchPrimaryMigrationKey = "ClipboardSearchPrimaryMigrationV1";

    explicit ClipboardExperienceSettings(UserDefaults &defaults, QObject *parent = nullptr);

    [[nodiscard]] ClipboardExperience selectedExperience() const { return m_selectedExperience; }
    /// Publishes and stores the choice.
    void setSelectedExperience(ClipboardExperience experience);

Q_SIGNALS:
    void selectedExperiencePublished(tavrine::ClipboardExperience experience);

private:
    UserDefaults &m_defaults;
    ClipboardExperience m_selectedExperience = ClipboardExperience::search;
};

} // namespace tavrine
