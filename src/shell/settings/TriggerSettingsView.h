#pragma once

#include "look/SettingsPage.h"
#include "shell/settings/ShortcutEditorView.h"

namespace tavrine {

/// The page of a tool that has a switch and a trigger and nothing else. Belongs to the window; main thread.
class TriggerSettingsView final : public look::SettingsPage {
    Q_OBJECT

public:
    struct Texts {
        const char *title;
        const char *subtitle;
        Feature feature;
        const char *switchNote;
        const char *typeNote;
        const char *doubleTapNote;
    };
    static constexpr Texts emojiPicker{"Emoji Picker",
                                       "Search and copy emojis quickly from anywhere.",
                                       Feature::emojiPicker,
                                       "Enable or disable the global emoji picker",
                                       "Choose how you want to open the picker",
                                       "Tap Option twice quickly to open the picker"};
    static constexpr Texts screenRecord{"Screen Record",
                                        "Record any region of your screen with a single shortcut.",
                                        Feature::screenRecorder,
                                        "Enable or disable the global screen recorder",
                                        "Choose how you want to start recording",
                                        "Tap Option twice quickly to start recording"};

    /// Takes the editor over; the others outlive the page.
    TriggerSettingsView(const Texts &texts, std::unique_ptr<ShortcutEditor> editor, FeatureFlags &flags,
                        UrlOpener &urlOpener);
};

/// A row whose switch is a feature's, and follows it whoever flips it. The flags outlive the row.
[[nodiscard]] look::SettingsRow *makeFlagRow(Feature feature, const QString &title, const QString &note,
                                             FeatureFlags &flags);

} // namespace tavrine
