#pragma once

#include "adapters/frozen/FrameMemory.h"
#include "base/Waker.h"
#include "ports/ScreenStream.h"

#include <QRegion>

#include <atomic>
#include <vector>

namespace tavrine {

/// Many rectangles cost more to keep apart than to read what lies between them. What is read more than is told to have
/// changed would be seen before it is told, so both go through here.
[[nodiscard]] QRegion ofFewRects(const QRegion &region);

/// The buffers of a stream: which of them others hold, and what each is behind the screen.
///
/// Lives on the stream's thread. A frame may be let go on any thread, and later than the stream.
class FrameBuffers {
public:
    /// Who draws the pointer into a picture has to take it away again.
    struct Pointer {
        std::uint64_t look = 0; ///< which shape at which place; 0 for none
        QRect area;             ///< of the picture
    };
    struct Buffer {
        std::shared_ptr<FrameMemory> memory;
        QRegion pending; ///< not as on the screen
        Pointer pointer;
        int number = 0;
        std::uint32_t segment = 0; ///< the X server's name for the memory; 0 when it does not have it
    };

    /// At most `depth` are out at a time. `waker` is woken when one comes back that `free` has missed.
    FrameBuffers(QSize size, int depth, std::shared_ptr<Waker> waker);

    /// One that nobody holds; null when all are out. Its memory is made when it is first needed, and null when there is
    /// none.
    [[nodiscard]] Buffer *free();

    /// Every buffer is behind in `changed`.
    void change(const QRegion &changed);

    /// Gives the buffer away as the next frame, which differs from the one before in `changed`.
    [[nodiscard]] std::shared_ptr<const ScreenFrame> give(const Buffer &buffer, std::vector<QRect> changed);

private:
    struct Shared;
    struct Slot : Buffer {
        std::shared_ptr<std::atomic<bool>> isOut = std::make_shared<std::atomic<bool>>(false);
    };

    QSize m_size;
    std::vector<Slot> m_slots;
    std::shared_ptr<Shared> m_shared;
    std::uint64_t m_frames = 0;
};

} // namespace tavrine
