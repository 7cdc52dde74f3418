#include "adapters/linux/TurboImageCoder.h"

#include "adapters/linux/ImageFormats.h"

#include <QFileInfo>
#include <QImageReader>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>

#include <turbojpeg.h>

namespace tavrine {
namespace {

constexpr int subsampling = TJSAMP_420;
constexpr int mcuRows = 16;          // rows of one row of blocks with this subsampling
constexpr int maxJpegEdge = 65'500;  // the format's own limit
constexpr int conversionRows = 256;  // even, so that rows of chroma are not cut
constexpr qsizetype stripSlack = 64; // the first block's prediction and the end differ between a strip and the whole

struct DestroyTurbo {
    void operator()(void *handle) const { tjDestroy(handle); }
};

/// The rows from `y` on as RGB32, with white under what is transparent.
QImage flatRows(const QImage &image, int y, int rows) {
    QImage view(image.constScanLine(y), image.width(), rows, image.bytesPerLine(), image.format());
    if (image.colorCount() > 0)
        view.setColorTable(image.colorTable());
    if (!view.hasAlphaChannel())
        return view.convertToFormat(QImage::Format_RGB32);
    QImage flat(view.size(), QImage::Format_RGB32);
    if (flat.isNull())
        return flat;
    flat.fill(Qt::white);
    QPainter(&flat).drawImage(0, 0, view);
    return flat;
}

struct FreeTurbo {
    void operator()(unsigned char *buffer) const { tjFree(buffer); }
};

constexpr int rgb32 = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? TJPF_BGRX : TJPF_XRGB;

/// A picture of which any rows can be encoded.
class TurboSource : public JpegSource {
public:
    explicit TurboSource(QSize size) : m_size(size), m_compressor(tjInitCompress()) {}

    std::optional<QByteArray> encode(double compressionFactor) override {
        return encodeRows(0, m_size.height(), compressionFactor);
    }

    bool isCertainlyLargerThan(qsizetype size, double compressionFactor) override {
        // A strip from the middle of the picture is coded, with the same tables, into the bits that the whole would
        // hold for it. A small strip settles most cases, a larger one most of the others.
        for (const int share : {16, 4}) {
            const int rows = m_size.height() / share / mcuRows * mcuRows;
            if (qint64{rows} * m_size.width() < size)
                continue; // too few pixels to prove anything, and the whole is soon encoded
            const int y = (m_size.height() - rows) / 2 / mcuRows * mcuRows;
            const std::optional<QByteArray> strip = encodeRows(y, rows, compressionFactor);
            if (strip && strip->size() > size + stripSlack)
                return true;
        }
        return false;
    }

protected:
    /// Encodes the rows into a buffer that the compressor makes; other than 0 is a failure.
    virtual int compress(int y, int rows, int quality, unsigned char **buffer, unsigned long *size) = 0;

    const QSize m_size;
    const std::unique_ptr<void, DestroyTurbo> m_compressor;

private:
    std::optional<QByteArray> encodeRows(int y, int rows, double compressionFactor) {
        const int quality = std::clamp(static_cast<int>(std::lround(compressionFactor * 100)), 1, 100);
        unsigned char *buffer = nullptr;
        unsigned long size = 0;
        const int result = m_compressor ? compress(y, rows, quality, &buffer, &size) : -1;
        const std::unique_ptr<unsigned char, FreeTurbo> owner(buffer);
        if (result != 0)
            return std::nullopt;
        return QByteArray(reinterpret_cast<const char *>(buffer), static_cast<qsizetype>(size));
    }
};

/// The picture as planes of luma and halved chroma. The conversion from RGB is done once, each encoding starts here.
class PlanesSource final : public TurboSource {
public:
    using TurboSource::TurboSource;

    bool prepare(const QImage &image) {
        if (!m_compressor)
            return false;
        for (int i = 0; i < 3; ++i) {
            m_strides[i] = tjPlaneWidth(i, m_size.width(), subsampling);
            m_planes[i].resize(qsizetype{m_strides[i]} * tjPlaneHeight(i, m_size.height(), subsampling));
        }
        for (int y = 0; y < m_size.height(); y += conversionRows) {
            const int rows = std::min(conversionRows, m_size.height() - y);
            const QImage flat = flatRows(image, y, rows);
            std::array<unsigned char *, 3> target = rowPointers(y);
            if (flat.isNull() || tjEncodeYUVPlanes(m_compressor.get(), flat.constBits(), m_size.width(),
                                                   static_cast<int>(flat.bytesPerLine()), rows, rgb32, target.data(),
                                                   m_strides.data(), subsampling, 0) != 0)
                return false;
        }
        return true;
    }

private:
    std::array<unsigned char *, 3> rowPointers(int y) {
        std::array<unsigned char *, 3> pointers{};
        for (int i = 0; i < 3; ++i)
            pointers[i] = m_planes[i].data() + qsizetype{m_strides[i]} * (i == 0 ? y : y / 2);
        return pointers;
    }

