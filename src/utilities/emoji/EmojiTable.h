#pragma once

#include "utilities/emoji/EmojiItem.h"

#include <QByteArray>

#include <vector>

namespace tavrine {

/// The largest file that is read as an emoji table. The one that is built has less than 1 MB.
inline constexpr qint64 emojiTableLimit = 16LL * 1024 * 1024;

/// Reads the JSON text of an emoji table: an array of objects whose values are all texts, in the order of display. An
/// object without emoji, name or category is left out. Empty when the text is anything else, as a whole: one value of
/// another type makes it no table.
[[nodiscard]] std::vector<EmojiItem> emojiTableFromJson(const QByteArray &json);

/// The table in the file at `path`. Empty when there is none, or when it is larger than the limit.
[[nodiscard]] std::vector<EmojiItem> loadEmojiTable(const QString &path);

} // namespace tavrine
