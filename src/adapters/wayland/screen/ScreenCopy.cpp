#include "adapters/wayland/screen/ScreenCopy.h"

#include <wayland/wlr-screencopy-unstable-v1.h>

namespace tavrine {
namespace {

/// No screen is larger; a compositor that says so is not believed.
constexpr std::uint32_t longestSide = 65535;

} // namespace

std::unique_ptr<ShmBuffer> ShmBuffer::make(wl_shm *shm, std::uint32_t format, QSize size, int lineBytes) {
    constexpr int pixelBytes = sizeof(quint32);
    auto memory = FrameMemory::make({(lineBytes + pixelBytes - 1) / pixelBytes, size.height()});
    return memory ? over(shm, std::move(memory), format, size, lineBytes) : nullptr;
}

std::unique_ptr<ShmBuffer> ShmBuffer::over(wl_shm *shm, std::shared_ptr<FrameMemory> memory, std::uint32_t format,
                                           QSize size, int lineBytes) {
    if (memory->bytes() > INT32_MAX || size_t(lineBytes) * size_t(size.height()) > memory->bytes())
        return nullptr;
    std::unique_ptr<ShmBuffer> shared(new ShmBuffer);
    wl_shm_pool *const pool = wl_shm_create_pool(shm, memory->descriptor(), static_cast<std::int32_t>(memory->bytes()));
    shared->m_buffer = wl_shm_pool_create_buffer(pool, 0, size.width(), size.height(), lineBytes, format);
    wl_shm_pool_destroy(pool);
    shared->m_memory = std::move(memory);
    return shared;
}

ShmBuffer::~ShmBuffer() {
    if (m_buffer)
        wl_buffer_destroy(m_buffer);
}

struct ScreenCopyEvents {
    static ScreenCopy &of(void *self) { return *static_cast<ScreenCopy *>(self); }
    static constexpr zwlr_screencopy_frame_v1_listener listener{
        .buffer =
            [](void *self, zwlr_screencopy_frame_v1 *frame, std::uint32_t format, std::uint32_t width,
               std::uint32_t height, std::uint32_t stride) {
                if (width > longestSide || height > longestSide || stride > 8 * longestSide)
                    return;
                of(self).m_format = format;
                of(self).m_size = {static_cast<int>(width), static_cast<int>(height)};
                of(self).m_lineBytes = static_cast<int>(stride);
                // Later versions may offer other kinds of memory too, and say when that is all.
                if (zwlr_screencopy_frame_v1_get_version(frame) < ZWLR_SCREENCOPY_FRAME_V1_BUFFER_DONE_SINCE_VERSION)
                    of(self).m_state = ScreenCopy::State::described;
            },
        .flags = [](void *self, zwlr_screencopy_frame_v1 *,
                    std::uint32_t flags) { of(self).m_isUpsideDown = flags & ZWLR_SCREENCOPY_FRAME_V1_FLAGS_Y_INVERT; },
        .ready =
            [](void *self, zwlr_screencopy_frame_v1 *, std::uint32_t high, std::uint32_t low, std::uint32_t nano) {
                of(self).m_time = std::chrono::seconds(std::int64_t{high} << 32 | low) + std::chrono::nanoseconds(nano);
                of(self).m_state = ScreenCopy::State::ready;
            },
        .failed = [](void *self, zwlr_screencopy_frame_v1 *) { of(self).m_state = ScreenCopy::State::failed; },
        .damage =
            [](void *self, zwlr_screencopy_frame_v1 *, std::uint32_t x, std::uint32_t y, std::uint32_t width,
               std::uint32_t height) {
                if (x <= longestSide && y <= longestSide && width <= longestSide && height <= longestSide)
                    of(self).m_damage.emplace_back(static_cast<int>(x), static_cast<int>(y), static_cast<int>(width),
                                                   static_cast<int>(height));
            },
        .linux_dmabuf = [](void *, zwlr_screencopy_frame_v1 *, std::uint32_t, std::uint32_t, std::uint32_t) {},
        .buffer_done =
            [](void *self, zwlr_screencopy_frame_v1 *) {
                of(self).m_state = of(self).m_size.isEmpty() ? ScreenCopy::State::failed : ScreenCopy::State::described;
            },
    };
};

ScreenCopy::ScreenCopy(zwlr_screencopy_manager_v1 *manager, wl_output *output, bool showsPointer,
                       std::optional<QRect> region)
    : m_frame(region ? zwlr_screencopy_manager_v1_capture_output_region(manager, showsPointer, output, region->x(),
                                                                        region->y(), region->width(), region->height())
                     : zwlr_screencopy_manager_v1_capture_output(manager, showsPointer, output)) {
    zwlr_screencopy_frame_v1_add_listener(m_frame, &ScreenCopyEvents::listener, this);
}

ScreenCopy::~ScreenCopy() {
    zwlr_screencopy_frame_v1_destroy(m_frame);
}

void ScreenCopy::copy(wl_buffer *buffer, bool whenDamaged) {
    m_state = State::copying;
    if (whenDamaged)
        zwlr_screencopy_frame_v1_copy_with_damage(m_frame, buffer);
    else
        zwlr_screencopy_frame_v1_copy(m_frame, buffer);
}

} // namespace tavrine
