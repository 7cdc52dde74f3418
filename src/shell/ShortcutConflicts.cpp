#include "shell/ShortcutConflicts.h"

namespace tavrine {
namespace {

QString keyMessage(Trigger owner, const QString &key) {
    switch (owner) {
    case Trigger::clipboard:
        return QStringLiteral("Clipboard History uses ⌘⇧") + key;
    case Trigger::emojiPicker:
        return QStringLiteral("Emoji Picker uses ⌘⇧") + key;
    case Trigger::capture:
        return QStringLiteral("Snipper uses ⌘⇧") + key;
    case Trigger::screenRecorder:
        return QStringLiteral("Screen Record uses ⌘⇧") + key;
    }
    return {};
}

QString doubleTapMessage(Trigger owner) {
    switch (owner) {
    case Trigger::clipboard:
        return QStringLiteral("Clipboard already uses ⌥ twice — pick a different shortcut");
    case Trigger::emojiPicker:
        return QStringLiteral("Emoji Picker already uses ⌥ twice — pick a different shortcut");
    case Trigger::screenRecorder:
        return QStringLiteral("Screen Record already uses ⌥ twice — pick a different shortcut");
    case Trigger::capture:
        break; // has no double tap
    }
    return {};
}

} // namespace

QMap<QString, ShortcutConflict> keyConflicts(const UserDefaults &defaults, Trigger editor) {
    using Kind = ShortcutConflict::Kind;
    QMap<QString, ShortcutConflict> conflicts;
    // A later entry takes the place of an earlier one with the same key.
    if (editor != Trigger::capture) {
        const QString key = storedCharacter(defaults, Trigger::capture);
        conflicts[key] = {Kind::toolKey, keyMessage(Trigger::capture, key)};
    }
    conflicts[QStringLiteral("3")] = {Kind::desktopKey, QStringLiteral("macOS's screenshot shortcut (⌘⇧3)")};
    conflicts[QStringLiteral("4")] = {Kind::desktopKey, QStringLiteral("macOS's screenshot shortcut (⌘⇧4)")};
    conflicts[QStringLiteral("5")] = {Kind::desktopKey, QStringLiteral("macOS's Screenshot app shortcut (⌘⇧5)")};
    for (const Trigger other : {Trigger::clipboard, Trigger::emojiPicker, Trigger::screenRecorder}) {
        if (other == editor || storedMode(defaults, other) != triggerMode::commandShift)
            continue;
        const QString key = storedCharacter(defaults, other);
        conflicts[key] = {Kind::toolKey, keyMessage(other, key)};
    }
    return conflicts;
}

std::optional<ShortcutConflict> doubleTapConflict(const UserDefaults &defaults, Trigger editor,
                                                  const std::function<bool(Trigger)> &isFeatureOn) {
    // The order of asking decides which of two tools is named.
    for (const Trigger other : {Trigger::clipboard, Trigger::emojiPicker, Trigger::screenRecorder})
        if (other != editor && storedMode(defaults, other) == triggerMode::doubleOption && isFeatureOn(other))
            return ShortcutConflict{ShortcutConflict::Kind::doubleTap, doubleTapMessage(other)};
    return std::nullopt;
}

} // namespace tavrine
