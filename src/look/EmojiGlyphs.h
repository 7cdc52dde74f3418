#pragma once

#include <QCache>
#include <QColor>
#include <QFont>
#include <QPixmap>
#include <QRawFont>
#include <QString>

#include <functional>
#include <utility>

namespace tavrine::look {

class DrawnGlyphs;

/// Pictures of emojis. Colour glyphs are slow to paint as text, so each is drawn once and kept; the least recently used
/// go when all together would take more than a bound. Belongs to a view; main thread only.
///
/// A sequence of several code points is one picture. An emoji is drawn from the desktop's colour font where there is
/// one, a text sign such as an arrow in the text's colour from the desktop's own font.
class EmojiGlyphs {
public:
    /// A thousand glyphs at one pixel a point, more than a person scrolls through to find one.
    static constexpr qsizetype limitBytes = 4 * 1024 * 1024;

    /// How much of the square a glyph takes; the rest is its margin.
    static constexpr qreal glyphPart = 0.84;

    /// `sidePoints` is the side of the square that a glyph is fitted into.
    explicit EmojiGlyphs(int sidePoints, qsizetype bytes = limitBytes);

    /// Where pictures of `side` pixels an edge were drawn before; asked whenever one is missing, and answers null where
    /// there are none.
    using DrawnBefore = std::function<const DrawnGlyphs *(int side)>;
    void setDrawnBefore(DrawnBefore drawnBefore) { m_drawnBefore = std::move(drawnBefore); }

    /// At `scale` device pixels a point. Null when no font on this desktop has the emoji.
    [[nodiscard]] QPixmap picture(const QString &emoji, const QColor &textColour, qreal scale);

    [[nodiscard]] qsizetype bytesInUse() const { return m_pictures.totalCost(); }
    [[nodiscard]] qsizetype count() const { return m_pictures.size(); }

private:
    [[nodiscard]] QPixmap drawn(const QString &sequence, const QColor &textColour, qreal scale);

    int m_side;
    DrawnBefore m_drawnBefore;
    QFont m_emojiFont;
    QFont m_textFont;
    QRawFont m_rawFont; ///< the first family of `m_emojiFont`, at the size that was drawn last
    QCache<QString, QPixmap> m_pictures;
};

} // namespace tavrine::look
