#pragma once

#include "base/Date.h"

#include <QString>
#include <QUuid>

#include <optional>

namespace tavrine {

/// What is known of a text of which only the beginning is in memory.
struct CutText {
    qint64 wholeBytes = 0; ///< of the whole text, in UTF-8
    bool hasAt = false;    ///< the whole text has an "@" in it
    bool isLink = false;   ///< the whole text is a link
    bool operator==(const CutText &) const = default;
};

/// One entry of the clipboard history. Two items are equal when all their fields are.
///
/// A long text is in memory with its beginning only, wherever items come in numbers: `ClipboardDatabase::wholeText`
/// gives the rest. See `CutText.h` for where it is cut.
struct ClipboardItem {
    QUuid id;
    QString content; ///< the text of the clip; of an image or a recording, its caption
    Date date;
    bool isPinned = false;
    bool isSaved = false;
    std::optional<QString> imageFileName{}; ///< bare name of an image or movie file; absent on a text item
    std::optional<CutText> cut{};           ///< present when `content` is only the beginning of the text

    bool operator==(const ClipboardItem &) const = default;

    /// Neither pruning nor any clear command touches a protected item.
    [[nodiscard]] bool isProtected() const { return isPinned || isSaved; }
};

/// True when the file is a screen recording: its name ends in ".mp4" or ".mov".
[[nodiscard]] bool isRecordingFileName(const QString &fileName);

/// An entry without a caption but with a file reads as "Image", wherever it comes from: made here, read from a row or
/// decoded.
[[nodiscard]] QString contentOrImage(const QString &content, const std::optional<QString> &imageFileName);

} // namespace tavrine
