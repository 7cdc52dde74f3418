#include "adapters/x11/XcbPicture.h"

#include "adapters/x11/ChannelMask.h"

#include <QtEndian>

namespace tavrine {
namespace {

const xcb_visualtype_t *find(const xcb_screen_t &screen, xcb_visualid_t visual, quint8 &depth) {
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0; xcb_depth_next(&depths))
        for (auto each = xcb_depth_visuals_iterator(depths.data); each.rem > 0; xcb_visualtype_next(&each))
            if (each.data->visual_id == visual) {
                depth = depths.data->depth;
                return each.data;
            }
    return nullptr;
}

} // namespace

std::optional<XcbPicture> XcbPicture::forVisual(const xcb_setup_t &setup, const xcb_screen_t &screen,
                                                xcb_visualid_t visual) {
    XcbPicture picture;
    const xcb_visualtype_t *const type = find(screen, visual, picture.m_depth);
    if (!type || (type->_class != XCB_VISUAL_CLASS_TRUE_COLOR && type->_class != XCB_VISUAL_CLASS_DIRECT_COLOR))
        return std::nullopt;
    picture.m_redMask = type->red_mask;
    picture.m_greenMask = type->green_mask;
    picture.m_blueMask = type->blue_mask;
    constexpr quint8 depthWithAlpha = 32;
    if (picture.m_depth == depthWithAlpha)
        picture.m_alphaMask = ~(type->red_mask | type->green_mask | type->blue_mask);
    for (auto formats = xcb_setup_pixmap_formats_iterator(&setup); formats.rem > 0; xcb_format_next(&formats))
        if (formats.data->depth == picture.m_depth) {
            picture.m_bytesPerPixel = formats.data->bits_per_pixel / 8;
            picture.m_linePad = formats.data->scanline_pad / 8;
        }
    picture.m_isBigEndian = setup.image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST;
    if (picture.m_bytesPerPixel != 2 && picture.m_bytesPerPixel != 4)
        return std::nullopt;
    return picture;
}

void XcbPicture::put(xcb_connection_t *connection, xcb_drawable_t drawable, xcb_gcontext_t context,
                     const QImage &image) const {
    const QImage source = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const int lineBytes = (source.width() * m_bytesPerPixel + m_linePad - 1) / m_linePad * m_linePad;
    // Line by line, so that no request reaches the server's limit.
    QByteArray line(lineBytes, '\0');
    for (int y = 0; y < source.height(); ++y) {
        const auto *pixels = reinterpret_cast<const QRgb *>(source.constScanLine(y));
        for (int x = 0; x < source.width(); ++x) {
            const quint32 pixel = toMask(qRed(pixels[x]), m_redMask) | toMask(qGreen(pixels[x]), m_greenMask) |
                                  toMask(qBlue(pixels[x]), m_blueMask) | toMask(qAlpha(pixels[x]), m_alphaMask);
            char *const place = line.data() + qsizetype{x} * m_bytesPerPixel;
            if (m_bytesPerPixel == 4)
                m_isBigEndian ? qToBigEndian(pixel, place) : qToLittleEndian(pixel, place);
            else
                m_isBigEndian ? qToBigEndian(static_cast<quint16>(pixel), place)
                              : qToLittleEndian(static_cast<quint16>(pixel), place);
        }
        xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, context, static_cast<quint16>(source.width()), 1,
                      0, static_cast<qint16>(y), 0, m_depth, static_cast<quint32>(lineBytes),
                      reinterpret_cast<const quint8 *>(line.constData()));
    }
}

QImage XcbPicture::read(const quint8 *data, int length, QSize size) const {
    const int lineBytes = (size.width() * m_bytesPerPixel + m_linePad - 1) / m_linePad * m_linePad;
    if (size.isEmpty() || length < lineBytes * size.height())
        return {};
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < size.height(); ++y) {
        auto *pixels = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            const quint8 *const place = data + qsizetype{y} * lineBytes + qsizetype{x} * m_bytesPerPixel;
            const quint32 pixel =
                m_bytesPerPixel == 4
                    ? (m_isBigEndian ? qFromBigEndian<quint32>(place) : qFromLittleEndian<quint32>(place))
                    : (m_isBigEndian ? qFromBigEndian<quint16>(place) : qFromLittleEndian<quint16>(place));
            pixels[x] = qRgb(fromMask(pixel, m_redMask), fromMask(pixel, m_greenMask), fromMask(pixel, m_blueMask));
        }
    }
    return image;
}

} // namespace tavrine
