#pragma once

#include "adapters/x11/X11Keyboard.h"
#include "adapters/x11/XcbClient.h"
#include "ports/HotKeys.h"

#include <map>
#include <vector>

namespace tavrine {

/// Hot keys as passive grabs on the root window.
///
/// Lives on the main thread, on a connection of its own. Command is the Super key. A grab names one exact state of
/// the modifiers, so each hot key is grabbed once for every combination of locks that may be on. Without an X server
/// no hot key can be registered.
class X11HotKeys final : public HotKeys {
public:
    X11HotKeys();

    void installHandler(Handler handler) override { m_handler = std::move(handler); }
    void removeHandler() override { m_handler = nullptr; }
    [[nodiscard]] std::optional<HotKeyRef> registerHotKey(int keyCode, quint32 modifiers, HotKeyId id) override;
    void unregisterHotKey(HotKeyRef ref) override;

private:
    struct Registration {
        quint8 keycode = 0;
        quint32 modifiers = 0;
        HotKeyId id;
        std::vector<quint16> grabbedStates; ///< empty while another program holds it
    };

    void handle(const xcb_generic_event_t &event);
    void onPress(const xcb_key_press_event_t &press);
    void onMappingChanged();
    [[nodiscard]] std::vector<quint16> grab(quint8 keycode, quint32 modifiers);
    void ungrab(const Registration &registration);
    [[nodiscard]] std::optional<quint16> stateOf(quint32 modifiers) const;

    XcbClient m_client;
    X11Keyboard m_keyboard;
    Handler m_handler;
    std::map<HotKeyRef, Registration> m_registrations;
    HotKeyRef m_lastRef = 0;
    quint8 m_firstXkbEvent = 0;
    int m_heldKeycode = 0; ///< the hot key that is down: it repeats without a release between
};

} // namespace tavrine
