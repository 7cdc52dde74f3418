#pragma once

#include "shell/Triggers.h"

#include <QObject>
#include <QString>

#include <functional>
#include <vector>

namespace tavrine {

class ClipboardExperienceSettings;
class FeatureFlags;

enum class StatusMenuItem { separator, clipboard, emojiPicker, colorPicker, checkForUpdates, quit };

/// A key that triggers an entry while the menu is open, and that its label tells. No key when `character` is null.
struct KeyEquivalent {
    QChar character;
    bool hasShift = false; ///< Command is always part of it
    bool operator==(const KeyEquivalent &) const = default;
};

/// One entry of the menu.
struct StatusMenuEntry {
    StatusMenuItem item = StatusMenuItem::separator;
    QString title;
    KeyEquivalent keyEquivalent;
    bool isEnabled = true;
    std::function<void()> action;
};

/// The text of a key equivalent: "⌘Q", "⌘⇧V", empty for none.
[[nodiscard]] QString label(KeyEquivalent keyEquivalent);

/// The plain entries of the tray item's menu, as data: built once and refreshed in place. Lives on the main thread;
/// AppDelegate owns it.
class StatusMenu : public QObject {
    Q_OBJECT

public:
    struct Actions {
        std::function<void()> onHotKeyPressed;
        std::function<void()> onEmojiPickerHotKeyPressed;
        std::function<void()> pickColor;
        std::function<void()> checkForUpdates;
        std::function<void()> quitApp;
    };

    StatusMenu(const UserDefaults &defaults, const FeatureFlags &flags,
               const ClipboardExperienceSettings &experienceSettings, Actions actions, QObject *parent = nullptr);

    [[nodiscard]] const std::vector<StatusMenuEntry> &entries() const { return m_entries; }
    [[nodiscard]] StatusMenuEntry &entry(StatusMenuItem item);

    /// Title, enabled state and key equivalent by the preferences.
    void refreshClipboardMenuItem();
    void refreshEmojiMenuItem();
    void setEnabled(StatusMenuItem item, bool isEnabled);

Q_SIGNALS:
    /// An entry is another than it was.
    void changed();

private:
    struct Face {
        QString title;
        bool isEnabled;
        KeyEquivalent keyEquivalent;
    };
    void show(StatusMenuItem item, const Face &face);
    [[nodiscard]] KeyEquivalent commandShiftKey(Trigger trigger) const; // for one whose key is never empty

    const UserDefaults &m_defaults;
    const FeatureFlags &m_flags;
    const ClipboardExperienceSettings &m_experienceSettings;
    std::vector<StatusMenuEntry> m_entries;
};

} // namespace tavrine
