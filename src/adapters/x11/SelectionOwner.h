#pragma once

#include "adapters/pasteboard/OfferedForms.h"
#include "adapters/pasteboard/SelectionLimits.h"
#include "adapters/x11/SelectionTransfer.h"

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <vector>

namespace tavrine {

/// Answers the programs that paste while the clipboard is ours. Lives on the selection thread.
///
/// Besides the contents it answers TARGETS, MULTIPLE, TIMESTAMP and SAVE_TARGETS. Large answers go piecemeal (INCR);
/// those that are under way when the clipboard passes to another program are finished. What costs work is made when
/// somebody asks for it, on another thread; who asks meanwhile for something else does not wait for it.
class SelectionOwner {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    using Recipe = OfferedForm::Recipe;
    /// What is made, and for which ownership.
    struct Order {
        int ownership;
        xcb_atom_t target;
    };

    /// `make` runs the recipe elsewhere and leads to `onMade`.
    SelectionOwner(XConnection &connection, const SelectionLimits &limits, std::function<void(Order, Recipe)> make);

    /// From now on these are answered. `time` is that of the claim.
    void own(std::vector<OfferedForm> forms, xcb_timestamp_t time);
    /// The clipboard is no longer ours.
    void release();
    [[nodiscard]] bool isOwner() const { return m_isOwner; }
    [[nodiscard]] bool hasContents() const { return !m_offers.empty(); }
    [[nodiscard]] xcb_timestamp_t time() const { return m_time; }

    void onRequest(const xcb_selection_request_event_t &request);
    void onPropertyNotify(const xcb_property_notify_event_t &event);
    void onWindowDestroyed(xcb_window_t window);
    void onMade(Order order, const QByteArray &bytes);

    [[nodiscard]] std::optional<TimePoint> deadline() const;
    void expire(TimePoint now);

private:
    /// A target and its answer, or how that is made: an own picture once and for all, a further form of what was
    /// fetched for each program that asks.
    struct Offer {
        xcb_atom_t target;
        xcb_atom_t type;
        int format;
        QByteArray bytes;
        Recipe recipe = {};
        bool isKept = false;
    };
    struct Waiting {
        xcb_selection_request_event_t request;
        std::set<xcb_atom_t> needed;
    };
    struct Outgoing {
        xcb_window_t requestor;
        xcb_atom_t property;
        xcb_atom_t type;
        int format;
        QByteArray bytes;
        qsizetype offset;
        TimePoint lastProgress;
    };

    [[nodiscard]] Offer *find(xcb_atom_t target);
    /// The targets that have to be made for the request.
    [[nodiscard]] std::set<xcb_atom_t> neededFor(const xcb_selection_request_event_t &request);
    [[nodiscard]] bool isMade(const Waiting &waiting);
    void answer(const xcb_selection_request_event_t &request);
    [[nodiscard]] bool convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property);
    [[nodiscard]] bool convertMultiple(xcb_window_t requestor, xcb_atom_t property);
    [[nodiscard]] std::optional<QList<std::pair<xcb_atom_t, xcb_atom_t>>> pairsOf(xcb_window_t requestor,
                                                                                  xcb_atom_t property) const;
    [[nodiscard]] bool put(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, int format,
                           const QByteArray &bytes);
    void putWhole(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, int format, QByteArrayView bytes);
    void notify(const xcb_selection_request_event_t &request, xcb_atom_t property);
    void stopWatching(xcb_window_t requestor);

    XConnection &m_connection;
    const SelectionLimits &m_limits;
    std::function<void(Order, Recipe)> m_make;
    [[nodiscard]] qsizetype pieceBytes() const; ///< known once the connection is open
    bool m_isOwner = false;
    xcb_timestamp_t m_time = 0;
    int m_ownership = 0; ///< grows with each
    std::vector<Offer> m_offers;
    std::set<xcb_atom_t> m_underWay;
    std::map<xcb_atom_t, QByteArray> m_made; ///< while somebody waits for it
    std::vector<Waiting> m_waiting;
    std::vector<Outgoing> m_outgoing;
};

} // namespace tavrine
