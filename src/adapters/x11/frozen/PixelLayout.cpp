#include "adapters/x11/frozen/PixelLayout.h"

#include "adapters/x11/ChannelMask.h"

#include <QSysInfo>
#include <QtEndian>

namespace tavrine {

std::optional<PixelLayout> PixelLayout::forVisual(const xcb_setup_t &setup, const xcb_screen_t &screen,
                                                  xcb_visualid_t visual) {
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0; xcb_depth_next(&depths))
        for (auto each = xcb_depth_visuals_iterator(depths.data); each.rem > 0; xcb_visualtype_next(&each)) {
            const xcb_visualtype_t &type = *each.data;
            if (type.visual_id != visual ||
                (type._class != XCB_VISUAL_CLASS_TRUE_COLOR && type._class != XCB_VISUAL_CLASS_DIRECT_COLOR))
                continue;
            PixelLayout layout;
            layout.m_redMask = type.red_mask;
            layout.m_greenMask = type.green_mask;
            layout.m_blueMask = type.blue_mask;
            layout.m_depth = depths.data->depth;
            layout.m_isBigEndian = setup.image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST;
            for (auto formats = xcb_setup_pixmap_formats_iterator(&setup); formats.rem > 0; xcb_format_next(&formats))
                if (formats.data->depth == layout.m_depth) {
                    layout.m_bytesPerPixel = formats.data->bits_per_pixel / 8;
                    layout.m_linePad = formats.data->scanline_pad / 8;
                }
            if (layout.m_bytesPerPixel == 2 || layout.m_bytesPerPixel == 4)
                return layout;
        }
    return std::nullopt;
}

int PixelLayout::lineBytes(int width) const {
    return (width * m_bytesPerPixel + m_linePad - 1) / m_linePad * m_linePad;
}

bool PixelLayout::isPlain() const {
    return m_bytesPerPixel == 4 && m_linePad <= 4 && m_redMask == 0xff0000 && m_greenMask == 0xff00 &&
           m_blueMask == 0xff && m_isBigEndian == (QSysInfo::ByteOrder == QSysInfo::BigEndian);
}

void PixelLayout::toPlain(const quint8 *from, quint32 *to, int width) const {
    for (int x = 0; x < width; ++x, from += m_bytesPerPixel) {
        const quint32 pixel = m_bytesPerPixel == 4
                                  ? (m_isBigEndian ? qFromBigEndian<quint32>(from) : qFromLittleEndian<quint32>(from))
                                  : (m_isBigEndian ? qFromBigEndian<quint16>(from) : qFromLittleEndian<quint16>(from));
        to[x] = static_cast<quint32>(fromMask(pixel, m_redMask)) << 16 |
                static_cast<quint32>(fromMask(pixel, m_greenMask)) << 8 |
                static_cast<quint32>(fromMask(pixel, m_blueMask));
    }
}

void PixelLayout::fromPlain(const quint32 *from, quint8 *to, int width) const {
    for (int x = 0; x < width; ++x, to += m_bytesPerPixel) {
        const quint32 pixel = toMask(static_cast<int>(from[x] >> 16 & 0xff), m_redMask) |
                              toMask(static_cast<int>(from[x] >> 8 & 0xff), m_greenMask) |
                              toMask(static_cast<int>(from[x] & 0xff), m_blueMask);
        if (m_bytesPerPixel == 4)
            m_isBigEndian ? qToBigEndian(pixel, to) : qToLittleEndian(pixel, to);
        else
            m_isBigEndian ? qToBigEndian(static_cast<quint16>(pixel), to)
                          : qToLittleEndian(static_cast<quint16>(pixel), to);
    }
}

} // namespace tavrine
