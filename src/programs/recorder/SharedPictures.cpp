#include "programs/recorder/SharedPictures.h"

#include <sys/mman.h>
#include <unistd.h>

namespace tavrine {
namespace {

constexpr std::size_t bytesPerPixel = 4;
/// The largest picture that is encoded, and a half.
constexpr off_t mostBytes = off_t(3) << 29;

} // namespace

SharedPictures::~SharedPictures() {
    for (const auto &[buffer, memory] : m_memories)
        ::munmap(memory.address, memory.length);
}

void SharedPictures::unmap(std::uint32_t buffer) {
    const auto found = m_memories.find(buffer);
    if (found == m_memories.end())
        return;
    ::munmap(found->second.address, found->second.length);
    m_memories.erase(found);
}

bool SharedPictures::map(std::uint32_t buffer, const Descriptor &memory) {
    unmap(buffer);
    const off_t size = ::lseek(memory.number(), 0, SEEK_END); // a pipe or a socket has none
    if (size <= 0 || size > mostBytes)
        return false;
    const auto length = static_cast<std::size_t>(size);
    void *const address = ::mmap(nullptr, length, PROT_READ, MAP_SHARED, memory.number(), 0);
    if (address == MAP_FAILED)
        return false;
    m_memories[buffer] = {address, length};
    return true;
}

std::optional<ScreenPixels> SharedPictures::pixels(std::uint32_t buffer, int width, int height,
                                                   int bytesPerLine) const {
    const auto found = m_memories.find(buffer);
    const std::size_t line = static_cast<std::size_t>(width) * bytesPerPixel;
    const auto perLine = static_cast<std::size_t>(bytesPerLine);
    if (found == m_memories.end() || perLine < line ||
        perLine * (static_cast<std::size_t>(height) - 1) + line > found->second.length)
        return std::nullopt;
    return ScreenPixels{.bytes = static_cast<const std::uint8_t *>(found->second.address), .bytesPerLine = perLine};
}

} // namespace tavrine
