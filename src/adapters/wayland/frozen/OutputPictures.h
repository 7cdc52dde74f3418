#pragma once

#include "adapters/wayland/screen/ScreenCopy.h"
#include "adapters/wayland/screen/WaylandOutputs.h"

#include <vector>

namespace tavrine {

/// The pictures of all outputs at one moment, put together on one plane. For one freezing; goes before the link.
///
/// They come by wlroots' screencopy where the compositor has it, else out of KWin's service on the session bus.
class OutputPictures {
public:
    OutputPictures(WaylandLink &link, wl_shm *shm, const std::vector<WaylandOutput> &outputs,
                   const std::vector<QRect> &places);
    ~OutputPictures();
    OutputPictures(const OutputPictures &) = delete;
    OutputPictures &operator=(const OutputPictures &) = delete;

    /// Asks for all of them.
    void begin();
    /// Waits for them. Null when one of them did not come, or there is no memory.
    [[nodiscard]] std::shared_ptr<FrameMemory> finish(QSize plane);

private:
    struct Part {
        std::unique_ptr<ScreenCopy> copy;
        std::unique_ptr<ShmBuffer> buffer;
    };

    [[nodiscard]] std::shared_ptr<FrameMemory> finishByKWin(QSize plane) const;
    [[nodiscard]] bool copyAll();
    [[nodiscard]] bool advance(Part &part) const;
    [[nodiscard]] static CopiedPixels copiedBy(const Part &part, const WaylandOutput &output);

    WaylandLink &m_link;
    wl_shm *m_shm;
    const std::vector<WaylandOutput> &m_outputs;
    const std::vector<QRect> &m_places;
    zwlr_screencopy_manager_v1 *m_manager = nullptr;
    std::vector<Part> m_parts;
};

} // namespace tavrine
