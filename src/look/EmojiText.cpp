#include "look/EmojiText.h"

#include <QFontDatabase>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <array>

namespace tavrine::look {
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

constexpr QChar keycap(0x20E3);

/// Whether the text may hold an emoji. Most texts hold none, and are spared the search for their letters' bounds.
bool mayHoldEmoji(const QString &text) {
    return std::ranges::any_of(text, [](QChar unit) {
        const char16_t code = unit.unicode();
        return (code >= 0xD83C && code <= 0xD83E) || code == emojiSelector || unit == keycap ||
               (code >= presentedAsEmoji.front().first && code <= presentedAsEmoji.back().last);
    });
}

/// Letters and digits stay what they are, whatever selector stands behind them, but for the keys.
bool isEmoji(const QString &letter) {
    return (letter.front() > QChar(0xA8) || letter.contains(keycap)) && isEmojiPresentation(letter);
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

QString withoutEmojiSelectors(const QString &emoji) {
    return QString(emoji).remove(QChar(emojiSelector));
}

const QStringList &emojiFamilies() {
    static const QStringList present = [] {
        QStringList families;
        for (const char *name : {"Noto Color Emoji", "Twitter Color Emoji", "Twemoji", "JoyPixels", "OpenMoji Color",
                                 "Apple Color Emoji", "Segoe UI Emoji", "Noto Emoji", "Symbola"}) {
            if (QFontDatabase::hasFamily(QLatin1String(name)))
                families.append(QLatin1String(name));
        }
        return families;
    }();
    return present;
}

QString EmojiLine::whole(const QString &beginning) const {
    if (emojis.isEmpty())
        return beginning;
    QString result;
    qsizetype next = 0;
    for (const QChar unit : beginning) {
        if (unit == place)
            result += emojis.value(next++);
        else
            result += unit;
    }
    return result;
}

EmojiLine emojiLine(const QString &simplified) {
    if (!mayHoldEmoji(simplified) || emojiFamilies().isEmpty())
        return {simplified, {}};
    EmojiLine line;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, simplified);
    for (qsizetype begin = 0; begin < simplified.size();) {
        const qsizetype end = finder.toNextBoundary();
        if (end <= begin)
            break;
        const QString letter = simplified.mid(begin, end - begin);
        if (isEmoji(letter)) {
            line.text += EmojiLine::place;
            line.emojis.append(letter);
        } else {
            line.text += letter;
        }
        begin = end;
    }
    return line;
}

} // namespace tavrine::look
