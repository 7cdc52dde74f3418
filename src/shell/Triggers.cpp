#include "shell/Triggers.h"

#include "base/VirtualKeys.h"
#include "clipboard/ClipboardPreferences.h"

namespace tavrine {
namespace {

constexpr TriggerTraits triggers[] = {
    {1, &preference::clipboardHotkeyMode, preference::hotkeyCharacter, QLatin1String("V"),
     QLatin1String("Search the Clipboard")},
    {2, &preference::emojiHotkeyMode, preference::emojiHotkeyKey, QLatin1String("E"), QLatin1String("Pick an Emoji")},
    {6, nullptr, preference::snipHotkey, QLatin1String(), QLatin1String("Capture a Region")},
    {7, &preference::screenRecordHotkeyMode, preference::screenRecordHotkey, QLatin1String(),
     QLatin1String("Record the Screen")},
};

// Positions of A to Z and of 0 to 9.
constexpr int letters[] = {0,  11, 8,  2,  14, 3, 5,  4,  34, 38, 40, 37, 46,
                           45, 31, 35, 12, 15, 1, 17, 32, 9,  13, 7,  16, 6};
constexpr int digits[] = {29, 18, 19, 20, 21, 23, 22, 26, 28, 25};

} // namespace

const TriggerTraits &traits(Trigger trigger) {
    return triggers[static_cast<int>(trigger)];
}

Feature featureOf(Trigger trigger) {
    switch (trigger) {
    case Trigger::clipboard:
        return Feature::clipboardHistory;
    case Trigger::emojiPicker:
        return Feature::emojiPicker;
    case Trigger::capture:
        return Feature::snippingTool;
    case Trigger::screenRecorder:
        break;
    }
    return Feature::screenRecorder;
}

QString storedMode(const UserDefaults &defaults, Trigger trigger) {
    const auto *mode = traits(trigger).mode;
    return mode ? mode->get(defaults) : QString(triggerMode::commandShift);
}

QString storedCharacter(const UserDefaults &defaults, Trigger trigger) {
    const auto &fixed = traits(trigger);
    const QString found = firstUppercase(fixed.character.get(defaults));
    return found.isEmpty() ? QString(fixed.emptyCharacter) : found;
}

QString shortcutText(const UserDefaults &defaults, Trigger trigger) {
    const QString mode = storedMode(defaults, trigger);
    if (mode == triggerMode::commandShift)
        return QStringLiteral("⌘⇧") + storedCharacter(defaults, trigger);
    return mode == triggerMode::doubleOption ? QStringLiteral("⌥ twice") : QString();
}

QString firstUppercase(const QString &text) {
    if (text.isEmpty())
        return {};
    const qsizetype length = text.at(0).isHighSurrogate() && text.size() > 1 ? 2 : 1;
    const QString upper = text.left(length).toUpper(); // "ß" becomes two letters, of which the first counts
    return length == 2 ? upper : upper.left(1);
}

int keyCode(const QString &character) {
    if (character.size() == 1) {
        const char16_t c = character.at(0).unicode();
        if (c >= 'A' && c <= 'Z')
            return letters[c - 'A'];
        if (c >= '0' && c <= '9')
            return digits[c - '0'];
    }
    return virtualKey::two;
}

} // namespace tavrine
