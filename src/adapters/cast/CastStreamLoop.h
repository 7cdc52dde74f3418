#pragma once

#include "adapters/cast/CastReader.h"
#include "adapters/cast/CastSource.h"
#include "adapters/stream/FrameBuffers.h"
#include "adapters/stream/FramePacer.h"
#include "adapters/stream/ThreadedScreenStream.h"

namespace tavrine {

/// A stream's work on its thread, over PipeWire. Compositors tell little or nothing of what has changed, and give
/// pictures when something has changed elsewhere: each is compared with the one before.
///
/// The compositor shows all windows, ours among them: nothing can be kept out.
class CastStreamLoop final : public StreamWork {
public:
    CastStreamLoop(std::unique_ptr<CastSource> source, const StreamPlan &plan,
                   const ScreenStreamConfiguration &configuration, ThreadedScreenStream::Session &session);

    [[nodiscard]] std::optional<QString> open() override;
    std::optional<QString> run() override;

private:
    [[nodiscard]] std::optional<QString> awaitPicture();
    [[nodiscard]] std::optional<QString> trouble();
    [[nodiscard]] bool hasArea();
    void look();
    [[nodiscard]] QRegion compare();
    void give(FrameBuffers::Buffer &buffer);
    void sleepUntil(std::optional<MediaTime> until);

    const StreamPlan m_plan;
    const ScreenStreamConfiguration m_configuration;
    ThreadedScreenStream::Session &m_session;
    std::unique_ptr<CastSource> m_source; ///< goes after the reader
    CastReader m_reader;
    std::function<std::optional<QRect>(QSize)> m_areaIn;
    QSize m_pictures;                    ///< once the first has come
    QRect m_area;                        ///< of them
    std::shared_ptr<FrameMemory> m_seen; ///< the area as it was when it was last looked at
    std::vector<std::uint32_t> m_line;
    FrameBuffers m_buffers;
    FramePacer m_pacer;
    QRegion m_changed;                 ///< since the last frame
    std::optional<MediaTime> m_needed; ///< since when a picture waits to be looked at
    bool m_hasSeen = false;
};

} // namespace tavrine
