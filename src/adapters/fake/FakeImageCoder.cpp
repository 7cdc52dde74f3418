#include "adapters/fake/FakeImageCoder.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace tavrine {
namespace {

constexpr auto mark = "fake picture ";

} // namespace

class FakeImageCoder::Source final : public JpegSource {
public:
    Source(FakeImageCoder &coder, QSize size, Way way) : m_coder(coder), m_imageSize(size), m_way(way) {}

    std::optional<QByteArray> encode(double compressionFactor) override {
        m_coder.m_tried.emplace_back(m_way, compressionFactor);
        const std::optional<qsizetype> size = m_coder.m_size(compressionFactor);
        if (!size)
            return std::nullopt;
        QByteArray data =
            mark + QByteArray::number(m_imageSize.width()) + ' ' + QByteArray::number(m_imageSize.height()) + '\n';
        return data.size() < *size ? data.leftJustified(*size, '.') : data;
    }

    bool isCertainlyLargerThan(qsizetype size, double compressionFactor) override {
        return m_coder.m_knowsSizeAhead && m_coder.m_size(compressionFactor).value_or(0) > size;
    }

private:
    FakeImageCoder &m_coder;
    QSize m_imageSize;
    Way m_way;
};

std::unique_ptr<JpegSource> FakeImageCoder::source(const QImage &image, Way way) {
    const bool fails = way == Way::bitmap ? m_failsBitmap : m_failsTiff;
    return fails || image.isNull() ? nullptr : std::make_unique<Source>(*this, image.size(), way);
}

std::unique_ptr<JpegSource> FakeImageCoder::bitmapRepresentation(const QImage &image) {
    return source(image, Way::bitmap);
}

std::unique_ptr<JpegSource> FakeImageCoder::tiffRepresentation(const QImage &image) {
    return source(image, Way::tiff);
}

std::optional<QImage> FakeImageCoder::load(const QString &path) {
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray line = file.readLine(100);
    const QList<QByteArray> words = line.trimmed().split(' ');
    if (!line.startsWith(mark) || words.size() != 4)
        return std::nullopt;
    QImage image(words[2].toInt(), words[3].toInt(), QImage::Format_RGB32);
    if (image.isNull())
        return std::nullopt;
    image.fill(Qt::black);
    return image;
}

std::optional<QImage> FakeImageCoder::thumbnail(const QString &path, int maxPixelSize) {
    std::optional<QImage> image = load(path);
    if (image && std::max(image->width(), image->height()) > maxPixelSize) {
        const QSize size = image->size().scaled(maxPixelSize, maxPixelSize, Qt::KeepAspectRatio);
        image = image->scaled(size.expandedTo(QSize(1, 1)));
    }
    return image;
}

} // namespace tavrine
