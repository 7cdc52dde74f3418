#pragma once

#include "look/SettingsPage.h"
#include "shell/settings/HomeDashboardModel.h"

namespace tavrine {

/// The first page: what the program is, what it still needs, what is new in it. Belongs to the window; main thread.
class HomeDashboardView final : public look::SettingsPage {
    Q_OBJECT

public:
    HomeDashboardView(const HomeDashboardModel::Ports &ports, const QString &appVersion);

    /// What the desktop allows may be something else now.
    void desktopChanged() { Q_EMIT m_model.changed(); }

private:
    void addHead(const QString &appVersion);
    void addPermissions();
    void addAbilities();
    void addWhatsNew();
    void addBanner();

    HomeDashboardModel m_model;
};

} // namespace tavrine
