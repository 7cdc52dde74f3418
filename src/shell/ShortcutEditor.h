#pragma once

#include "shell/ShortcutConflicts.h"

#include <QObject>
#include <QString>

#include <functional>
#include <optional>

namespace tavrine {

class Time;
class UserDefaults;

/// Where a shortcut editor is in saving.
enum class HotkeySaveState { idle, saving, saved };

/// What a page of the settings knows while the person edits one tool's trigger: what is drafted, what is stored, what
/// stands in the way. Lives on the main thread; the page owns it and draws it.
class ShortcutEditor : public QObject {
    Q_OBJECT

public:
    struct Actions {
        std::function<bool(Trigger)> isFeatureOn;
        std::function<void()> registerHotkeys;
        /// The clipboard's key is stored by the manager of the history, in lower case.
        std::function<void(const QString &)> setHotkeyCharacter;
        /// Whether the stored key could not be had: another program holds it.
        std::function<bool(Trigger)> isTakenElsewhere;
    };

    /// What the banner under the field says.
    struct Banner {
        QString text;
        bool hasSettingsButton = false; ///< "Open Settings", which opens `keyboardSettingsUrl`
        bool operator==(const Banner &) const = default;
    };

    static constexpr auto bannerIcon = "exclamationmark.triangle.fill";
    static constexpr auto keyboardSettingsUrl = "x-apple.systempreferences:com.apple.preference.keyboard?Shortcuts";

    ShortcutEditor(Trigger trigger, UserDefaults &defaults, Time &time, Actions actions, QObject *parent = nullptr);

    /// On appearing: reads mode and key into draft and committed, and checks.
    void load();

    /// Each keystroke in the key field hands the field's text in. An empty one changes nothing.
    void setDraftKey(const QString &text);
    void setDraftMode(const QString &mode);

    /// "Default is ⌘⇧V"
    [[nodiscard]] QString defaultKeyText() const;

    [[nodiscard]] QString draftMode() const { return m_draftMode; }
    [[nodiscard]] QString draftKey() const { return m_draftKey; }
    [[nodiscard]] QString committedMode() const { return m_committedMode; }
    [[nodiscard]] QString committedKey() const { return m_committedKey; }
    [[nodiscard]] const std::optional<ShortcutConflict> &conflict() const { return m_conflict; }
    /// A conflict, or that what is stored does nothing since another program was first.
    [[nodiscard]] std::optional<Banner> banner() const;
    [[nodiscard]] HotkeySaveState saveState() const { return m_saveState; }
    [[nodiscard]] bool hasChanges() const;
    [[nodiscard]] bool showsSaveControl() const { return hasChanges() || m_saveState != HotkeySaveState::idle; }

    /// Stores the draft and registers it at once. What follows, 0.9 and 1.4 seconds long, is for the eye.
    void save();

Q_SIGNALS:
    void changed();

private:
    void checkKey();
    void check();
    void setSaveState(HotkeySaveState state);
    [[nodiscard]] std::optional<Banner> takenBanner() const;

    Trigger m_trigger;
    UserDefaults &m_defaults;
    Time &m_time;
    Actions m_actions;
    QString m_draftMode;
    QString m_committedMode;
    QString m_draftKey;
    QString m_committedKey;
    std::optional<ShortcutConflict> m_conflict;
    HotkeySaveState m_saveState = HotkeySaveState::idle;
};

} // namespace tavrine
