#include "adapters/frozen/GlyphFont.h"

#include <numeric>
#include <optional>
#include <string>

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H

namespace tavrine {
namespace {

struct FontFile {
    std::string path;
    int index = 0;
};

std::optional<FontFile> plainFont() {
    FcPattern *const wanted = FcNameParse(reinterpret_cast<const FcChar8 *>("sans-serif:medium"));
    if (!wanted)
        return std::nullopt;
    FcConfigSubstitute(nullptr, wanted, FcMatchPattern);
    FcDefaultSubstitute(wanted);
    FcResult result = FcResultNoMatch;
    FcPattern *const match = FcFontMatch(nullptr, wanted, &result);
    FcPatternDestroy(wanted);
    std::optional<FontFile> font;
    FcChar8 *path = nullptr;
    if (match && FcPatternGetString(match, FC_FILE, 0, &path) == FcResultMatch) {
        font = FontFile{reinterpret_cast<const char *>(path), 0};
        FcPatternGetInteger(match, FC_INDEX, 0, &font->index);
    }
    if (match)
        FcPatternDestroy(match);
    return font;
}

} // namespace

struct GlyphFont::Face {
    FT_Library library = nullptr;
    FT_Face face = nullptr;

    explicit Face(int sizePx) {
        const auto file = plainFont();
        if (!file || FT_Init_FreeType(&library) != 0)
            return;
        if (FT_New_Face(library, file->path.c_str(), file->index, &face) != 0)
            face = nullptr;
        else
            FT_Set_Pixel_Sizes(face, 0, static_cast<FT_UInt>(sizePx));
    }
    ~Face() {
        if (face)
            FT_Done_Face(face);
        if (library)
            FT_Done_FreeType(library);
    }
    Face(const Face &) = delete;
    Face &operator=(const Face &) = delete;
};

GlyphFont::GlyphFont(int sizePx) : m_face(std::make_unique<Face>(sizePx)), m_sizePx(sizePx) {}

GlyphFont::~GlyphFont() = default;

const GlyphFont::Glyph &GlyphFont::glyph(char32_t letter) const {
    const auto [place, isNew] = m_glyphs.try_emplace(letter);
    Glyph &glyph = place->second;
    FT_Face const face = m_face->face;
    if (!isNew || !face || FT_Load_Char(face, letter, FT_LOAD_RENDER | FT_LOAD_TARGET_LIGHT) != 0)
        return glyph;
    const FT_Bitmap &bitmap = face->glyph->bitmap;
    glyph.left = face->glyph->bitmap_left;
    glyph.top = face->glyph->bitmap_top;
    glyph.advance = static_cast<int>((face->glyph->advance.x + 32) >> 6);
    if (bitmap.pixel_mode != FT_PIXEL_MODE_GRAY)
        return glyph; // a font of dots: the letter's room stays empty
    glyph.width = static_cast<int>(bitmap.width);
    glyph.height = static_cast<int>(bitmap.rows);
    for (int y = 0; y < glyph.height; ++y)
        glyph.coverage.insert(glyph.coverage.end(), bitmap.buffer + y * bitmap.pitch,
                              bitmap.buffer + y * bitmap.pitch + glyph.width);
    return glyph;
}

int GlyphFont::width(std::u32string_view text) const {
    return std::accumulate(text.begin(), text.end(), 0,
                           [this](int sum, char32_t letter) { return sum + glyph(letter).advance; });
}

} // namespace tavrine
