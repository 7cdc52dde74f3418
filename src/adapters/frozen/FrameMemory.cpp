#include "adapters/frozen/FrameMemory.h"

#include <fcntl.h>
#include <sys/mman.h>

namespace tavrine {

std::shared_ptr<FrameMemory> FrameMemory::make(QSize size) {
    if (size.isEmpty())
        return nullptr;
    std::shared_ptr<FrameMemory> memory(new FrameMemory);
    memory->m_bytes = static_cast<size_t>(size.width()) * static_cast<size_t>(size.height()) * sizeof(quint32);
    memory->m_descriptor = Descriptor(::memfd_create("tavrine-frame", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    const int descriptor = memory->m_descriptor.number();
    if (descriptor < 0 || ::ftruncate(descriptor, static_cast<off_t>(memory->m_bytes)) != 0 ||
        ::fcntl(descriptor, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) != 0)
        return nullptr;
    void *const place = ::mmap(nullptr, memory->m_bytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (place == MAP_FAILED)
        return nullptr;
    memory->m_pixels = {static_cast<quint32 *>(place), size.width(), size.height()};
    return memory;
}

FrameMemory::~FrameMemory() {
    if (m_pixels.data)
        ::munmap(m_pixels.data, m_bytes);
}

} // namespace tavrine
