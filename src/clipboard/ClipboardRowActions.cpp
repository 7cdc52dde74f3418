#include "clipboard/ClipboardRowActions.h"

#include "clipboard/ClipboardDatabase.h"
#include "clipboard/ClipboardManager.h"

namespace tavrine::clipboardRow {

void togglePin(ClipboardManager &manager, ClipboardItem item) {
    item.isPinned = !item.isPinned;
    manager.database().save(item);
    manager.reloadHistory();
}

void toggleSaved(ClipboardManager &manager, ClipboardItem item) {
    item.isSaved = !item.isSaved;
    manager.database().save(item);
    manager.reloadHistory();
}

void remove(ClipboardManager &manager, const ClipboardItem &item) {
    const ClipboardItem removed = item; // the list that holds `item` may go with the reload
    if (removed.imageFileName)
        manager.thumbnailCache().removeObject(*removed.imageFileName);
    manager.removeImageFile(removed.imageFileName);
    manager.database().remove(removed.id);
    manager.reloadHistory();
}

std::optional<QImage> thumbnail(ClipboardManager &manager, const ClipboardItem &item) {
    if (!item.imageFileName)
        return std::nullopt;
    if (auto cached = manager.thumbnailCache().object(*item.imageFileName))
        return cached;
    if (isRecordingFileName(*item.imageFileName)) {
        manager.wantRecordingThumbnail(*item.imageFileName);
        return std::nullopt;
    }
    auto made = manager.makeThumbnail(*item.imageFileName);
    if (made)
        manager.cacheThumbnail(*made, *item.imageFileName);
    return made;
}

} // namespace tavrine::clipboardRow
