#pragma once

#include "look/SettingsPage.h"
#include "utilities/meter/NetworkSettingsModel.h"

#include <memory>

namespace tavrine {

/// Whether the tray shows the speed of the network, which of the two ways, and how it looks. Belongs to the window;
/// main thread.
class NetworkSettingsView final : public look::SettingsPage {
    Q_OBJECT

public:
    explicit NetworkSettingsView(std::unique_ptr<NetworkSettingsModel> model);
    ~NetworkSettingsView() override;

private:
    std::unique_ptr<NetworkSettingsModel> m_model;
};

} // namespace tavrine
