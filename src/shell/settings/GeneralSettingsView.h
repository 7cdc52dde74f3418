#pragma once

#include "look/SettingsPage.h"
#include "shell/settings/GeneralSettingsModel.h"

namespace tavrine {

/// Starting with the session, and the tray item. Belongs to the window; main thread.
class GeneralSettingsView final : public look::SettingsPage {
    Q_OBJECT

public:
    explicit GeneralSettingsView(const GeneralSettingsModel::Ports &ports);

private:
    GeneralSettingsModel m_model;
};

} // namespace tavrine