    int compress(int y, int rows, int quality, unsigned char **buffer, unsigned long *size) override {
        const std::array<unsigned char *, 3> pointers = rowPointers(y);
        std::array<const unsigned char *, 3> source{pointers[0], pointers[1], pointers[2]};
        return tjCompressFromYUVPlanes(m_compressor.get(), source.data(), m_size.width(), m_strides.data(), rows,
                                       subsampling, buffer, size, quality, 0);
    }

    std::array<std::vector<unsigned char>, 3> m_planes;
    std::array<int, 3> m_strides{};
};

/// A large picture as it is: planes beside it would take as much memory again as its program may need. Each encoding
/// converts it anew, but of a large picture most are settled by a strip.
class PixelsSource final : public TurboSource {
public:
    explicit PixelsSource(const QImage &image) : TurboSource(image.size()), m_image(image) {}

    static bool isFor(const QImage &image) {
        return image.format() == QImage::Format_RGB32 &&
               qint64{image.width()} * image.height() > TurboImageCoder::planesPixels;
    }

private:
    int compress(int y, int rows, int quality, unsigned char **buffer, unsigned long *size) override {
        return tjCompress2(m_compressor.get(), m_image.constScanLine(y), m_size.width(),
                           static_cast<int>(m_image.bytesPerLine()), rows, rgb32, buffer, size, subsampling, quality,
                           0);
    }

    QImage m_image;
};

qint64 pixelCount(QSize size) {
    return qint64{size.width()} * size.height();
}

bool isWithinLimits(const QImage &image) {
    const QSize size = image.size();
    return !image.isNull() && std::max(size.width(), size.height()) <= maxJpegEdge &&
           pixelCount(size) <= TurboImageCoder::maxPixels;
}

/// A reader of the file at `path` that has seen a picture of a size within the limits there, or none.
std::unique_ptr<QImageReader> readerOf(const QString &path) {
    if (!QFileInfo(path).isFile()) // a pipe would hold the reader up for ever
        return nullptr;
    prepareImageFormatOf(path);
    auto reader = std::make_unique<QImageReader>(path);
    reader->setDecideFormatFromContent(true);
    reader->setAutoTransform(true);
    const QSize size = reader->size();
    return size.isEmpty() || pixelCount(size) > TurboImageCoder::maxPixels ? nullptr : std::move(reader);
}

std::optional<QImage> read(QImageReader &reader) {
    QImage image = reader.read();
    return image.isNull() ? std::nullopt : std::optional(std::move(image));
}

} // namespace

TurboImageCoder::TurboImageCoder() {
    constexpr int neededMiB = static_cast<int>(maxPixels * 4 / 1'048'576) + 1;
    QImageReader::setAllocationLimit(std::max(QImageReader::allocationLimit(), neededMiB));
}

std::unique_ptr<JpegSource> TurboImageCoder::bitmapRepresentation(const QImage &image) {
    if (!isWithinLimits(image))
        return nullptr;
    if (PixelsSource::isFor(image))
        return std::make_unique<PixelsSource>(image);
    auto source = std::make_unique<PlanesSource>(image.size());
    return source->prepare(image) ? std::move(source) : nullptr;
}

std::unique_ptr<JpegSource> TurboImageCoder::tiffRepresentation(const QImage &image) {
    if (!isWithinLimits(image))
        return nullptr; // before it is copied
    return bitmapRepresentation(image.convertToFormat(QImage::Format_ARGB32));
}

std::optional<QImage> TurboImageCoder::thumbnail(const QString &path, int maxPixelSize) {
    const std::unique_ptr<QImageReader> reader = readerOf(path);
    if (!reader || maxPixelSize <= 0)
        return std::nullopt;
    const QSize size = reader->size();
    if (std::max(size.width(), size.height()) > maxPixelSize) {
        const QSize scaled = size.scaled(maxPixelSize, maxPixelSize, Qt::KeepAspectRatio);
        reader->setScaledSize(scaled.expandedTo(QSize(1, 1)));
    }
    return read(*reader);
}

std::optional<QImage> TurboImageCoder::load(const QString &path) {
    const std::unique_ptr<QImageReader> reader = readerOf(path);
    return reader ? read(*reader) : std::nullopt;
}

} // namespace tavrine
