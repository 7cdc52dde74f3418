#pragma once

#include "look/SettingsPage.h"
#include "shell/settings/PrivacySettingsModel.h"

namespace tavrine {

/// Where data is kept, and the way to be rid of it. Belongs to the window; main thread.
class PrivacySettingsView final : public look::SettingsPage {
    Q_OBJECT

public:
    explicit PrivacySettingsView(const PrivacySettingsModel::Ports &ports);

private:
    PrivacySettingsModel m_model;
};

} // namespace tavrine
