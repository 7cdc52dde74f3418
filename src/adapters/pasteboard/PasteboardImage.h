#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QImage>
#include <QList>

#include <optional>

/// Pictures that come from outside, still encoded. Functions for any thread.
namespace tavrine::pasteboardImage {

/// The format that the first bytes announce, in the decoder's words; empty when it is none that we read. Only these
/// formats are handed to a decoder, so that no other code meets bytes from outside.
[[nodiscard]] QByteArray formatOf(QByteArrayView bytes);

/// How many pixels the beginning announces; none when it is no picture.
[[nodiscard]] qint64 pixelCount(const QByteArray &bytes);

/// True when the beginning reads as a picture that has a size and not more than `maxPixels` pixels.
[[nodiscard]] bool hasUsableHeader(const QByteArray &bytes, qint64 maxPixels);

/// False when the end is plainly missing, so that another form of the picture is worth having.
[[nodiscard]] bool seemsWhole(const QByteArray &bytes);

/// True for formats that, as they come over a clipboard, hold every pixel as it was.
[[nodiscard]] bool isWithoutLoss(const QByteArray &bytes);

/// The picture, upright. None when it cannot be decoded whole, has no size, or has more than `maxPixels` pixels: a few
/// kilobytes can announce a picture that fills all memory.
[[nodiscard]] std::optional<QImage> decode(const QByteArray &bytes, qint64 maxPixels);

/// Lets the decoders take what `maxPixels` needs, for the whole process.
void allowPixels(qint64 maxPixels);

/// The content of the first of `paths` that is a regular file, begins like a picture and has at most `maxBytes`. Never
/// waits for a pipe or a device; may wait for a network file system.
[[nodiscard]] std::optional<QByteArray> firstImageFile(const QList<QByteArray> &paths, qsizetype maxBytes);

/// The picture in the format, in the encoder's words; PNG is packed for speed. Empty when it cannot be written so.
[[nodiscard]] QByteArray encode(const QImage &image, const QByteArray &format);

} // namespace tavrine::pasteboardImage
