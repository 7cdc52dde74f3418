#pragma once

#include <QImage>

namespace tavrine {

/// Whose word on a picture's scale counts, and how far.
enum class PictureSource {
    captureTool, ///< our own tool: whatever scale from 1 to 12, that of the screen and of its text together
    elsewhere,   ///< others write what their camera or scanner had: only a scale that desktops have, in quarters
};

/// The picture with the scale that its file tells by its dots per metre, 96 an inch being scale 1: its device pixel
/// ratio is that afterwards, and 1 when it tells none that counts. The dots stay, so that files and pasteboards that it
/// is written to tell the same.
[[nodiscard]] QImage withScaleOfItsFile(QImage picture, PictureSource source);

/// The same pixels without a scale, in what it is written to as well.
[[nodiscard]] QImage withoutScale(QImage picture);

} // namespace tavrine
