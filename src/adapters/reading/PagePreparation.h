#pragma once

#include <QImage>

namespace tavrine::reading {

/// The picture as readers like it: 8 bit grey, and what is transparent white. Null when it has no pixels, or memory for
/// it is wanting.
[[nodiscard]] QImage greyOf(const QImage &image);

/// The grey picture with dark letters on light ground everywhere: regions whose ground is dark are inverted, each by
/// itself, so a dark terminal on a light desktop is read as well as either alone.
[[nodiscard]] QImage withDarkLetters(QImage grey);

/// The factor by which a picture of a screen is enlarged before its text is read. Letters of 8 to 13 pixels lose most
/// errors at twice their size; a large picture comes from a dense screen, and gains nothing. Below 1 for a picture that
/// is larger than can be read at all.
[[nodiscard]] double readingScale(const QSize &size);

/// All of it.
[[nodiscard]] QImage preparedPage(const QImage &image);

} // namespace tavrine::reading
