#pragma once

#include "adapters/x11/KeyboardSilence.h"
#include "adapters/x11/X11KeyboardMap.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace tavrine {

/// Passive grabs of key combinations on the root window, and the presses of them.
///
/// Owned by X11HotKeys; lives on a thread of its own, because the server holds back what is typed after a press until
/// it is told who gets it, and no stall of the main thread may keep a desktop from its keyboard.
///
///  1. A grab names one exact state of the modifiers, so each combination is grabbed once for every combination of
///     locks that may be on. It belongs to the key's position; only another meaning of the modifiers grabs it anew.
///  2. A press freezes the keyboard. `letGo` says when it goes on: at once, or when a window of this program has the
///     keyboard, so that what the person types next arrives there and not in the window behind. After `longestFreeze`
///     it goes on by itself.
///  3. While another program holds both keyboard and pointer, as for a menu, presses are known from the raw events,
///     which pass every grab. A keyboard that alone is held is meant to be (a virtual machine, a remote desktop), and a
///     window over the whole screen that holds both is a locked screen, or a screen frozen by us. While this program
///     drops all keys, none counts.
class X11KeyGrabs : public QObject {
public:
    /// In which this program runs: while the machine stands still, no window can take the keyboard.
    static constexpr std::chrono::milliseconds longestFreeze{1000};

    using Key = quint32;
    enum class Result { held, taken, pending }; ///< `pending`: the server has not answered; it is asked until it does
    enum class Next { asBefore, ourWindow };    ///< who gets the keys after a press

    /// `onPress` is called on this object's thread, with the number of the press.
    using OnPress = std::function<void(Key key, quint32 press)>;

    /// `ownWindows` is the base of this program's window numbers. `silence` may be null.
    X11KeyGrabs(quint32 ownWindows, std::shared_ptr<const KeyboardSilence> silence, OnPress onPress, QObject *parent);

    [[nodiscard]] Result add(Key key, quint8 keycode, quint32 modifiers);
    void remove(Key key);
    void letGo(quint32 press, Next next);

private:
    struct Grab {
        quint8 keycode = 0;
        quint32 modifiers = 0;
        std::vector<quint16> states; ///< that are grabbed, or were asked for without an answer yet
    };

    void handle(const xcb_generic_event_t &event);
    void onKeyPress(const xcb_key_press_event_t &press);
    void onRawKey(quint8 keycode, quint32 time);
    void settleSoon();
    void settleRawKey();
    [[nodiscard]] std::optional<bool> isUnderMenu();
    void selectRawKeys();
    [[nodiscard]] std::optional<Key> keyFor(quint8 keycode, quint16 state) const;
    void freeze();
    void waitForFocus();
    void thaw();
    void allow(quint8 mode);
    [[nodiscard]] quint32 focus();
    [[nodiscard]] bool isOurs(quint32 window) const;

    void onMap();
    void grabAnew();
    [[nodiscard]] Result grab(Grab &grab);
    void ungrab(Grab &grab);
    [[nodiscard]] std::optional<quint16> stateOf(quint32 modifiers) const;
    [[nodiscard]] std::vector<quint16> meaning() const;

    OnPress m_onPress;
    std::shared_ptr<const KeyboardSilence> m_silence;
    XcbClient m_client;
    X11KeyboardMap m_map;
    std::map<Key, Grab> m_grabs;
    std::vector<quint16> m_meaning; ///< of the modifier bits, for which the grabs were made
    QTimer m_again;                 ///< grabs whose answer did not come
    QTimer m_focusCheck;
    QTimer m_deadline; ///< ticks; one that comes late counts as one
    int m_ticksLeft = 0;
    const quint32 m_ownWindows;
    quint32 m_ownMask = 0;
    quint32 m_focusBefore = 0;
    quint32 m_press = 0; ///< the number of the last one
    Key m_rawKey = 0;    ///< of a press that may be under another program's grab
    quint32 m_rawTime = 0;
    quint32 m_toldTime = 0; ///< of the last press that was told by its raw event
    quint16 m_modifiers = 0;
    quint8 m_inputOpcode = 0;
    quint8 m_rawKeycode = 0; ///< 0 when there is none
    quint8 m_toldKeycode = 0;
    quint8 m_heldKeycode = 0; ///< the hot key that is down: it repeats without a release between
    bool m_isFrozen = false;
};

} // namespace tavrine
