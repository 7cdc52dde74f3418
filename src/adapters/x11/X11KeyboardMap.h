#pragma once

#include "adapters/x11/X11Keyboard.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <functional>

namespace tavrine {

/// The keyboard's map as it is now, followed through its changes. Lives where its client lives.
///
///  1. Changes that follow each other closely are read once, when the last of them is in.
///  2. A server that does not answer in time is asked again until it does; the map of before stands meanwhile.
class X11KeyboardMap : public QObject {
public:
    static constexpr std::chrono::milliseconds settling{40};      ///< a change of layout comes as several notices
    static constexpr std::chrono::milliseconds longestDelay{400}; ///< of notices that never pause
    static constexpr std::chrono::milliseconds betweenTries{250};

    /// `onChange` is called after each reading, the first of them within `start` or later.
    X11KeyboardMap(XcbClient &client, std::function<void()> onChange);

    /// Selects the notices and reads the map. May be called again.
    void start() { read(); }
    [[nodiscard]] bool isKnown() const { return m_isKnown; }
    [[nodiscard]] const X11Keyboard &keyboard() const { return m_keyboard; }
    [[nodiscard]] quint8 firstXkbEvent() const { return m_firstXkbEvent; }

    /// Takes an event; says what it tells.
    KeyboardNotice take(const xcb_generic_event_t &event);

private:
    void read();

    XcbClient &m_client;
    std::function<void()> m_onChange;
    X11Keyboard m_keyboard;
    QTimer m_timer;
    QElapsedTimer m_sinceFirstNotice;
    quint8 m_firstXkbEvent = 0;
    bool m_isKnown = false;
};

} // namespace tavrine
