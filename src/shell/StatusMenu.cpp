#include "shell/StatusMenu.h"

#include "clipboard/ClipboardExperienceSettings.h"
#include "shell/FeatureFlags.h"

#include <algorithm>

namespace tavrine {

QString label(KeyEquivalent keyEquivalent) {
    if (keyEquivalent.character.isNull())
        return {};
    return QStringLiteral("⌘") + (keyEquivalent.hasShift ? QStringLiteral("⇧") : QString()) +
           keyEquivalent.character.toUpper();
}

StatusMenu::StatusMenu(const UserDefaults &defaults, const FeatureFlags &flags,
                       const ClipboardExperienceSettings &experienceSettings, Actions actions, QObject *parent)
    : QObject(parent), m_defaults(defaults), m_flags(flags), m_experienceSettings(experienceSettings) {
    const auto add = [this](StatusMenuItem item, const QString &title, std::function<void()> action) {
        m_entries.push_back({.item = item, .title = title, .keyEquivalent = {}, .action = std::move(action)});
    };
    const auto addSeparator = [this] { m_entries.push_back({}); };
    addSeparator();
    add(StatusMenuItem::clipboard, QStringLiteral("Classic Clipboard"), std::move(actions.onHotKeyPressed));
    refreshClipboardMenuItem();
    add(StatusMenuItem::emojiPicker, QStringLiteral("Emoji Picker"), std::move(actions.onEmojiPickerHotKeyPressed));
    refreshEmojiMenuItem();
    add(StatusMenuItem::colorPicker, QStringLiteral("Colour Picker"), std::move(actions.pickColor));
    addSeparator();
    add(StatusMenuItem::checkForUpdates, QStringLiteral("Check for Updates…"), std::move(actions.checkForUpdates));
    addSeparator();
    add(StatusMenuItem::quit, QStringLiteral("Quit"), std::move(actions.quitApp));
    entry(StatusMenuItem::quit).keyEquivalent = {QLatin1Char('q')};
}

StatusMenuEntry &StatusMenu::entry(StatusMenuItem item) {
    const auto found =
        std::find_if(m_entries.begin(), m_entries.end(), [item](const auto &each) { return each.item == item; });
    Q_ASSERT(found != m_entries.end());
    return *found;
}

KeyEquivalent StatusMenu::commandShiftKey(Trigger trigger) const {
    if (storedMode(m_defaults, trigger) != triggerMode::commandShift)
        return {};
    return {storedCharacter(m_defaults, trigger).front(), true};
}

void StatusMenu::show(StatusMenuItem item, const Face &face) {
    StatusMenuEntry &entry = this->entry(item);
    if (entry.title == face.title && entry.isEnabled == face.isEnabled && entry.keyEquivalent == face.keyEquivalent)
        return;
    entry.title = face.title;
    entry.isEnabled = face.isEnabled;
    entry.keyEquivalent = face.keyEquivalent;
    Q_EMIT changed();
}

void StatusMenu::setEnabled(StatusMenuItem item, bool isEnabled) {
    const StatusMenuEntry &shown = entry(item);
    show(item, {shown.title, isEnabled, shown.keyEquivalent});
}

void StatusMenu::refreshClipboardMenuItem() {
    show(StatusMenuItem::clipboard, {m_experienceSettings.selectedExperience() == ClipboardExperience::search
                                         ? QStringLiteral("Clipboard Search")
                                         : QStringLiteral("Classic Clipboard"),
                                     m_flags.isOn(Feature::clipboardHistory), commandShiftKey(Trigger::clipboard)});
}

void StatusMenu::refreshEmojiMenuItem() {
    show(StatusMenuItem::emojiPicker,
         {QStringLiteral("Emoji Picker"), m_flags.isOn(Feature::emojiPicker), commandShiftKey(Trigger::emojiPicker)});
}

} // namespace tavrine
