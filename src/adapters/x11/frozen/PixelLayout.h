#pragma once

#include <QtGlobal>

#include <optional>

#include <xcb/xcb.h>

namespace tavrine {

/// How the pixels of a true-colour visual lie in what the server sends: 16 or 32 bits each.
class PixelLayout {
public:
    /// None when the visual has no such pixels (a palette, a grey screen).
    [[nodiscard]] static std::optional<PixelLayout> forVisual(const xcb_setup_t &setup, const xcb_screen_t &screen,
                                                              xcb_visualid_t visual);

    [[nodiscard]] quint8 depth() const { return m_depth; }
    [[nodiscard]] int lineBytes(int width) const;
    /// True when a line is the same bytes as in `Pixels`, so that it need not be converted.
    [[nodiscard]] bool isPlain() const;

    void toPlain(const quint8 *from, quint32 *to, int width) const;
    void fromPlain(const quint32 *from, quint8 *to, int width) const;

private:
    quint32 m_redMask = 0;
    quint32 m_greenMask = 0;
    quint32 m_blueMask = 0;
    quint8 m_depth = 0;
    int m_bytesPerPixel = 0;
    int m_linePad = 4;
    bool m_isBigEndian = false;
};

} // namespace tavrine
