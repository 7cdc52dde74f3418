#include "adapters/frozen/PictureFile.h"

#include "base/Descriptor.h"

#include <cerrno>
#include <cstddef>

#include <fcntl.h>
#include <unistd.h>

namespace tavrine {
namespace {

bool readAll(int descriptor, std::byte *to, size_t left, off_t from) {
    while (left > 0) {
        const ssize_t count = ::pread(descriptor, to, left, from);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        to += count;
        from += count;
        left -= static_cast<size_t>(count);
    }
    return true;
}

} // namespace

std::optional<QPoint> readPictureFile(const std::string &path, PixelsToPaint into) {
    // A pipe or a device would be waited for.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    PictureFileHead head;
    if (!file.isOpen() || !readAll(file.number(), reinterpret_cast<std::byte *>(&head), sizeof head, 0))
        return std::nullopt;
    if (head.mark != PictureFileHead::rightMark || head.width != into.width || head.height != into.height)
        return std::nullopt;
    const size_t bytes = sizeof(quint32) * static_cast<size_t>(into.width) * static_cast<size_t>(into.height);
    if (!readAll(file.number(), reinterpret_cast<std::byte *>(into.data), bytes, sizeof head))
        return std::nullopt;
    return QPoint(head.pointerX, head.pointerY);
}

} // namespace tavrine
