#pragma once

#include "adapters/pasteboard/PasteboardTransfer.h"
#include "adapters/x11/XConnection.h"

#include <vector>

namespace tavrine {

/// One target on its way from the owner to us, whole or piecemeal (INCR). Lives on the selection thread.
///
/// The property is named like the target, so that an answer that comes too late meets no other transfer into the same
/// window. Who is asked again is asked into another window, and the first answer counts: the others, should they come
/// all the same, stand where nobody looks.
class SelectionTransfer final : public PasteboardTransfer {
public:
    enum class State {
        asked,     ///< no answer yet
        piecemeal, ///< INCR
        done,
        refused, ///< the owner has no such thing, or its answer makes no sense
        tooLarge,
    };

    /// Asks the owner for `target` as of `time`, into a property of `window`. With `Excess::cutOff` the beginning of
    /// what is larger than `maxBytes` is the value. Without a `selection` it is the clipboard's owner.
    SelectionTransfer(XConnection &connection, xcb_window_t window, xcb_atom_t target, xcb_timestamp_t time,
                      qsizetype maxBytes, Excess excess = Excess::refused, xcb_atom_t selection = XCB_ATOM_NONE);
    ~SelectionTransfer() override;
    SelectionTransfer(const SelectionTransfer &) = delete;
    SelectionTransfer &operator=(const SelectionTransfer &) = delete;

    /// The same question once more. Only while `state` is `asked`.
    void askAgain() override;
    [[nodiscard]] bool mayBeAskedAgain() const override { return true; }
    [[nodiscard]] int questions() const override { return 1 + static_cast<int>(m_furtherWindows.size()); }

    /// Both ignore what belongs to another transfer.
    void onSelectionNotify(const xcb_selection_notify_event_t &event);
    void onPropertyNotify(const xcb_property_notify_event_t &event);

    [[nodiscard]] State state() const { return m_state; }
    [[nodiscard]] bool isRunning() const override { return m_state == State::asked || m_state == State::piecemeal; }
    [[nodiscard]] bool hasBegun() const override { return m_state != State::asked; }
    /// True while the owner may still write to the window that it was first asked into.
    [[nodiscard]] bool mayStillBeWritten() const { return isRunning() || m_isAbandoned || questions() > 1; }
    [[nodiscard]] TimePoint lastProgress() const override { return m_lastProgress; }

    /// Only when done.
    [[nodiscard]] PropertyValue takeValue() { return std::move(m_value); }

private:
    [[nodiscard]] bool isOurs(xcb_window_t window) const;
    void ask(xcb_window_t window) const;
    void takePiece();

    XConnection &m_connection;
    xcb_window_t m_window; ///< once answered, that of the answer
    std::vector<xcb_window_t> m_furtherWindows;
    xcb_atom_t m_selection;
    xcb_atom_t m_target;
    xcb_timestamp_t m_time;
    qsizetype m_maxBytes;
    Excess m_excess;
    State m_state = State::asked;
    bool m_isAbandoned = false;
    bool m_hasPiece = false;
    TimePoint m_lastProgress;
    PropertyValue m_value;
};

} // namespace tavrine
