#pragma once

#include "look/SettingsPage.h"
#include "shell/settings/ClipboardSettingsModel.h"
#include "shell/settings/TriggerSettingsView.h"

namespace tavrine {

/// The page of the clipboard history. Belongs to the window; main thread.
class ClipboardSettingsView final : public look::SettingsPage {
    Q_OBJECT

public:
    struct Parts {
        ClipboardSettingsModel::Ports ports;
        FeatureFlags &flags;
        UrlOpener &urlOpener;
    };
    /// Takes the editor over.
    ClipboardSettingsView(const Parts &parts, std::unique_ptr<ShortcutEditor> editor);

private:
    void addPanel(const Parts &parts, std::unique_ptr<ShortcutEditor> editor);
    void addHistory();
    void addBehaviour();
    void addData();

    ClipboardSettingsModel m_model;
};

} // namespace tavrine
