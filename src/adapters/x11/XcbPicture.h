#pragma once

#include <QImage>

#include <optional>

#include <xcb/xcb.h>

namespace tavrine {

/// How the pixels of a visual lie in memory, as far as pictures are put on it: true colour, 16 or 32 bits each.
class XcbPicture {
public:
    /// None when the server has no such visual or it is of a kind that trays do not use.
    [[nodiscard]] static std::optional<XcbPicture> forVisual(const xcb_setup_t &setup, const xcb_screen_t &screen,
                                                             xcb_visualid_t visual);

    [[nodiscard]] quint8 depth() const { return m_depth; }
    /// True when the visual has an alpha channel beside its colours.
    [[nodiscard]] bool hasAlpha() const { return m_alphaMask != 0; }

    /// Puts `image`, premultiplied, at the upper left corner of `drawable`.
    void put(xcb_connection_t *connection, xcb_drawable_t drawable, xcb_gcontext_t context, const QImage &image) const;

    /// The picture that a GetImage request in Z format answered. Null when it has not the size that was asked for.
    [[nodiscard]] QImage read(const quint8 *data, int length, QSize size) const;

private:
    quint32 m_redMask = 0;
    quint32 m_greenMask = 0;
    quint32 m_blueMask = 0;
    quint32 m_alphaMask = 0;
    quint8 m_depth = 0;
    quint8 m_bytesPerPixel = 0;
    int m_linePad = 4;
    bool m_isBigEndian = false;
};

} // namespace tavrine
