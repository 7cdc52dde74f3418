#pragma once

#include <QImage>

#include <optional>

namespace tavrine::reading {

/// The picture as readers like it: 8 bit grey, and what is transparent white. Null when it has no pixels, or memory for
/// it is wanting.
[[nodiscard]] QImage greyOf(const QImage &image);

/// The grey picture with dark letters on light ground everywhere: regions whose ground is dark are inverted, each by
/// itself, so a dark terminal on a light desktop is read as well as either alone.
[[nodiscard]] QImage withDarkLetters(QImage grey);

/// How high the lines of a page are in pixels, from the tops of the tallest letters to the ends of the lowest: of the
/// middle one of them. None for a page without lines. `page` is dark on light.
[[nodiscard]] std::optional<int> lineHeightOf(const QImage &page);

/// The factor by which a page is enlarged before its text is read. Letters of 8 to 13 pixels lose most errors at twice
/// their size; larger ones gain nothing and cost time. Below 1 for a page that is larger than can be read at all.
[[nodiscard]] double readingScale(const QSize &size, std::optional<int> lineHeight);

/// All of it.
[[nodiscard]] QImage preparedPage(const QImage &image);

} // namespace tavrine::reading
