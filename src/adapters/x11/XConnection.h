#pragma once

#include "adapters/x11/XcbLink.h"

#include <QByteArray>
#include <QHash>
#include <QList>

#include <cstdint>
#include <deque>
#include <optional>

namespace tavrine {

using XEvent = XcbEvent;

/// The atoms that the clipboard's protocol itself needs.
struct SelectionAtoms {
    xcb_atom_t clipboard, clipboardManager, targets, multiple, timestamp, saveTargets, incr, atomPair, utf8String, null,
        serverTime;
};

/// What becomes of a property that is larger than allowed: nothing of it is read, or its beginning.
enum class Excess { refused, cutOff };

/// What a property holds. `isTooLarge` is set when it was larger than allowed. A `type` of 0 means that there is no
/// property.
struct PropertyValue {
    xcb_atom_t type = 0;
    int format = 0;
    bool isTooLarge = false;
    QByteArray bytes;
};

/// A connection to the X server of the clipboard's own, with an unmapped window that stands for us.
///
/// Opened and used on one thread; opening waits for the server, which another program may hold for itself. Errors that
/// requests cause arrive as events and are dropped: windows of other programs vanish at any moment. After the
/// connection is lost every call is harmless.
class XConnection {
public:
    /// Connects to $DISPLAY; nothing else may be called before. `isUsable` is false when that fails or when the server
    /// lacks selection notices.
    void open();
    [[nodiscard]] bool isUsable() const;
    [[nodiscard]] xcb_connection_t *get() const { return m_link->connection(); }
    [[nodiscard]] int descriptor() const { return m_link->descriptor(); }
    [[nodiscard]] xcb_window_t window() const { return m_window; }
    [[nodiscard]] const SelectionAtoms &atoms() const { return m_atoms; }
    [[nodiscard]] int selectionNoticeEvent() const { return m_selectionNotice; }
    /// The largest part of a property that one request may carry.
    [[nodiscard]] qsizetype maxRequestBytes() const { return m_maxRequestBytes; }

    [[nodiscard]] xcb_atom_t atom(const QByteArray &name) { return m_link->atom(name.toStdString()); }
    /// The names of `atoms`; empty for numbers that are no atom.
    [[nodiscard]] QList<QByteArray> atomNames(const QList<std::uint32_t> &atoms);

    [[nodiscard]] xcb_window_t owner(xcb_atom_t selection) { return m_link->selectionOwner(selection); }
    /// Waits until the server has done all that it was sent.
    void finish() { static_cast<void>(m_link->finish()); }
    /// The server's present time.
    [[nodiscard]] xcb_timestamp_t serverTime();

    /// Reads at most `maxBytes` of the property in pieces, and deletes it.
    [[nodiscard]] PropertyValue takeProperty(xcb_window_t window, xcb_atom_t property, qsizetype maxBytes,
                                             Excess excess = Excess::refused);

    /// A window to receive one change of the clipboard in.
    [[nodiscard]] xcb_window_t createWindow() const;
    void destroyWindow(xcb_window_t window) const;
    /// Destroys the window, but late: an owner that still writes to it would meet an error, and some end by that. The
    /// last few stay.
    void retireWindow(xcb_window_t window);

    /// The next event; none when none has arrived. Never waits.
    [[nodiscard]] XEvent nextEvent();
    /// True when an event that was read on the way to an answer waits in `nextEvent`.
    [[nodiscard]] bool readAhead();
    void flush() { m_link->flush(); }

private:
    [[nodiscard]] bool internAll();

    std::optional<XcbLink> m_link;
    xcb_window_t m_window = 0;
    SelectionAtoms m_atoms{};
    int m_selectionNotice = -1;
    qsizetype m_maxRequestBytes = 0;
    QHash<xcb_atom_t, QByteArray> m_names;
    std::deque<XEvent> m_deferred;
    std::deque<xcb_window_t> m_retired;
};

/// The server's times wrap.
[[nodiscard]] constexpr bool isTimeBefore(xcb_timestamp_t a, xcb_timestamp_t b) {
    return static_cast<std::int32_t>(a - b) < 0;
}

/// Sequence numbers wrap.
[[nodiscard]] constexpr bool isSequenceBefore(unsigned a, unsigned b) {
    return static_cast<int>(a - b) < 0;
}

} // namespace tavrine
