#pragma once

#include "adapters/x11/DragQuestion.h"
#include "adapters/x11/PressedPointers.h"
#include "base/Waker.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include <xcb/xfixes.h>

namespace tavrine {

/// What is known of the drags of all programs.
struct DragState {
    int changeCount = 0;
    bool holdsFileReference = false;
    bool isDragging = false;
    bool operator==(const DragState &) const = default;
};

/// Watches drags on a connection and a thread of its own, so that no program that drags can make the main thread wait.
/// While nothing is dragged the thread sleeps without a deadline.
///
///  1. A drag begins when a program takes `XdndSelection` while a button is down; who takes it at another time, or has
///     it from an earlier drag, drags nothing.
///  2. It ends when the button is up, when nobody owns the selection, or with Escape. The server's raw events tell of
///     both under every grab; they are selected from the beginning to the release. A release that they do not tell,
///     as when a device is unplugged, is found by a look each `checkPause`.
///  3. In one press at most `mostNotices` changes of the owner are followed: a person drags one thing at a time. Those
///     who change it without end are read more seldom.
///  4. A drag of this program's own counts and is asked like any other, but it is no drag of another program:
///     `isDragging` does not speak of it.
///  5. A lost connection is made anew, ever more seldom, and until then nothing is dragged.
class DragWatch {
public:
    static constexpr std::chrono::milliseconds checkPause{1000};
    static constexpr int mostNotices = 16;

    /// `ownWindows` is the base of this program's window numbers. `publish` is called on the thread that runs it.
    DragWatch(std::uint32_t ownWindows, std::function<void(const DragState &)> publish)
        : m_ownWindows(ownWindows), m_publish(std::move(publish)) {}

    void run();
    /// Ends `run` soon; any thread.
    void stop();

private:
    using Clock = DragQuestion::Clock;
    /// What the events since the last look told.
    struct News {
        std::optional<xcb_xfixes_selection_notify_event_t> owner; ///< the last change
        bool hasEnded = false;                                    ///< somebody gave the selection up, or Escape
        bool isButtonUp = false;
    };

    [[nodiscard]] bool open();
    void work();
    void wait();
    [[nodiscard]] News read();
    void readRaw(const xcb_ge_generic_event_t &event, News &news);
    void take(const News &news);
    void onNewOwner(const xcb_xfixes_selection_notify_event_t &owner);
    void onButtonUp();
    void endPress();
    void publish(bool isDragging);
    void select();
    void findEscape();
    void slowDown();

    const std::uint32_t m_ownWindows;
    const std::function<void(const DragState &)> m_publish;
    Waker m_waker;
    std::atomic<bool> m_isStopping = false;

    // The thread's own from here.
    std::unique_ptr<XcbLink> m_link;
    std::unique_ptr<DragQuestion> m_question;
    DragState m_state;
    DragState m_told;                   ///< as published last
    PressedPointers m_press;            ///< in which the drag began; empty between presses
    std::vector<std::uint8_t> m_escape; ///< keycodes
    Clock::time_point m_nextCheck;
    Clock::time_point m_second; ///< in which batches of notices are counted
    xcb_atom_t m_selection = XCB_ATOM_NONE;
    std::uint32_t m_selected = 0;
    int m_notices = 0; ///< in this press
    int m_batches = 0; ///< in this second
    std::uint8_t m_inputOpcode = 0;
    std::uint8_t m_selectionNotice = 0;
};

} // namespace tavrine
