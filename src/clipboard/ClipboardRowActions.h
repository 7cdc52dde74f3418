#pragma once

#include "clipboard/ClipboardItem.h"

#include <QImage>

#include <optional>

namespace tavrine {

class ClipboardManager;

/// What both clipboard panels do with a row. Each action ends in a new `history`, so `item` is taken by value.
namespace clipboardRow {

void togglePin(ClipboardManager &manager, ClipboardItem item);
void toggleSaved(ClipboardManager &manager, ClipboardItem item);

/// Removes the item with its file, at once and for good, also a protected one.
void remove(ClipboardManager &manager, const ClipboardItem &item);

/// The picture for a row that is being shown: from the cache, else made now and cached. None for an item without a
/// file, when the file is gone or unreadable, and for a recording that has none yet: it is asked for.
[[nodiscard]] std::optional<QImage> thumbnail(ClipboardManager &manager, const ClipboardItem &item);

} // namespace clipboardRow
} // namespace tavrine
