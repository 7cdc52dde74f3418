#pragma once

#include "adapters/x11/XcbClient.h"
#include "ports/EventMonitors.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QTimer>

#include <array>
#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <memory>

namespace tavrine {

/// How the mouse moves and lets go in other programs, from the raw events of XInput 2.2, which pass every grab and
/// every drag.
///
/// Owned by X11EventMonitors; lives on the main thread, on a connection of its own, so that a flood of motions delays
/// no key. The connection is made at the first use and anew when it was lost.
///
///  1. What comes fast is gathered: the first after a rest is told at once, then each `shortestPause` tells of all in
///     it, a row of equal motions as one.
///  2. A release is told each time, after the motions before it and before those after it.
///  3. From the press of a button to the release of the last one, all is for whoever got the press, as every drag is;
///     without a button it is for the window under the pointer. What is for this program is not told. Only the toolkit
///     knows what it got, and has it at the same time as we, so a press is followed by a pause before its drag is told.
///  4. A window manager may keep the pointer until it has looked at a press, and so the toolkit's word of it can come
///     much later: what began over a window of ours is kept that long, for `longestWait` at most.
class X11MouseEvents final : public QObject {
public:
    /// Two frames of a fast screen, and an eighth of the turns that a fast mouse would ask for.
    static constexpr std::chrono::milliseconds shortestPause{8};
    /// What a window manager needs on a machine that is very busy; a press that it took for itself is told that late.
    static constexpr std::chrono::milliseconds longestWait{1000};

    enum class Wanted { nothing, releases, all };
    using Tell = std::function<void(quint32 type)>;

    /// `tell` may call `watch`.
    explicit X11MouseEvents(Tell tell);

    void watch(Wanted wanted);
    /// The toolkit has got a press of that time of the server: that of the raw event, or a little later, as the server
    /// looks at its clock again for what windows get.
    void noteOwnPress(quint32 time);

private:
    /// One of the pointers that the server has.
    struct Pointer {
        quint32 buttons = 0;     ///< that are down, without the wheel's
        quint32 press = 0;       ///< when the first of them went down; 0 before the watching began
        bool isOverOurs = false; ///< when it was last seen moved without a button
    };
    struct Note {
        quint16 device;
        quint32 type;
        quint32 press; ///< that it belongs to
        quint32 last;  ///< no press after this is of the same drag
        bool operator==(const Note &) const = default;
    };

    void connectAnew();
    void select();
    void handle(const xcb_generic_event_t &event);
    void onMotion(quint16 device);
    void onButton(quint16 device, quint32 button, bool isPress, quint32 time);
    void takePointers();
    void onDrained();
    void onPauseOver();
    void tellAll();
    [[nodiscard]] bool isOurs(const Note &note);
    [[nodiscard]] bool hasOwnPress(const Note &note) const;
    [[nodiscard]] bool mayBecomeOurs(const Note &note) const;
    [[nodiscard]] bool isOverOurWindow(quint16 device);

    Tell m_tell;
    std::unique_ptr<XcbClient> m_client;
    std::map<quint16, Pointer> m_pointers;
    std::deque<Note> m_notes;   ///< not told yet
    quint32 m_lastPress = 0;    ///< that began a drag
    QDeadlineTimer m_pressWait; ///< for the toolkit to get it
    QTimer m_pause;
    std::array<quint32, 16> m_ownPresses{}; ///< the times of the last ones
    size_t m_ownPressCount = 0;
    bool m_hasNews = false;  ///< something came in this turn
    bool m_hasPress = false; ///< since the last pause
    Wanted m_wanted = Wanted::nothing;
    quint8 m_inputOpcode = 0;
};

} // namespace tavrine
