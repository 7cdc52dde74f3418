#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

class QFile;

namespace tavrine::look {

/// Pictures of emojis that were drawn before, taken one by one out of a file. A colour font keeps pictures of
/// one large size: to unpack one and make it small costs fifty times what it costs to take it out of here, and a
/// program that finds all of them here never loads the font.
///
/// The file tells what its pictures were made of, and is not read once that has changed or when it is damaged in its
/// table; a picture that is damaged is none. Numbers are the machine's own: the file stays on the machine that made it.

/// What the pictures were made of.
struct GlyphSources {
    QString family;   ///< the font of emojis
    QString textFont; ///< the font of text signs such as arrows, as `QFont::toString` has it
    QString table;    ///< the file that lists the emojis
    int side = 0;     ///< pixels of a picture's edge
    bool operator==(const GlyphSources &) const = default;
};

/// A picture as it is stored: a square of the sources' side, as `QImage::Format_ARGB32_Premultiplied`.
struct DrawnGlyph {
    QString emoji;
    QImage picture;
    bool isSign = false; ///< has the text's colour: what the picture tells is where it is inked
};

/// The file's bytes; `fontFile` is where the font of emojis lies. Glyphs with pictures of another form are left out.
[[nodiscard]] QByteArray drawnGlyphsData(const GlyphSources &sources, const QString &fontFile,
                                         std::vector<DrawnGlyph> glyphs);

/// One such file, open. Only its table is in memory. Any thread, one at a time.
class DrawnGlyphs {
public:
    /// Null when there is none at `path` that was made of these sources as they are now.
    [[nodiscard]] static std::unique_ptr<DrawnGlyphs> open(const QString &path, const GlyphSources &sources);
    ~DrawnGlyphs();
    DrawnGlyphs(const DrawnGlyphs &) = delete;
    DrawnGlyphs &operator=(const DrawnGlyphs &) = delete;

    /// None when it is not among them.
    [[nodiscard]] std::optional<DrawnGlyph> glyph(const QString &emoji) const;
    [[nodiscard]] qsizetype count() const { return m_count; }

private:
    DrawnGlyphs();

    std::unique_ptr<QFile> m_file;
    QByteArray m_table; ///< the file's beginning, up to the pictures
    qsizetype m_count = 0;
    int m_side = 0;
};

} // namespace tavrine::look
