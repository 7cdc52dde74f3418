#pragma once

struct wl_buffer;
struct wl_shm;

namespace tavrine {

class WaylandLink;

/// A pixel or a few through which everything is seen, to be stretched over what is wanted. Goes before its connection;
/// one thread.
class ClearBuffer {
public:
    explicit ClearBuffer(WaylandLink &link);
    /// A square; of the compositor's shared memory, which may be null.
    ClearBuffer(wl_shm *shm, int side) { make(shm, side); }
    ~ClearBuffer();
    ClearBuffer(const ClearBuffer &) = delete;
    ClearBuffer &operator=(const ClearBuffer &) = delete;

    /// Null where there is no memory to share.
    [[nodiscard]] wl_buffer *get() const { return m_buffer; }

private:
    void make(wl_shm *shm, int side);

    wl_buffer *m_buffer = nullptr;
};

} // namespace tavrine
