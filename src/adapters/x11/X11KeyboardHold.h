#pragma once

#include "adapters/x11/XcbClient.h"

#include <map>
#include <optional>

namespace tavrine {

/// All master keyboards, held through one connection, with what keys did to them put right. Used by X11EventTap.
class X11KeyboardHold {
public:
    /// Speaks to the server's input extension. Not usable without it.
    explicit X11KeyboardHold(XcbClient &client);

    [[nodiscard]] bool isUsable() const { return m_inputOpcode != 0; }

    /// Takes all keyboards that there are, or none. Keys that are down are let go first, so that who had the keyboard
    /// hears of it.
    [[nodiscard]] bool take();
    /// Takes those that have come since. False when another program was faster.
    [[nodiscard]] bool takeNew();
    /// Gives the keyboards back: no key down; locks, layout and the aids that keys switch as they were.
    void giveBack();

    /// What an event of the connection is to the hold.
    struct Notice {
        bool isKey = false; ///< one that was dropped
        quint32 time = 0;
        bool isHierarchy = false; ///< a keyboard has come or gone
    };
    [[nodiscard]] Notice take(const xcb_generic_event_t &event);

private:
    struct Settings {
        quint8 lockedModifiers = 0;
        quint8 lockedGroup = 0;
        std::optional<quint32> aids; ///< sticky, slow, bouncing and mouse keys and their like: what is on, if known
    };

    [[nodiscard]] std::vector<quint16> masters();
    [[nodiscard]] bool grab(quint16 device);
    [[nodiscard]] bool grabAll(const std::vector<quint16> &devices);
    void ungrabAll(const std::vector<quint16> &devices);
    void releaseKeys(const std::vector<quint8> &keys);
    void remember(quint16 device);
    void putBack(quint16 device, const Settings &settings);
    void followRequest(const xcb_generic_event_t &event);

    XcbClient &m_client;
    std::map<quint16, Settings> m_held; ///< as they shall be afterwards
    quint8 m_inputOpcode = 0;
    quint8 m_firstXkbEvent = 0;
};

} // namespace tavrine
