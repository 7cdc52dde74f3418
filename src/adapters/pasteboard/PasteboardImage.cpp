#include "adapters/pasteboard/PasteboardImage.h"

#include <QBuffer>
#include <QImageReader>
#include <QImageWriter>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrine::pasteboardImage {
namespace {

constexpr qsizetype magicSize = 12; // as much as `formatOf` looks at

class Descriptor {
public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor() {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    [[nodiscard]] int get() const { return m_fd; }

private:
    int m_fd;
};

/// Appends up to `count` bytes. False on an error.
bool readInto(int fd, QByteArray &bytes, qsizetype count) {
    constexpr qsizetype step = qsizetype{1024} * 1024;
    const qsizetype end = bytes.size() + count;
    while (bytes.size() < end) {
        const qsizetype before = bytes.size();
        bytes.resize(before + std::min(step, end - before));
        ssize_t got = -1;
        do
            got = ::read(fd, bytes.data() + before, static_cast<size_t>(bytes.size() - before));
        while (got < 0 && errno == EINTR);
        bytes.resize(before + std::max<ssize_t>(got, 0));
        if (got <= 0)
            return got == 0;
    }
    return true;
}

std::optional<QByteArray> imageFile(const QByteArray &path, qsizetype maxBytes) {
    // O_NONBLOCK: to open a pipe that nobody writes to must not wait. O_NOCTTY: nor may a terminal become ours.
    const Descriptor file(::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    struct stat status {};
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size > maxBytes)
        return std::nullopt;
    QByteArray bytes;
    if (!readInto(file.get(), bytes, magicSize) || formatOf(bytes).isEmpty())
        return std::nullopt;
    // One byte more than allowed tells a file that grew, or that had no true size, from one that fits.
    if (!readInto(file.get(), bytes, maxBytes - bytes.size() + 1) || bytes.size() > maxBytes)
        return std::nullopt;
    bytes.squeeze();
    return bytes;
}

bool isUsable(QSize size, qint64 maxPixels) {
    return !size.isEmpty() && qint64{size.width()} * qint64{size.height()} <= maxPixels;
}

} // namespace

QByteArray formatOf(QByteArrayView bytes) {
    if (bytes.startsWith("\x89PNG\r\n\x1A\n"))
        return "png";
    if (bytes.startsWith("\xFF\xD8\xFF"))
        return "jpeg";
    if (bytes.startsWith(QByteArrayView("II*\0", 4)) || bytes.startsWith(QByteArrayView("MM\0*", 4)))
        return "tiff";
    if (bytes.startsWith("GIF87a") || bytes.startsWith("GIF89a"))
        return "gif";
    if (bytes.size() >= magicSize && bytes.startsWith("RIFF") && bytes.sliced(8).startsWith("WEBP"))
        return "webp";
    if (bytes.size() >= magicSize && bytes.startsWith("BM"))
        return "bmp";
    return {};
}

qint64 pixelCount(const QByteArray &bytes) {
    const QByteArray format = formatOf(bytes);
    if (format.isEmpty())
        return 0;
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    const QSize size = QImageReader(&buffer, format).size();
    return size.isEmpty() ? 0 : qint64{size.width()} * size.height();
}

bool hasUsableHeader(const QByteArray &bytes, qint64 maxPixels) {
    const qint64 count = pixelCount(bytes);
    return count > 0 && count <= maxPixels;
}

bool seemsWhole(const QByteArray &bytes) {
    // Of the formats only PNG is both common on clipboards and sure to end in a mark; programs may add some bytes.
    return formatOf(bytes) != "png" ||
           QByteArrayView(bytes).last(std::min<qsizetype>(bytes.size(), 64)).contains("IEND");
}

bool isWithoutLoss(const QByteArray &bytes) {
    const QByteArray format = formatOf(bytes);
    return format == "png" || format == "tiff" || format == "bmp";
}

std::optional<QImage> decode(const QByteArray &bytes, qint64 maxPixels) {
    const QByteArray format = formatOf(bytes);
    if (format.isEmpty())
        return std::nullopt;
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, format);
    reader.setAutoTransform(true);
    if (!isUsable(reader.size(), maxPixels))
        return std::nullopt;
    QImage image = reader.read();
    // A GIF has its own size beside that of its first frame, which is the one that the reader tells.
    return isUsable(image.size(), maxPixels) ? std::optional(std::move(image)) : std::nullopt;
}

void allowPixels(qint64 maxPixels) {
    constexpr qint64 bytesPerPixel = 4; // with sixteen bits for each channel there is room for half as many pixels
    const qint64 megabytes = maxPixels * bytesPerPixel / (1024 * 1024);
    QImageReader::setAllocationLimit(std::max(QImageReader::allocationLimit(), static_cast<int>(megabytes)));
}

std::optional<QByteArray> firstImageFile(const QList<QByteArray> &paths, qsizetype maxBytes) {
    for (const QByteArray &path : paths) {
        if (std::optional<QByteArray> bytes = imageFile(path, maxBytes))
            return bytes;
    }
    return std::nullopt;
}

QByteArray encode(const QImage &image, const QByteArray &format) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setQuality(88); // PNG: the packer's level 1: 300 ms for 700 on a full HD photo, 14 % more bytes
    if (!writer.write(image))
        return {};
    return bytes;
}

} // namespace tavrine::pasteboardImage
