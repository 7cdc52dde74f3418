#pragma once

#include "adapters/x11/XConnection.h"

#include <chrono>

namespace tavrine {

/// What an owner handed over for one target, as it came.
struct Received {
    QByteArray target;
    xcb_atom_t targetAtom = 0;
    xcb_atom_t type = 0;
    int format = 0;
    QByteArray bytes;
};

/// One target on its way from the owner to us, whole or piecemeal (INCR). Lives on the selection thread.
///
/// The property is named like the target, so that an answer that comes too late meets no other transfer into the same
/// window. Deadlines are the caller's: it sees the progress.
class SelectionTransfer {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    enum class State {
        asked,     ///< no answer yet
        piecemeal, ///< INCR
        done,
        refused, ///< the owner has no such thing, or its answer makes no sense
        tooLarge,
    };

    /// Asks the owner for `target` as of `time`, into a property of `window`.
    SelectionTransfer(XConnection &connection, xcb_window_t window, xcb_atom_t target, xcb_timestamp_t time,
                      qsizetype maxBytes);

    /// Both ignore what belongs to another transfer.
    void onSelectionNotify(const xcb_selection_notify_event_t &event);
    void onPropertyNotify(const xcb_property_notify_event_t &event);

    [[nodiscard]] State state() const { return m_state; }
    [[nodiscard]] bool isRunning() const { return m_state == State::asked || m_state == State::piecemeal; }
    /// True while the owner may still write to the window.
    [[nodiscard]] bool mayStillBeWritten() const { return isRunning() || m_isAbandoned; }
    [[nodiscard]] TimePoint lastProgress() const { return m_lastProgress; }

    /// Only when done.
    [[nodiscard]] PropertyValue takeValue() { return std::move(m_value); }

private:
    void takePiece();

    XConnection &m_connection;
    xcb_window_t m_window;
    xcb_atom_t m_target;
    qsizetype m_maxBytes;
    State m_state = State::asked;
    bool m_isAbandoned = false;
    bool m_hasPiece = false;
    TimePoint m_lastProgress;
    PropertyValue m_value;
};

} // namespace tavrine
