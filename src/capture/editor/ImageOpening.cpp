#include "capture/editor/ImageOpening.h"

#include "capture/PictureScale.h"
#include "ports/FilePanels.h"
#include "ports/ImageCoder.h"
#include "ports/Pasteboard.h"

#include <QMimeData>

#include <algorithm>

namespace tavrine::imageOpening {
namespace {

/// Of a picture that is not too large to be edited, with its scale.
std::optional<QImage> asOpened(std::optional<QImage> image) {
    if (!image || image->isNull() || qint64{image->width()} * image->height() > maxImagePixels)
        return std::nullopt;
    return withScaleOfItsFile(*std::move(image), PictureSource::elsewhere);
}

std::optional<QString> firstLocalFile(const QMimeData &data) {
    const QList<QUrl> urls = data.urls();
    const auto file = std::find_if(urls.begin(), urls.end(), [](const QUrl &url) { return url.isLocalFile(); });
    return file == urls.end() ? std::nullopt : std::optional(file->toLocalFile());
}

} // namespace

void choose(FilePanels &panels, ImageCoder &coder, const std::function<void(const QImage &)> &use) {
    OpenPanel panel;
    panel.title = QLatin1String(panelTitle);
    panel.filter = QStringLiteral("Images (*)");
    panel.kind = QStringLiteral("image/"); // whatever the file is called: one without a suffix is a picture as well
    panels.runOpenPanel(panel, [&coder, use](const std::optional<QString> &path) {
        const std::optional<QImage> image = path ? fromFile(coder, *path) : std::nullopt;
        if (image)
            use(*image);
    });
}

std::optional<QImage> fromFile(ImageCoder &coder, const QString &path) {
    return asOpened(coder.load(path));
}

std::optional<QImage> fromPasteboard(const Pasteboard &pasteboard) {
    return asOpened(pasteboard.image());
}

bool mayHoldImage(const QMimeData &data) {
    return firstLocalFile(data).has_value() || data.hasImage();
}

std::optional<QImage> fromDrop(ImageCoder &coder, const QMimeData &data) {
    if (const std::optional<QString> path = firstLocalFile(data))
        return fromFile(coder, *path);
    if (!data.hasImage())
        return std::nullopt;
    return asOpened(qvariant_cast<QImage>(data.imageData()));
}

} // namespace tavrine::imageOpening
