#include "utilities/emoji/EmojiGlyphs.h"

#include "look/Text.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QGlyphRun>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <array>
#include <cmath>

namespace tavrine {
namespace {

constexpr char32_t textSelector = 0xFE0E;
constexpr char32_t emojiSelector = 0xFE0F;
constexpr char32_t firstPictograph = 0x1F000;

struct Range {
    char32_t first;
    char32_t last;
};
// Emoji_Presentation below the pictographs, from Unicode's emoji-data.txt 15.0.
constexpr auto presentedAsEmoji = std::to_array<Range>({
    {0x231A, 0x231B}, {0x23E9, 0x23EC}, {0x23F0, 0x23F0}, {0x23F3, 0x23F3}, {0x25FD, 0x25FE}, {0x2614, 0x2615},
    {0x2648, 0x2653}, {0x267F, 0x267F}, {0x2693, 0x2693}, {0x26A1, 0x26A1}, {0x26AA, 0x26AB}, {0x26BD, 0x26BE},
    {0x26C4, 0x26C5}, {0x26CE, 0x26CE}, {0x26D4, 0x26D4}, {0x26EA, 0x26EA}, {0x26F2, 0x26F3}, {0x26F5, 0x26F5},
    {0x26FA, 0x26FA}, {0x26FD, 0x26FD}, {0x2705, 0x2705}, {0x270A, 0x270B}, {0x2728, 0x2728}, {0x274C, 0x274C},
    {0x274E, 0x274E}, {0x2753, 0x2755}, {0x2757, 0x2757}, {0x2795, 0x2797}, {0x27B0, 0x27B0}, {0x27BF, 0x27BF},
    {0x2B1B, 0x2B1C}, {0x2B50, 0x2B50}, {0x2B55, 0x2B55},
});

// The colour fonts that desktops ship, and the monochrome ones that stand in for them.
QStringList emojiFamilies() {
    QStringList families;
    for (const char *name : {"Noto Color Emoji", "Twitter Color Emoji", "Twemoji", "JoyPixels", "OpenMoji Color",
                             "Apple Color Emoji", "Segoe UI Emoji", "Noto Emoji", "Symbola"}) {
        if (QFontDatabase::hasFamily(QLatin1String(name)))
            families.append(QLatin1String(name));
    }
    return families;
}

/// The one glyph of a sequence as the font's own picture, which costs a sixth of drawing it as text: a colour font
/// keeps compressed pictures, and text lays out, measures and draws, each of which unpacks the picture again. Null
/// where the sequence is no single coloured glyph.
QImage glyphPicture(const QString &emoji, const QFont &font, const QRawFont &raw) {
    QList<quint32> glyphs;
    QRawFont shaped = raw;
    if (emoji.toUcs4().size() == 1) {
        glyphs = raw.glyphIndexesForString(emoji);
    } else { // joined by the font's rules
        QTextLayout layout(emoji, font);
        layout.beginLayout();
        layout.createLine();
        layout.endLayout();
        const QList<QGlyphRun> runs = layout.glyphRuns();
        if (runs.size() != 1)
            return {};
        glyphs = runs.constFirst().glyphIndexes();
        shaped = runs.constFirst().rawFont();
    }
    if (glyphs.size() != 1 || glyphs.constFirst() == 0 || shaped.familyName() != raw.familyName())
        return {};
    QImage picture = shaped.alphaMapForGlyph(glyphs.constFirst());
    return picture.format() == QImage::Format_ARGB32_Premultiplied ? picture : QImage(); // else it is a mere shape
}

} // namespace

bool isEmojiPresentation(const QString &emoji) {
    const QList<uint> letters = emoji.toUcs4();
    if (letters.isEmpty() || letters.contains(uint(textSelector)))
        return false;
    const char32_t first = letters.front();
    return first >= firstPictograph || letters.contains(uint(emojiSelector)) ||
           std::ranges::any_of(presentedAsEmoji,
                               [first](Range range) { return first >= range.first && first <= range.last; });
}

EmojiGlyphs::EmojiGlyphs(int sidePoints)
    : m_side(sidePoints), m_textFont(look::fontFor(look::TextRole::body)), m_pictures(limitBytes) {
    m_emojiFont = m_textFont;
    m_emojiFont.setFamilies(emojiFamilies() + m_textFont.families());
}

QPixmap EmojiGlyphs::picture(const QString &emoji, const QColor &textColour, qreal scale) {
    // The colour and the scale change seldom; what was drawn for the former ones goes as the least recently used.
    const QString key = emoji + QChar(0) + QString::number(textColour.rgba(), 36) + QChar(0) + QString::number(scale);
    if (const QPixmap *kept = m_pictures.object(key))
        return *kept;
    const QPixmap picture = drawn(emoji, textColour, scale);
    const qsizetype bytes = qsizetype(picture.width()) * picture.height() * 4 + key.size() * qsizetype(sizeof(QChar));
    m_pictures.insert(key, new QPixmap(picture), bytes);
    return picture;
}

QPixmap EmojiGlyphs::drawn(const QString &emoji, const QColor &textColour, qreal scale) {
    QFont font = isEmojiPresentation(emoji) ? m_emojiFont : m_textFont;
    const QList<uint> letters = emoji.toUcs4();
    if (letters.isEmpty() || !QFontMetricsF(font).inFontUcs4(letters.front()))
        return {};
    const int side = int(std::ceil(m_side * scale));
    font.setPixelSize(std::max(1, int(side * 0.84))); // of which a colour glyph is a sixth wider
    QPixmap picture(side, side);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
    painter.translate(side / 2.0, side / 2.0);
    if (isEmojiPresentation(emoji)) {
        if (m_rawFont.pixelSize() != font.pixelSize())
            m_rawFont = QRawFont::fromFont(font);
        if (const QImage glyph = glyphPicture(emoji, font, m_rawFont); !glyph.isNull()) {
            const qreal fit = std::min({1.0, qreal(side) / glyph.width(), qreal(side) / glyph.height()});
            const QSizeF size = QSizeF(glyph.size()) * fit;
            // On whole pixels, or every edge would be a blur.
            painter.drawImage(QRectF(QPointF(std::floor(-size.width() / 2), std::floor(-size.height() / 2)), size),
                              glyph);
            painter.end();
            picture.setDevicePixelRatio(scale);
            return picture;
        }
    }
    const QFontMetricsF metrics(font);
    // What the glyph takes, not what its line does: signs sit in the middle whatever their font's ascent is.
    QRectF ink = metrics.tightBoundingRect(emoji);
    if (ink.isEmpty())
        ink = metrics.boundingRect(emoji);
    const qreal fit = std::min({1.0, side / std::max(1.0, ink.width()), side / std::max(1.0, ink.height())});
    painter.setFont(font);
    painter.setPen(textColour);
    painter.scale(fit, fit);
    painter.drawText(-ink.center(), emoji);
    painter.end();
    picture.setDevicePixelRatio(scale);
    return picture;
}

} // namespace tavrine
