#pragma once

#include "adapters/linux/MonitorList.h"
#include "adapters/x11/KeyboardSilence.h"
#include "adapters/x11/X11KeyboardMap.h"
#include "adapters/x11/X11MouseEvents.h"
#include "adapters/x11/XcbClient.h"
#include "ports/EventMonitors.h"

#include <QObject>

#include <map>
#include <memory>
#include <vector>

namespace tavrine {

/// Monitors over the raw events of XInput 2.2, and over Qt's events for what swallows.
///
/// Lives on the main thread, on a connection of its own that is told of raw events only while a monitor wants them.
/// Raw events pass every grab and every drag; they carry no modifiers, so the keys that are down are kept here.
/// Modifiers are told from the raw events for global and local monitors alike; keys, clicks, wheels and moves of this
/// program's windows come from Qt, where they can be swallowed. Both roads tell of one press, in either order: a window
/// of ours may be gone before the raw event of the key that closed it arrives, so presses are known by their time.
class X11EventMonitors final : public QObject, public EventMonitors {
public:
    /// In `silence`, where there is one, nothing that goes down is told.
    explicit X11EventMonitors(std::shared_ptr<const KeyboardSilence> silence = {});
    ~X11EventMonitors() override;

    [[nodiscard]] std::unique_ptr<EventMonitor> addGlobalMonitor(quint32 mask, GlobalHandler handler) override;
    [[nodiscard]] std::unique_ptr<EventMonitor> addLocalMonitor(quint32 mask, LocalHandler handler) override;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void announceVersion();
    void select();
    void handle(const xcb_generic_event_t &event);
    void onRawKey(int keycode, bool isPress, quint32 time);
    void onRawButton(quint32 button, quint32 time);
    void forgetReleasedKeys(quint32 time);
    void takeHeldKeys();
    [[nodiscard]] quint32 flags() const;
    void tellFlags();
    void tellMouse(quint32 type);
    [[nodiscard]] bool isPointerOverOurWindow();

    std::shared_ptr<const KeyboardSilence> m_silence;
    XcbClient m_client;
    X11KeyboardMap m_map;
    MonitorList m_global;
    MonitorList m_local;
    std::map<int, quint32> m_heldModifiers; ///< keycode to the flag that it had when it was pressed
    quint32 m_ownKeyTime = 0;               ///< when the last key went down that a window of ours has had from Qt
    quint32 m_ownPressTime = 0;
    X11MouseEvents m_mouse;
    quint32 m_selected = 0;
    quint32 m_lastTime = 0;
    int m_group = 0;
    quint8 m_inputOpcode = 0;
    bool m_isCapsLocked = false;
    bool m_areHeldKeysKnown = false;
};

} // namespace tavrine
