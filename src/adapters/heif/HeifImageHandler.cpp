#include "adapters/heif/HeifImageHandler.h"

#include <QIODevice>
#include <QImage>
#include <QVariant>

#include <algorithm>
#include <array>
#include <cstring>

#include <libheif/heif.h>

namespace tavrine {
namespace {

struct FreeImage {
    void operator()(heif_image *image) const { heif_image_release(image); }
};
struct FreeOptions {
    void operator()(heif_decoding_options *options) const { heif_decoding_options_free(options); }
};

bool isGood(const heif_error &error) {
    return error.code == heif_error_Ok;
}

} // namespace

void HeifImageHandler::FreeContext::operator()(heif_context *context) const {
    heif_context_free(context);
}

void HeifImageHandler::FreeHandle::operator()(heif_image_handle *handle) const {
    heif_image_handle_release(handle);
}

HeifImageHandler::HeifImageHandler() = default;
HeifImageHandler::~HeifImageHandler() = default;

bool HeifImageHandler::canRead(QIODevice *device) {
    // A box "ftyp" with the kinds of file that it is.
    static constexpr std::array brands{"heic", "heix", "heim", "heis", "hevc", "hevx", "mif1", "msf1"};
    const QByteArray head = device ? device->peek(12) : QByteArray();
    return head.size() == 12 && head.mid(4, 4) == "ftyp" &&
           std::any_of(brands.begin(), brands.end(), [&head](const char *brand) { return head.mid(8, 4) == brand; });
}

bool HeifImageHandler::canRead() const {
    return m_picture || (!m_isOpened && canRead(device()));
}

bool HeifImageHandler::open() {
    if (m_isOpened)
        return m_picture != nullptr;
    if (!canRead(device()))
        return false;
    m_isOpened = true;
    m_data = device()->read(largestFile + 1);
    if (m_data.size() > largestFile)
        return false;
    m_context.reset(heif_context_alloc());
    heif_image_handle *picture = nullptr;
    if (!m_context ||
        !isGood(heif_context_read_from_memory_without_copy(m_context.get(), m_data.constData(),
                                                           static_cast<size_t>(m_data.size()), nullptr)) ||
        !isGood(heif_context_get_primary_image_handle(m_context.get(), &picture)))
        return false;
    m_picture.reset(picture);
    return true;
}

QSize HeifImageHandler::size() const {
    return {heif_image_handle_get_width(m_picture.get()), heif_image_handle_get_height(m_picture.get())};
}

bool HeifImageHandler::read(QImage *image) {
    if (!open())
        return false;
    const bool hasAlpha = heif_image_handle_has_alpha_channel(m_picture.get()) != 0;
    QImage result;
    // Before anything is decoded: it holds to the limit that is set for all formats.
    if (!allocateImage(size(), hasAlpha ? QImage::Format_RGBA8888 : QImage::Format_RGBX8888, &result))
        return false;
    const std::unique_ptr<heif_decoding_options, FreeOptions> options(heif_decoding_options_alloc());
    options->convert_hdr_to_8bit = 1;
    heif_image *decoded = nullptr;
    if (!isGood(heif_decode_image(m_picture.get(), &decoded, heif_colorspace_RGB, heif_chroma_interleaved_RGBA,
                                  options.get())))
        return false;
    const std::unique_ptr<heif_image, FreeImage> owner(decoded);
    int stride = 0;
    const uint8_t *rows = heif_image_get_plane_readonly(decoded, heif_channel_interleaved, &stride);
    const int width = heif_image_get_width(decoded, heif_channel_interleaved);
    const int height = heif_image_get_height(decoded, heif_channel_interleaved);
    // What the file says of itself and what is in it may differ.
    if (!rows || width != result.width() || height != result.height() || stride < width * 4)
        return false;
    for (int y = 0; y < height; ++y)
        std::memcpy(result.scanLine(y), rows + qsizetype{stride} * y, static_cast<size_t>(width) * 4);
    *image = std::move(result);
    return true;
}

QVariant HeifImageHandler::option(ImageOption option) const {
    if (option != Size)
        return {};
    // Asked before reading, by a const operation; what is opened for it is what `read` decodes.
    auto *self = const_cast<HeifImageHandler *>(this);
    return self->open() ? QVariant(size()) : QVariant();
}

bool HeifImageHandler::supportsOption(ImageOption option) const {
    return option == Size;
}

} // namespace tavrine
