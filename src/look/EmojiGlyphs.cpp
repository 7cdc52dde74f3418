#include "look/EmojiGlyphs.h"

#include "look/DrawnGlyphs.h"
#include "look/EmojiText.h"
#include "look/Ligatures.h"
#include "look/Text.h"

#include <QFontMetricsF>
#include <QGlyphRun>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <cmath>
#include <optional>

namespace tavrine::look {
namespace {

/// The glyphs of a sequence in the font, joined to one where the font says so.
QList<quint32> joinedGlyphs(const QString &emoji, const QRawFont &font) {
    static QString family; // there is one font of emoji
    static std::optional<Ligatures> ligatures;
    if (!ligatures || family != font.familyName()) {
        family = font.familyName();
        ligatures.emplace(font.fontTable("GSUB"));
    }
    const QList<quint32> glyphs = font.glyphIndexesForString(emoji);
    const auto joined = ligatures->of(glyphs);
    return joined ? QList<quint32>{*joined} : glyphs;
}

/// The one glyph of a sequence as the font's own picture, which costs a sixth of drawing it as text: a colour font
/// keeps compressed pictures, and text lays out, measures and draws, each of which unpacks the picture again. Null
/// where the sequence is no single coloured glyph.
QImage glyphPicture(const QString &emoji, const QFont &font, const QRawFont &raw) {
    QList<quint32> glyphs = joinedGlyphs(emoji, raw);
    QRawFont shaped = raw;
    if (glyphs.size() != 1) { // joined by other rules
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

QImage inked(QImage sign, const QColor &colour) {
    QPainter painter(&sign);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(sign.rect(), colour);
    return sign;
}

} // namespace

EmojiGlyphs::EmojiGlyphs(int sidePoints, qsizetype bytes)
    : m_side(sidePoints), m_textFont(fontFor(TextRole::body)), m_pictures(bytes) {
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

QPixmap EmojiGlyphs::drawn(const QString &sequence, const QColor &textColour, qreal scale) {
    const int side = int(std::ceil(m_side * scale));
    if (const DrawnGlyphs *before = m_drawnBefore ? m_drawnBefore(side) : nullptr) {
        if (const auto glyph = before->glyph(sequence)) {
            QPixmap pixmap = QPixmap::fromImage(glyph->isSign ? inked(glyph->picture, textColour) : glyph->picture);
            pixmap.setDevicePixelRatio(scale);
            return pixmap;
        }
    }
    const bool isPicture = isEmojiPresentation(sequence);
    const QString emoji = isPicture ? withoutEmojiSelectors(sequence) : sequence;
    QFont font = isPicture ? m_emojiFont : m_textFont;
    const QList<uint> letters = emoji.toUcs4();
    if (letters.isEmpty() || !QFontMetricsF(font).inFontUcs4(letters.front()))
        return {};
    font.setPixelSize(std::max(1, int(side * glyphPart)));
    QPixmap picture(side, side);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
    painter.translate(side / 2.0, side / 2.0);
    if (isPicture) {
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

} // namespace tavrine::look
