#pragma once

#include "look/Tile.h"
#include "shell/settings/HomeDashboardModel.h"

namespace tavrine {

/// What this desktop allows, a row for each ability, with what is wanting and what to do about it; one row where
/// nothing is. Reads it anew whenever it comes into sight or the model has changed. Belongs to its page.
class AbilitiesView final : public look::Card {
    Q_OBJECT

public:
    explicit AbilitiesView(HomeDashboardModel &model);

    /// As it is now.
    void refresh();

protected:
    void showEvent(QShowEvent *event) override;

private:
    [[nodiscard]] look::SettingsRow *makeRow(const AbilityReport &report);
    [[nodiscard]] QWidget *makeEnd(const AbilityReport &report, const QString &note);

    HomeDashboardModel &m_model;
    std::vector<AbilityReport> m_shown;
    std::vector<look::SettingsRow *> m_rows;
};

} // namespace tavrine
