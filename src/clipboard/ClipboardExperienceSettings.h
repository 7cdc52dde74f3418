#pragma once

#include "clipboard/ClipboardExperience.h"

#include <QObject>

namespace tavrine {

class UserDefaults;

/// The person's choice of clipboard panel. One instance, made at first use, as long as the process; lives on the main
/// thread. A change counts from the next opening of a panel.
class ClipboardExperienceSettings : public QObject {
    Q_OBJECT

public:
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
