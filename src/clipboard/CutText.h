#pragma once

#include "clipboard/ClipboardItem.h"

#include <QByteArray>

#include <optional>
#include <string_view>

namespace tavrine {

/// The longest text, in bytes of UTF-8, that items in memory hold whole. A list shows a line of it, and a text of this
/// length is pasted without a look at the file.
inline constexpr std::size_t longestWholeText = 2048;
/// Of a longer one this much stays: several lines on any screen.
inline constexpr std::size_t longestBeginning = longestWholeText / 2;
/// A history has all protected rows, however many a person keeps. Where they are many, shorter texts stay whole, so
/// that all together take a million bytes or little more; the least is a line on any screen.
inline constexpr std::size_t protectedTextInAll = 1'000'000;
inline constexpr std::size_t leastWholeText = 256;
/// The longest text that each of so many protected items holds whole; of a longer one half as much stays.
[[nodiscard]] std::size_t longestWholeTextOf(std::size_t protectedCount);

struct Beginning {
    QByteArray text;
    CutText cut;
};

/// The beginning of a text and what has to be known of the whole. None when the text may stay whole. The cut falls
/// between characters, and never between a letter and its accent: what is found in a beginning is in the whole.
[[nodiscard]] std::optional<Beginning> beginningOf(std::string_view utf8, std::size_t longestWhole = longestWholeText);

/// The item as lists hold it; one that is cut already may become shorter.
[[nodiscard]] ClipboardItem shortened(ClipboardItem item, std::size_t longestWhole = longestWholeText);

// The form in which a beginning travels through a column of SQLite: its text, a NUL, and what is known of the whole.
// Every text of a row ends at its first NUL, so nothing else reads behind it.
[[nodiscard]] QByteArray columnOf(const Beginning &beginning);
[[nodiscard]] std::optional<CutText> cutOfColumn(std::string_view behindNul);

} // namespace tavrine
