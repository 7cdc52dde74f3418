#pragma once

#include "adapters/x11/PasteboardContents.h"
#include "adapters/x11/SelectionLimits.h"
#include "adapters/x11/SelectionTransfer.h"

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

namespace tavrine {

/// Answers the programs that paste while the clipboard is ours. Lives on the selection thread.
///
/// Besides the contents it answers TARGETS, MULTIPLE, TIMESTAMP and SAVE_TARGETS. Large answers go piecemeal (INCR);
/// those that are under way when the clipboard passes to another program are finished.
class SelectionOwner {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// `encode` packs a picture elsewhere and leads to `onEncoded`.
    SelectionOwner(XConnection &connection, const SelectionLimits &limits, std::function<void(QImage)> encode);

    /// From now on these are answered. `time` is that of the claim.
    void own(const OwnContents &contents, xcb_timestamp_t time);
    void own(const std::vector<Received> &contents, xcb_timestamp_t time);
    /// The clipboard is no longer ours.
    void release();
    [[nodiscard]] bool isOwner() const { return m_isOwner; }
    [[nodiscard]] bool hasContents() const { return !m_offers.empty(); }
    [[nodiscard]] xcb_timestamp_t time() const { return m_time; }

    void onRequest(const xcb_selection_request_event_t &request);
    void onPropertyNotify(const xcb_property_notify_event_t &event);
    void onWindowDestroyed(xcb_window_t window);
    /// `key` is the cache key of the picture; empty bytes say that it cannot be packed.
    void onEncoded(qint64 key, const QByteArray &png);

    [[nodiscard]] std::optional<TimePoint> deadline() const;
    void expire(TimePoint now);

private:
    /// A target and its answer. A picture has no bytes before it is wanted.
    struct Offer {
        xcb_atom_t target;
        xcb_atom_t type;
        int format;
        QByteArray bytes;
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

    void offer(const QByteArray &target, const QByteArray &type, const QByteArray &bytes);
    [[nodiscard]] bool mustEncodeFor(const xcb_selection_request_event_t &request) const;
    void answer(const xcb_selection_request_event_t &request);
    [[nodiscard]] bool convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property);
    [[nodiscard]] bool convertMultiple(xcb_window_t requestor, xcb_atom_t property);
    [[nodiscard]] bool put(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, int format,
                           const QByteArray &bytes);
    void putWhole(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, int format, QByteArrayView bytes);
    void notify(const xcb_selection_request_event_t &request, xcb_atom_t property);
    void stopWatching(xcb_window_t requestor);

    XConnection &m_connection;
    const SelectionLimits &m_limits;
    std::function<void(QImage)> m_encode;
    [[nodiscard]] qsizetype pieceBytes() const; ///< known once the connection is open
    bool m_isOwner = false;
    xcb_timestamp_t m_time = 0;
    std::vector<Offer> m_offers;
    QImage m_image; ///< not encoded yet
    xcb_atom_t m_imageTarget = 0;
    qint64 m_encodingKey = 0;                             ///< the picture that was handed out last
    std::vector<xcb_selection_request_event_t> m_waiting; ///< for the encoding
    std::vector<Outgoing> m_outgoing;
};

} // namespace tavrine
