#pragma once

#include "base/Preference.h"
#include "shell/FeatureFlags.h"

#include <QString>

namespace tavrine {

/// The tools that a global trigger opens.
enum class Trigger { clipboard, emojiPicker, capture, screenRecorder };

inline constexpr Trigger allTriggers[] = {Trigger::clipboard, Trigger::emojiPicker, Trigger::capture,
                                          Trigger::screenRecorder};

/// How a tool is reached, as the preferences store it. A mode that is neither of the two reaches it in no way.
namespace triggerMode {
inline constexpr QLatin1String commandShift("commandShift");
inline constexpr QLatin1String doubleOption("doubleOption");
} // namespace triggerMode

namespace preference {
inline constexpr Preference<QString> clipboardHotkeyMode{"clipboardHotkeyMode", triggerMode::commandShift.data()};
inline constexpr Preference<QString> emojiHotkeyMode{"emojiHotkeyMode", triggerMode::commandShift.data()};
inline constexpr Preference<QString> screenRecordHotkeyMode{"screenRecordHotkeyMode", triggerMode::commandShift.data()};
inline constexpr Preference<QString> emojiHotkeyKey{"emojiHotkeyKey", "E"};
inline constexpr Preference<QString> snipHotkey{"snipHotkey", "2"};
inline constexpr Preference<QString> screenRecordHotkey{"screenRecordHotkey", "6"};
} // namespace preference

/// What is fixed about a trigger.
struct TriggerTraits {
    quint32 hotKeyId;
    const Preference<QString> *mode; ///< null for the capture, which is always a hot key
    Preference<QString> character;
    QLatin1String emptyCharacter; ///< what an empty stored text counts as
    QLatin1String title;          ///< what the desktop's own settings call it
};

[[nodiscard]] const TriggerTraits &traits(Trigger trigger);

/// The switch of the tool that a trigger opens.
[[nodiscard]] Feature featureOf(Trigger trigger);

/// The mode as it is stored, whatever it is; "commandShift" when nothing is.
[[nodiscard]] QString storedMode(const UserDefaults &defaults, Trigger trigger);

/// The key of the hot key: the first character of the stored text or the default, in upper case.
[[nodiscard]] QString storedCharacter(const UserDefaults &defaults, Trigger trigger);

/// The trigger as it is written: "⌘⇧V" or "⌥ twice"; empty when the stored mode reaches the tool in no way.
[[nodiscard]] QString shortcutText(const UserDefaults &defaults, Trigger trigger);

/// The first character of `text` in upper case; empty for an empty text.
[[nodiscard]] QString firstUppercase(const QString &text);

/// The virtual key code of one upper-case letter or digit. Anything else counts as the key "2".
[[nodiscard]] int keyCode(const QString &character);

} // namespace tavrine
