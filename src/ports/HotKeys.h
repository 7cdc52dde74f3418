#pragma once

#include <QString>
#include <QtGlobal>

#include <functional>
#include <optional>

namespace tavrine {

/// Names a hot key among all: whose it is, and which of that owner's.
struct HotKeyId {
    quint32 signature = 0;
    quint32 id = 0;
    bool operator==(const HotKeyId &) const = default;
};

/// What a registration gives back; means something to the port that gave it and to nobody else.
using HotKeyRef = quint32;

/// Modifiers of a hot key.
namespace hotKeyModifier {
inline constexpr quint32 command = 256;
inline constexpr quint32 shift = 512;
inline constexpr quint32 option = 2048;
inline constexpr quint32 control = 4096;
} // namespace hotKeyModifier

/// Who gets what the person types right after a press.
enum class KeyboardNext {
    asBefore,  ///< the program that has the keyboard
    ourWindow, ///< the window of this program that the press opens or leaves: keys wait for it, a second at most
};

/// Whether this desktop lets a program have hot keys.
enum class HotKeyAvailability {
    there,
    asking, ///< it, or the person through it, has not answered yet
    none,
};

/// Which promises of `HotKeys` its keeper cannot give, since the keys belong to another program.
struct HotKeyTraits {
    HotKeyAvailability availability = HotKeyAvailability::there;
    bool areByPosition = true;    ///< promise 4; else a registration belongs to the letter, wherever a layout has it
    bool isKnownAtOnce = true;    ///< else a registration that was given may turn out to be none a moment later
    bool keepsKeyboard = true;    ///< `KeyboardNext::ourWindow` is kept; else what is typed right after a press is not
    bool isAskedOfPerson = false; ///< the desktop asks the person, who may choose other keys
};

/// Key combinations that reach this program whichever program has the keyboard. Lives on the main thread, as long as
/// the process.
///
///  1. A press is told once, however long the key is held, and whatever lock keys are on.
///  2. A press counts only with exactly the modifiers that were registered.
///  3. A combination that another program holds cannot be registered; neither can one that is registered here.
///  4. A registration holds through a change of the keyboard layout: it belongs to the key's position.
///  5. A press also counts while another program has a menu open, which holds keyboard and pointer.
///  6. Presses while no handler is installed are lost.
class HotKeys {
public:
    using Handler = std::function<KeyboardNext(HotKeyId)>;

    virtual ~HotKeys() = default;

    /// Calls `handler` for every press from now on; it takes the place of an earlier one.
    virtual void installHandler(Handler handler) = 0;
    virtual void removeHandler() = 0;

    /// `keyCode` is a virtual key code. None when the combination is taken or there is no such key.
    [[nodiscard]] virtual std::optional<HotKeyRef> registerHotKey(int keyCode, quint32 modifiers, HotKeyId id) = 0;
    virtual void unregisterHotKey(HotKeyRef ref) = 0;

    [[nodiscard]] virtual HotKeyTraits traits() const { return {}; }
    /// What the desktop's own settings call a hot key, where they show it. Told before it is first registered.
    virtual void setTitle(HotKeyId /*id*/, const QString & /*title*/) {}
    /// Calls `handler` in a later turn with what became of a registration that was given, and whenever that changes.
    /// One that does not hold may hold later, and is given up like any other. Never for one that is known at once.
    // NOLINTNEXTLINE(performance-unnecessary-value-param): who overrides it keeps it
    virtual void setOnHeld(std::function<void(HotKeyRef ref, bool isHeld)> /*handler*/) {}
};

} // namespace tavrine
