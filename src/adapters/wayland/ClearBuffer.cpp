#include "adapters/wayland/ClearBuffer.h"

#include "adapters/wayland/WaylandLink.h"

#include <sys/mman.h>
#include <unistd.h>

namespace tavrine {

ClearBuffer::ClearBuffer(WaylandLink &link) {
    auto *shm = link.bind<wl_shm>(wl_shm_interface, 1);
    make(shm, 1);
    if (shm)
        wl_shm_destroy(shm);
}

void ClearBuffer::make(wl_shm *shm, int side) {
    constexpr int bytesOfPixel = 4;
    if (!shm)
        return;
    const int bytes = side * side * bytesOfPixel;
    const int file = ::memfd_create("tavrine", MFD_CLOEXEC);
    if (file >= 0 && ::ftruncate(file, bytes) == 0) { // all bits 0: nothing is seen
        wl_shm_pool *pool = wl_shm_create_pool(shm, file, bytes);
        m_buffer = wl_shm_pool_create_buffer(pool, 0, side, side, side * bytesOfPixel, WL_SHM_FORMAT_ARGB8888);
        wl_shm_pool_destroy(pool);
    }
    if (file >= 0)
        ::close(file);
}

ClearBuffer::~ClearBuffer() {
    if (m_buffer)
        wl_buffer_destroy(m_buffer);
}

} // namespace tavrine
