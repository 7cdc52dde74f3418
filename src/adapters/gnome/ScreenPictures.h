#pragma once

#include "adapters/gnome/GnomeScreenFile.h"
#include "adapters/gnome/GnomeShell.h"

#include <QImage>

#include <vector>

namespace tavrine {

/// What a screen shows, in its own pixels, and where it lies on the plane.
struct ScreenPicture {
    QRect area;
    QImage pixels; ///< RGB32
};

/// Reads what the shell has written. Empty when anything of it is not as the shell said, or cannot be a screen.
[[nodiscard]] std::vector<ScreenPicture> readScreenPictures(int descriptor, const std::vector<GnomePicture> &pictures);

/// Writes them as `PictureFileHead` says. Where all screens are equally fine, they are one part; else each is its own.
/// False without any, and when they cannot be written.
[[nodiscard]] bool writeScreenPictures(const std::vector<ScreenPicture> &screens, QPoint pointer, Shrinking shrinking,
                                       int descriptor);

} // namespace tavrine
