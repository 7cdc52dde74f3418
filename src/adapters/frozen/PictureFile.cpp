#include "adapters/frozen/PictureFile.h"

#include "base/Descriptor.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace tavrine {
namespace {

/// Takes one thing after another out of the file's bytes, as far as there are any.
class Bytes {
public:
    Bytes(const void *bytes, size_t length) : m_next(static_cast<const char *>(bytes)), m_left(length) {}

    template <class Value>
    [[nodiscard]] std::optional<Value> value() {
        if (m_left < sizeof(Value))
            return std::nullopt;
        Value value;
        std::memcpy(&value, take(sizeof value), sizeof value);
        return value;
    }

    [[nodiscard]] std::optional<PixelsToRead> pixels(QSize size) {
        const size_t bytes = sizeof(quint32) * static_cast<size_t>(size.width()) * static_cast<size_t>(size.height());
        if (m_left < bytes)
            return std::nullopt;
        // All that stands before them is a multiple of four bytes long.
        return PixelsToRead{reinterpret_cast<const quint32 *>(take(bytes)), size.width(), size.height()};
    }

private:
    const char *take(size_t bytes) {
        m_left -= bytes;
        return std::exchange(m_next, m_next + bytes);
    }

    const char *m_next;
    size_t m_left;
};

bool isSide(qint32 length) {
    return length > 0 && length <= PictureFile::longestSide;
}

} // namespace

std::unique_ptr<PictureFile> PictureFile::open(const std::string &path, QSize plane) {
    // A pipe or a device would be waited for.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat facts {};
    if (!file.isOpen() || ::fstat(file.number(), &facts) != 0 || !S_ISREG(facts.st_mode) || facts.st_size <= 0)
        return nullptr;
    const auto length = static_cast<size_t>(facts.st_size);
    void *const bytes = ::mmap(nullptr, length, PROT_READ, MAP_SHARED, file.number(), 0);
    if (bytes == MAP_FAILED)
        return nullptr;
    std::unique_ptr<PictureFile> picture(new PictureFile(bytes, length));
    return picture->parse(plane) ? std::move(picture) : nullptr;
}

PictureFile::~PictureFile() {
    ::munmap(m_bytes, m_length);
}

bool PictureFile::parse(QSize plane) {
    Bytes bytes(m_bytes, m_length);
    const auto head = bytes.value<PictureFileHead>();
    if (!head || head->mark != PictureFileHead::rightMark || QSize(head->width, head->height) != plane ||
        !isSide(head->width) || !isSide(head->height) || head->parts < 0 || head->parts > mostParts)
        return false;
    m_pointer = {head->pointerX, head->pointerY};
    std::vector<PictureFilePart> parts;
    for (int i = 0; i < head->parts; ++i) {
        const auto part = bytes.value<PictureFilePart>();
        if (!part || !isSide(part->width) || !isSide(part->height) || !isSide(part->pixelWidth) ||
            !isSide(part->pixelHeight) || part->x < 0 || part->y < 0 || part->x > plane.width() - part->width ||
            part->y > plane.height() - part->height)
            return false;
        parts.push_back(*part);
    }
    const auto pixels = bytes.pixels(plane);
    if (!pixels)
        return false;
    m_plane = *pixels;
    for (const PictureFilePart &part : parts) {
        const auto own = bytes.pixels({part.pixelWidth, part.pixelHeight});
        if (!own)
            return false;
        m_parts.push_back({{part.x, part.y, part.width, part.height}, *own});
    }
    return true;
}

PictureCut PictureFile::cut(const QRect &area) const {
    const auto found =
        std::ranges::find_if(m_parts, [&area](const Part &part) { return part.area.contains(area.topLeft()); });
    if (found == m_parts.end())
        return {m_plane, area};
    const double across = double(found->pixels.width) / found->area.width();
    const double down = double(found->pixels.height) / found->area.height();
    // Edges are rounded, not sizes: two areas beside one another have no pixel in common and leave none out.
    const QRect on = area.translated(-found->area.topLeft());
    const QPoint first(static_cast<int>(std::lround(on.x() * across)), static_cast<int>(std::lround(on.y() * down)));
    const QPoint end(static_cast<int>(std::lround((on.x() + on.width()) * across)),
                     static_cast<int>(std::lround((on.y() + on.height()) * down)));
    return {found->pixels, QRect(first, end - QPoint(1, 1)) & found->pixels.rect(), across};
}

} // namespace tavrine
