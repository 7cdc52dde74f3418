#pragma once

struct wl_buffer;

namespace tavrine {

class WaylandLink;

/// One pixel through which everything is seen, to be stretched over what is wanted. Goes before its connection; one
/// thread.
class ClearBuffer {
public:
    explicit ClearBuffer(WaylandLink &link);
    ~ClearBuffer();
    ClearBuffer(const ClearBuffer &) = delete;
    ClearBuffer &operator=(const ClearBuffer &) = delete;

    /// Null where there is no memory to share.
    [[nodiscard]] wl_buffer *get() const { return m_buffer; }

private:
    wl_buffer *m_buffer = nullptr;
};

} // namespace tavrine
