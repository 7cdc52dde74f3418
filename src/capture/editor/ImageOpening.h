#pragma once

#include <QImage>
#include <QList>
#include <QUrl>

#include <functional>
#include <optional>

class QMimeData;

namespace tavrine {

class FilePanels;
class ImageCoder;
class Pasteboard;

/// The ways by which pictures come into the editor. Each gives none for what is no picture, is broken, or has more
/// pixels than `maxImagePixels`. Main thread only.
namespace imageOpening {

inline constexpr auto panelTitle = "Select Image to Edit";

/// Asks for a picture file. `use` is called in a later turn, and only with a picture.
void choose(FilePanels &panels, ImageCoder &coder, const std::function<void(const QImage &)> &use);

[[nodiscard]] std::optional<QImage> fromFile(ImageCoder &coder, const QString &path);

[[nodiscard]] std::optional<QImage> fromPasteboard(const Pasteboard &pasteboard);

/// Whether what is dragged over a window may hold a picture, by its types alone.
[[nodiscard]] bool mayHoldImage(const QMimeData &data);

/// What was dropped: the first file when there is one, else the image data itself.
[[nodiscard]] std::optional<QImage> fromDrop(ImageCoder &coder, const QMimeData &data);

} // namespace imageOpening
} // namespace tavrine
