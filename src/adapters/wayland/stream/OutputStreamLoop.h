#pragma once

#include "adapters/stream/FrameBuffers.h"
#include "adapters/stream/FramePacer.h"
#include "adapters/stream/ThreadedScreenStream.h"
#include "adapters/wayland/screen/ScreenCopy.h"
#include "adapters/wayland/screen/WaylandOutputs.h"

#include <map>

namespace tavrine {

/// A stream's work on its thread: an output of a compositor that has wlroots' screencopy, over a connection of its own.
///
/// It asks for a copy and sleeps until the compositor has one, which is when something has changed; the next is asked
/// for when the interval is over. Where the wanted area is whole points, the compositor copies it straight into a
/// frame's memory; else the whole output is copied, and turned and cut here.
///
/// The compositor shows all windows, ours among them: nothing can be kept out.
class OutputStreamLoop final : public StreamWork {
public:
    OutputStreamLoop(const StreamPlan &plan, const ScreenStreamConfiguration &configuration,
                     ThreadedScreenStream::Session &session);
    ~OutputStreamLoop() override;

    [[nodiscard]] std::optional<QString> open() override;
    std::optional<QString> run() override;

private:
    enum class Result { waiting, nothing, frame, again, failed };

    [[nodiscard]] std::optional<QString> findOutput();
    void ask();
    [[nodiscard]] Result advance(FrameBuffers::Buffer &buffer);
    [[nodiscard]] bool copyInto(FrameBuffers::Buffer &buffer);
    [[nodiscard]] Result take(FrameBuffers::Buffer &buffer);
    [[nodiscard]] QRegion changedIn(const CopiedPixels &copied) const;
    [[nodiscard]] bool isFirstRepeated(const FrameBuffers::Buffer &buffer) const;
    void give(FrameBuffers::Buffer &buffer);
    void sleepUntil(std::optional<MediaTime> until);

    const StreamPlan m_plan;
    const ScreenStreamConfiguration m_configuration;
    ThreadedScreenStream::Session &m_session;
    WaylandLink m_link;
    std::optional<WaylandOutputs> m_outputs;
    WaylandOutput m_output;
    QRect m_area; ///< of the output's pixels, as they are seen
    wl_shm *m_shm = nullptr;
    zwlr_screencopy_manager_v1 *m_manager = nullptr;
    FrameBuffers m_buffers;
    FramePacer m_pacer;
    std::optional<QRect> m_region; ///< the area in points, where it is copied straight
    std::unique_ptr<ScreenCopy> m_copy;
    FrameBuffers::Buffer *m_target = nullptr;           ///< of that copy
    std::map<int, std::unique_ptr<ShmBuffer>> m_shared; ///< by the number of the frame's buffer
    std::unique_ptr<ShmBuffer> m_whole;                 ///< a copy of the whole output
    QRegion m_changed;                                  ///< since the last frame, of the picture
    bool m_hasBegun = false;
    // The first frame and its memory, until it is known whether the second picture is another.
    std::shared_ptr<const ScreenFrame> m_first;
    std::shared_ptr<FrameMemory> m_firstMemory;
    int m_failures = 0;
};

} // namespace tavrine
