#pragma once

#include "look/SettingsPage.h"
#include "shell/settings/LayoutSettingsModel.h"

#include <map>

namespace tavrine {

/// The page on which the Quick Actions are ordered, shown and hidden. Belongs to the window; main thread.
class LayoutSettingsView final : public look::SettingsPage {
    Q_OBJECT

public:
    /// All outlive the page.
    LayoutSettingsView(FeatureFlags &flags, UserDefaults &defaults, NotificationCenter &center);

private:
    class VisibilityRow;

    void addPreview();
    void addVisibility();
    void addOptions();
    void orderRows();

    LayoutSettingsModel m_model;
    look::Card *m_visibility = nullptr;
    std::map<QuickAction, VisibilityRow *> m_rows;
    std::vector<QuickAction> m_order;
};

} // namespace tavrine
