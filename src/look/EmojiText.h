#pragma once

#include <QString>
#include <QStringList>

namespace tavrine::look {

/// Emoji within texts. Main thread only.

/// Whether the sequence is shown as a coloured picture rather than as a sign of the text: by its variation selector,
/// else by its first character's property Emoji_Presentation.
[[nodiscard]] bool isEmojiPresentation(const QString &emoji);

/// The sequence as emoji fonts join it. They have no glyph for the selector: with it the sequence would be shared out
/// among several fonts, and fall into pieces.
[[nodiscard]] QString withoutEmojiSelectors(const QString &emoji);

/// The colour fonts of this desktop, then the monochrome ones that stand in for them.
[[nodiscard]] const QStringList &emojiFamilies();

/// A line of text with its emoji taken out. Where the desktop has no font of emoji they all stay.
struct EmojiLine {
    /// Stands in `text` for each emoji: as wide as the font is high, and with no direction of its own, as an emoji. No
    /// simplified text holds it otherwise.
    static constexpr QChar place{0x2003}; // em space

    QString text;
    QStringList emojis; ///< in the order of the text

    /// `text`, or a beginning of it, with the emoji back in their places.
    [[nodiscard]] QString whole(const QString &beginning) const;
};
/// `simplified` holds no other white space than single blanks.
[[nodiscard]] EmojiLine emojiLine(const QString &simplified);

} // namespace tavrine::look
