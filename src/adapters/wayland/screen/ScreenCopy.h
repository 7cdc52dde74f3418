#pragma once

#include "adapters/frozen/FrameMemory.h"
#include "adapters/wayland/WaylandLink.h"
#include "adapters/wayland/screen/CopiedPixels.h"

#include <memory>
#include <optional>
#include <vector>

struct zwlr_screencopy_manager_v1;
struct zwlr_screencopy_frame_v1;

namespace tavrine {

/// Memory that a compositor writes to or reads from, as one of its buffers. Goes before the link.
class ShmBuffer {
public:
    /// `size` and `lineBytes` in the compositor's terms. Null when there is no memory.
    [[nodiscard]] static std::unique_ptr<ShmBuffer> make(wl_shm *shm, std::uint32_t format, QSize size, int lineBytes);
    /// A buffer over memory that somebody else made, a line of `size` after the other.
    [[nodiscard]] static std::unique_ptr<ShmBuffer> over(wl_shm *shm, std::shared_ptr<FrameMemory> memory,
                                                         std::uint32_t format, QSize size, int lineBytes);
    ~ShmBuffer();
    ShmBuffer(const ShmBuffer &) = delete;
    ShmBuffer &operator=(const ShmBuffer &) = delete;

    [[nodiscard]] wl_buffer *buffer() const { return m_buffer; }
    [[nodiscard]] const std::shared_ptr<FrameMemory> &memory() const { return m_memory; }

private:
    ShmBuffer() = default;

    std::shared_ptr<FrameMemory> m_memory;
    wl_buffer *m_buffer = nullptr;
};

/// One picture of an output, asked for and copied. Made when it is wanted, gone when it was looked at; one thread, the
/// link's.
class ScreenCopy {
public:
    enum class State {
        asked,     ///< the compositor has not said yet what it needs
        described, ///< `copy` may be called
        copying,
        ready,
        failed
    };

    /// `region` is of the output, in points; none for all of it.
    ScreenCopy(zwlr_screencopy_manager_v1 *manager, wl_output *output, bool showsPointer,
               std::optional<QRect> region = std::nullopt);
    ~ScreenCopy();
    ScreenCopy(const ScreenCopy &) = delete;
    ScreenCopy &operator=(const ScreenCopy &) = delete;

    [[nodiscard]] State state() const { return m_state; }
    /// Once described: what the buffer must be.
    [[nodiscard]] std::uint32_t format() const { return m_format; }
    [[nodiscard]] QSize size() const { return m_size; }
    [[nodiscard]] int lineBytes() const { return m_lineBytes; }

    /// `whenDamaged`: not before something has changed since the last copy through the same manager.
    void copy(wl_buffer *buffer, bool whenDamaged = false);

    /// Once ready.
    [[nodiscard]] bool isUpsideDown() const { return m_isUpsideDown; }
    [[nodiscard]] const std::vector<QRect> &damage() const { return m_damage; } ///< as the compositor tells it
    [[nodiscard]] std::chrono::nanoseconds time() const { return m_time; }

private:
    friend struct ScreenCopyEvents;

    zwlr_screencopy_frame_v1 *m_frame;
    State m_state = State::asked;
    std::uint32_t m_format = 0;
    QSize m_size;
    int m_lineBytes = 0;
    bool m_isUpsideDown = false;
    std::vector<QRect> m_damage;
    std::chrono::nanoseconds m_time{};
};

} // namespace tavrine
