#pragma once

#include "adapters/stream/FrameBuffers.h"
#include "adapters/x11/XcbLink.h"
#include "adapters/x11/frozen/PixelLayout.h"

#include <vector>

namespace tavrine {

/// Reads parts of what the server shows, or keeps in a pixmap, into the memory of frames. The server writes into that
/// memory itself; where it cannot (another machine, another kind of pixels, an extension that is switched off) the
/// pixels come over the connection.
///
/// Lives on the stream's thread, as long as its connection. All reads that were begun are under way together.
class PixelReader {
public:
    PixelReader(XcbLink &link, PixelLayout layout);
    ~PixelReader();
    PixelReader(const PixelReader &) = delete;
    PixelReader &operator=(const PixelReader &) = delete;

    /// Begins to read `from` of the drawable, to `to` in the buffer's picture.
    void read(xcb_drawable_t drawable, const QRect &from, FrameBuffers::Buffer &buffer, QPoint to);
    /// Waits for all of them. False when one of them is not here.
    [[nodiscard]] bool finish();

private:
    struct Reading {
        unsigned int sequence = 0;
        PixelsToPaint target;
        QRect place;
        qsizetype scratch = -1; ///< where the pixels come first, in pixels; -1 for at their place at once
        bool isShared = false;
    };

    void readShared(xcb_drawable_t drawable, const QRect &from, FrameBuffers::Buffer &buffer, QPoint to);
    [[nodiscard]] bool isThere(const Reading &reading);
    /// The server's name for the memory; 0 when it does not have it, now or ever.
    [[nodiscard]] quint32 share(const FrameMemory &memory);
    [[nodiscard]] bool hasScratch(qsizetype pixels, QSize whole);

    XcbLink &m_link;
    PixelLayout m_layout;
    bool m_isSharing;
    bool m_wasLate = false; ///< the server, when it was last given memory, among the reads that are under way
    std::vector<Reading> m_readings;
    std::shared_ptr<FrameMemory> m_scratch;
    quint32 m_scratchSegment = 0;
    qsizetype m_scratchUsed = 0; ///< pixels
};

} // namespace tavrine
