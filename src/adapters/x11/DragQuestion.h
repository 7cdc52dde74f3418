#pragma once

#include "adapters/x11/XcbLink.h"

#include <chrono>
#include <deque>
#include <optional>

namespace tavrine {

/// Asks the program that drags whether it drags files, and hears its answers, with bounded work whatever they are.
///
/// Owned by DragWatch, on its thread. Programs differ in what they answer before the drop, and at which time:
///
///  1. Most list their types when they are asked with the time at which they took the selection. What they list as
///     `text/uri-list` may be a link, so it is read too; where it does not come soon or is refused, the list counts.
///  2. Qt lists nothing, and gives data only for the time of the last motion that it has worked off. It is asked with
///     the time that it claims to have taken the selection at, which is that of the first, and then with those of the
///     motions that the server tells, one at a time, `mostTries` in all, ever more seldom.
class DragQuestion {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr int mostTries = 40;
    static constexpr std::chrono::milliseconds patience{1000}; ///< of 1; on a busy machine an answer takes 200
    static constexpr std::uint32_t readBytes = 4096;           ///< of each answer; no list of types is longer
    static constexpr int mostPieces = 1000;                    ///< of an answer that comes piecemeal

    explicit DragQuestion(XcbLink &link);

    /// Asks the owner of `selection` anew. `taken` is when the server gave it the selection, `claimed` its own word.
    void ask(xcb_atom_t selection, xcb_window_t owner, xcb_timestamp_t taken, xcb_timestamp_t claimed);
    /// Waits for no answer any more.
    void stop() { m_stage = Stage::idle; }
    void onMotion(xcb_timestamp_t time) { m_motion = time; }
    void handle(const xcb_generic_event_t &event);
    /// Does what is due.
    void goOn();

    [[nodiscard]] bool isFiles() const { return m_isFiles; }
    [[nodiscard]] bool wantsMotions() const { return m_stage == Stage::tries && m_pieces == 0; }
    /// When `goOn` is to be called though nothing has come.
    [[nodiscard]] std::optional<Clock::time_point> deadline() const;

private:
    enum class Stage { idle, types, data, tries };

    void openWindow();
    void convert(xcb_atom_t target, xcb_timestamp_t time);
    void onAnswer(const xcb_selection_notify_event_t &answer);
    void onTypes();
    void onData();
    void onPiece();
    void settle(bool isFiles);
    [[nodiscard]] bool isOfQt(xcb_window_t owner);
    [[nodiscard]] XcbReply<xcb_get_property_reply_t> takeProperty();
    [[nodiscard]] std::chrono::milliseconds pauseBetweenTries() const;

    XcbLink &m_link;
    const xcb_atom_t m_targets;
    const xcb_atom_t m_uriList;
    const xcb_atom_t m_incr;
    const xcb_atom_t m_property;
    std::deque<xcb_window_t> m_windows; ///< the last is asked for; answers to the others come late or never
    xcb_atom_t m_selection = XCB_ATOM_NONE;
    xcb_timestamp_t m_taken = 0;
    xcb_timestamp_t m_motion = 0;
    xcb_timestamp_t m_triedTime = 0;
    Clock::time_point m_askedAt;
    Stage m_stage = Stage::idle;
    int m_tries = 0;
    int m_pieces = 0;       ///< that may still come; 0 while none do
    bool m_isAsked = false; ///< an answer is awaited
    bool m_isFiles = false;
};

} // namespace tavrine
