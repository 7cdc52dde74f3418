#pragma once

#include "adapters/frozen/Pixels.h"
#include "adapters/x11/XcbLink.h"
#include "adapters/x11/frozen/PixelLayout.h"

#include <memory>
#include <vector>

namespace tavrine {

/// A picture as large as the screen in memory that the X server reads and writes as well; where the server cannot
/// share (another machine) or has other pixels than ours, in our own memory and converted line by line.
///
/// Owned by the session; must go before its connection. The memory has no name in the system, so that nothing of it is
/// left however the process ends.
class SharedPixels {
public:
    /// None when the screen has pixels of another kind or there is no memory.
    [[nodiscard]] static std::unique_ptr<SharedPixels> make(XcbLink &link);
    ~SharedPixels();
    SharedPixels(const SharedPixels &) = delete;
    SharedPixels &operator=(const SharedPixels &) = delete;

    [[nodiscard]] PixelsToPaint pixels() const { return m_pixels; }

    /// Takes the whole screen as it is when the server gets to it; `finishReading` waits until it is here. False when
    /// the server refused or did not answer in time.
    void beginReading();
    [[nodiscard]] bool finishReading();

    /// Has the system find the memory now, all at once, instead of page by page while it is painted: half the time.
    void prepareForPainting();

    /// Puts the area onto a window that lies over the whole screen. The memory is not to be changed before
    /// `XcbLink::finish`.
    void put(xcb_window_t window, xcb_gcontext_t context, const QRect &area);

private:
    SharedPixels(XcbLink &link, PixelLayout layout);
    [[nodiscard]] bool shareWithServer();
    [[nodiscard]] bool takeReply();
    void putInPieces(xcb_window_t window, xcb_gcontext_t context, const QRect &area);

    XcbLink &m_link;
    PixelLayout m_layout;
    PixelsToPaint m_pixels;
    size_t m_bytes = 0;
    quint32 m_segment = 0;      ///< 0 when the memory is our own
    unsigned int m_reading = 0; ///< the request under way
};

} // namespace tavrine
