#pragma once

#include "look/SettingsPage.h"

#include <memory>

namespace tavrine {

class SnipperSettingsModel;

/// The page of the captures in the settings: title, switches and the folder. The editor of the shortcut is handed in
/// and stands first, since it is the same on the pages of all tools. Main thread; owned by its window.
class SnipperSettingsView final : public look::SettingsPage {
    Q_OBJECT
public:
    static constexpr auto title = "Snipper & OCR";
    static constexpr auto subtitle = "Capture any region of your screen and extract text instantly.";

    /// Takes the editor over; null for none.
    explicit SnipperSettingsView(std::unique_ptr<SnipperSettingsModel> model, look::Card *shortcutEditor = nullptr);
    ~SnipperSettingsView() override;

private:
    std::unique_ptr<SnipperSettingsModel> m_model;
};

} // namespace tavrine
