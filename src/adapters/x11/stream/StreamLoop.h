#pragma once

#include "adapters/stream/FrameBuffers.h"
#include "adapters/stream/FramePacer.h"
#include "adapters/stream/ThreadedScreenStream.h"
#include "adapters/x11/stream/KeptOutWindows.h"
#include "adapters/x11/stream/PixelReader.h"
#include "adapters/x11/stream/StreamPointer.h"
#include "base/SampleGate.h"

namespace tavrine {

/// A stream's work on its thread, over a connection of its own. It sleeps until the server says that something has
/// changed, looks at it when the interval since the last look is over, and gives out what is different.
///
/// Where there is no monitor (any more) the picture is black.
class StreamLoop final : public StreamWork {
public:
    /// The server answers within a millisecond. What takes longer is held by another program or stopped; it is asked
    /// again, and the stream's end is noticed in between.
    static constexpr XcbLink::Wait longestWait{500};

    StreamLoop(const StreamPlan &plan, SampleGate<ScreenSample> &session, XcbLink::Wait wait = longestWait);

    [[nodiscard]] std::optional<QString> open() override;
    std::optional<QString> run() override;

private:
    [[nodiscard]] std::optional<QString> begin();
    [[nodiscard]] bool hasExtensions();
    void readMonitorsAgain();
    void readEvents();
    void handle(const xcb_generic_event_t &event);
    void waitFor(bool forServer, std::optional<MediaTime> until) const;

    void look(FrameBuffers::Buffer &buffer);
    void takeChanges();
    [[nodiscard]] bool refreshInOnePiece(FrameBuffers::Buffer &buffer);
    [[nodiscard]] bool refresh(FrameBuffers::Buffer &buffer);
    void readRoot(FrameBuffers::Buffer &buffer, const QRegion &part);
    void readHidden(FrameBuffers::Buffer &buffer, const QRegion &part);
    void give(FrameBuffers::Buffer &buffer, MediaTime moment);

    const StreamPlan m_plan;
    SampleGate<ScreenSample> &m_session;
    XcbLink m_link;
    FrameBuffers m_buffers;
    FramePacer m_pacer;
    StreamPointer m_pointer;
    KeptOutWindows m_keptOut;
    std::unique_ptr<PixelReader> m_reader; ///< made when the connection is there
    xcb_damage_damage_t m_damage = 0;
    int m_damageNotice = -1;
    int m_monitorsNotice = -1;
    QRegion m_lit; ///< where there are monitors, in pixels of the picture
    bool m_isDamaged = false;
    bool m_areMonitorsOld = true;
    std::optional<MediaTime> m_needed; ///< since when a look is due
    QRegion m_changed;                 ///< since the last frame, in pixels of the picture; without the pointer
    std::uint64_t m_givenLook = 0;     ///< of the pointer in the last frame
    QRect m_givenPointer;
};

} // namespace tavrine
