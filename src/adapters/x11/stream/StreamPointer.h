#pragma once

#include "adapters/frozen/Pixels.h"
#include "adapters/stream/FrameBuffers.h"
#include "adapters/x11/PointerAlarm.h"
#include "adapters/x11/XcbLink.h"

#include <optional>
#include <vector>

#include <xcb/xfixes.h>

namespace tavrine {

/// The pointer in the pictures of a stream: its shape, where it is, and word of the server that it may be elsewhere.
///
/// The server tells of no movement as such: programs take the motion events, and a pointer that a program puts
/// elsewhere sends none. But every movement ends the pointer's rest, and of that the server gives an alarm. Lives on
/// the stream's thread.
class StreamPointer {
public:
    explicit StreamPointer(XcbLink &link) : m_link(link) {}

    /// False when the server lacks what it takes, or is late.
    [[nodiscard]] bool open();
    /// True when the event says that the pointer may be another one or elsewhere.
    [[nodiscard]] bool handle(const xcb_generic_event_t &event);

    // A look asks and takes the answers; between the two others may ask as well.
    void ask();
    void take();

    /// What is seen since the last look; another number for anything else. Areas are of the root window.
    [[nodiscard]] const FrameBuffers::Pointer &seen() const { return m_seen; }
    /// Paints it over `picture`, whose first pixel is at `origin` of the root window.
    void paint(PixelsToPaint picture, QPoint origin) const;

private:
    void takeShape(const xcb_xfixes_get_cursor_image_reply_t *answer);

    XcbLink &m_link;
    int m_shapeNotice = -1;
    std::optional<PointerAlarm> m_alarm;
    bool m_isShapeOld = true;
    unsigned int m_shapeQuestion = 0;
    unsigned int m_placeQuestion = 0;
    QPoint m_place;
    QPoint m_hotSpot;
    QSize m_size;
    std::vector<quint32> m_pixels; ///< premultiplied
    FrameBuffers::Pointer m_seen{.look = 1, .area = {}};
};

} // namespace tavrine
