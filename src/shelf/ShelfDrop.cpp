#include "shelf/ShelfDrop.h"

#include "base/Print.h"
#include "ports/Dragging.h"
#include "shelf/NotchViewModel.h"

namespace tavrine {
namespace {

/// The file that a text names. None for a text that is no address.
std::optional<QUrl> fileUrl(const std::optional<QString> &text) {
    const QUrl url = text ? QUrl(text->trimmed(), QUrl::StrictMode) : QUrl();
    return url.isLocalFile() ? std::optional(url) : std::nullopt;
}

} // namespace

bool performDragOperation(NotchViewModel *viewModel, const DroppedContent &content) {
    printLine(QStringLiteral("[NotchShelf] Performing drag operation!"));
    if (!viewModel) {
        printLine(QStringLiteral("[NotchShelf] Error: viewModel is nil"));
        return false;
    }
    printLine(QStringLiteral("[NotchShelf] Pasteboard types: [%1]").arg(content.types.join(QStringLiteral(", "))));
    if (!content.fileUrls.isEmpty()) {
        printLine(QStringLiteral("[NotchShelf] Found %1 file URLs").arg(content.fileUrls.size()));
        for (const QUrl &url : content.fileUrls)
            viewModel->addFile(url);
    } else if (const auto url = fileUrl(content.fileUrlString)) {
        viewModel->addFile(*url);
    } else if (!content.images.isEmpty()) {
        for (const QImage &image : content.images)
            viewModel->addImage(image);
    } else if (content.string && !content.string->isEmpty()) {
        viewModel->addText(*content.string);
    } else {
        return false;
    }
    return true;
}

} // namespace tavrine
