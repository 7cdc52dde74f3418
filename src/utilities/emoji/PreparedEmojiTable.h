#pragma once

#include "utilities/emoji/EmojiSearch.h"

#include <QByteArray>

#include <memory>

class QFile;

namespace tavrine {

/// The emoji table in a form that is used as it lies in its file, so that the first opening of the picker parses
/// nothing. It stands beside the JSON file that it was made of, which decides: a prepared table that is older than that
/// file, was made of one of another size, or is damaged anywhere, is not read.
///
/// Numbers are the machine's own, and so is the file: it is made and installed with the program.

/// The rows, with the texts in which they are searched.
struct EmojiRows {
    std::vector<EmojiItem> items;
    std::vector<EmojiSearchText> searchTexts; ///< of `items`, in their order
    std::shared_ptr<QFile> file;              ///< names and texts lie in it; null when they are in memory
};

/// The bytes of a prepared table; empty when a text in it is too long for one.
[[nodiscard]] QByteArray prepareEmojiTable(const QByteArray &json);

/// Beside "emoji_data.json": "emoji_data.table".
[[nodiscard]] QString preparedTablePath(const QString &jsonPath);

/// The rows of the table at `jsonPath`, from its prepared form where that holds. Empty when there is no such file.
[[nodiscard]] EmojiRows loadEmojiRows(const QString &jsonPath);

} // namespace tavrine
