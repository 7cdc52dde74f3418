#include "clipboard/CutText.h"

#include "clipboard/LinkRule.h"

#include <algorithm>

namespace tavrine {
namespace {

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
}

/// True when the character that begins at `rest` belongs to the one before it.
bool joinsOn(std::string_view rest) {
    const QString next = QString::fromUtf8(rest.data(), static_cast<qsizetype>(std::min<std::size_t>(rest.size(), 4)));
    const char32_t character = next.toStdU32String().front();
    const bool isHangulPart = character >= 0x1160 && character <= 0x11FF;
    return QChar::isMark(character) || isHangulPart || character == 0x200D;
}

/// At most `longest`, which is less than there is.
std::size_t placeOfCut(std::string_view utf8, std::size_t longest) {
    constexpr std::size_t longestCharacter = 64; // nobody writes more accents; what does so is cut within
    for (std::size_t place = longest; place > longest - longestCharacter; --place)
        if (!isContinuation(utf8[place]) && !joinsOn(utf8.substr(place)))
            return place;
    return longest;
}

bool isWholeLink(std::string_view utf8) {
    // A blank between two other characters rules it out for nearly every long text, without a copy of it.
    constexpr std::string_view blanks = " \t\n\v\f\r";
    const std::size_t first = utf8.find_first_not_of(blanks);
    const std::size_t blank = first == std::string_view::npos ? first : utf8.find_first_of(blanks, first);
    if (first == std::string_view::npos ||
        (blank != std::string_view::npos && utf8.find_first_not_of(blanks, blank) != std::string_view::npos))
        return false;
    ClipboardItem item;
    item.content = QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
    return isLink(item);
}

} // namespace

std::size_t longestWholeTextOf(std::size_t protectedCount) {
    std::size_t longest = longestWholeText;
    while (longest > leastWholeText && protectedCount * longest > protectedTextInAll)
        longest /= 2;
    return longest;
}

std::optional<Beginning> beginningOf(std::string_view utf8, std::size_t longestWhole) {
    if (utf8.size() <= longestWhole)
        return std::nullopt;
    Beginning beginning;
    beginning.text = QByteArray(utf8.data(), static_cast<qsizetype>(placeOfCut(utf8, longestWhole / 2)));
    beginning.cut.wholeBytes = static_cast<qint64>(utf8.size());
    beginning.cut.hasAt = utf8.find('@') != std::string_view::npos;
    beginning.cut.isLink = !beginning.cut.hasAt && isWholeLink(utf8);
    return beginning;
}

ClipboardItem shortened(ClipboardItem item, std::size_t longestWhole) {
    constexpr qsizetype mostBytesPerUnit = 3;
    const std::size_t longest = item.cut ? longestWhole / 2 : longestWhole;
    if (item.content.size() * mostBytesPerUnit <= static_cast<qsizetype>(longest))
        return item;
    const QByteArray bytes = item.content.toUtf8();
    const std::string_view utf8(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    if (item.cut && utf8.size() > longest) {
        item.content = QString::fromUtf8(bytes.first(static_cast<qsizetype>(placeOfCut(utf8, longest))));
    } else if (const auto beginning = item.cut ? std::nullopt : beginningOf(utf8, longestWhole)) {
        item.content = QString::fromUtf8(beginning->text);
        item.cut = beginning->cut;
        item.cut->isLink = item.cut->isLink && !item.imageFileName;
    }
    return item;
}

QByteArray columnOf(const Beginning &beginning) {
    QByteArray column = beginning.text;
    column += '\0';
    column += QByteArray::number(beginning.cut.wholeBytes);
    if (beginning.cut.hasAt)
        column += '@';
    if (beginning.cut.isLink)
        column += '/';
    return column;
}

std::optional<CutText> cutOfColumn(std::string_view behindNul) {
    const auto end = std::find_if(behindNul.begin(), behindNul.end(), [](char c) { return c < '0' || c > '9'; });
    CutText cut;
    cut.wholeBytes = QByteArray(behindNul.data(), end - behindNul.begin()).toLongLong();
    cut.hasAt = std::find(end, behindNul.end(), '@') != behindNul.end();
    cut.isLink = std::find(end, behindNul.end(), '/') != behindNul.end();
    return cut.wholeBytes > 0 ? std::optional(cut) : std::nullopt;
}

} // namespace tavrine
