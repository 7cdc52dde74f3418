#pragma once

#include "look/SettingsPage.h"
#include "shell/settings/KeepAwakeSettingsModel.h"

#include <memory>

namespace tavrine {

/// How the tray item tells that the machine is kept awake; and the controls of the menu's card, for whoever looks for
/// them here. Belongs to the window; main thread.
class KeepAwakeSettingsView final : public look::SettingsPage {
    Q_OBJECT

public:
    /// Takes both over; `controls` may be null.
    KeepAwakeSettingsView(std::unique_ptr<KeepAwakeSettingsModel> model, QWidget *controls);
    ~KeepAwakeSettingsView() override;

private:
    std::unique_ptr<KeepAwakeSettingsModel> m_model;
};

} // namespace tavrine
