#pragma once

#include <QtGlobal>

#include <map>
#include <memory>
#include <string_view>
#include <vector>

namespace tavrine {

/// The desktop's plain font at one size, as pictures of single letters: enough for a size, a place and a colour value.
///
/// Owned by the overlay that paints with it; one thread. Reading the font takes some milliseconds, which is why an
/// overlay is shown before it asks for one.
class GlyphFont {
public:
    /// A letter: `coverage` has a byte for each pixel, its upper left corner `left` and `top` from the pen's place.
    struct Glyph {
        int left = 0;
        int top = 0; ///< upwards from the baseline
        int width = 0;
        int height = 0;
        int advance = 0;
        std::vector<quint8> coverage;
    };

    /// `sizePx` is the height of the font's square. Without a font on the system all letters are empty.
    explicit GlyphFont(int sizePx);
    ~GlyphFont();
    GlyphFont(const GlyphFont &) = delete;
    GlyphFont &operator=(const GlyphFont &) = delete;

    [[nodiscard]] const Glyph &glyph(char32_t letter) const;
    [[nodiscard]] int width(std::u32string_view text) const;
    [[nodiscard]] int sizePx() const { return m_sizePx; }
    /// How high a digit stands above the baseline.
    [[nodiscard]] int digitHeight() const { return glyph(U'0').top; }

private:
    struct Face;
    std::unique_ptr<Face> m_face;
    int m_sizePx;
    mutable std::map<char32_t, Glyph> m_glyphs; // a glyph is drawn when it is first asked for
};

} // namespace tavrine
