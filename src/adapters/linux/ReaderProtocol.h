#pragma once

#include "ports/CodeDetector.h"
#include "ports/Recognizer.h"

#include <QByteArray>

#include <optional>

namespace tavrine::readerProtocol {

/// What the program and TavrineReader tell each other: a picture on the reader's standard input, which is a file that
/// it can map, and one JSON object on its standard output. Either side checks what it gets.

inline constexpr quint32 magic = 0x31525654; // "TVR1"

struct Header {
    quint32 magic = readerProtocol::magic;
    quint32 width = 0;
    quint32 height = 0;
    quint32 bytesPerLine = 0;
    quint32 hasAlpha = 0; ///< 32 bits a pixel either way
    quint32 unused = 0;
};

/// The picture in one of the two formats that are told; null when memory is wanting.
[[nodiscard]] QImage transferable(const QImage &image);

/// The picture in these bytes, which it goes on using; null when they are no picture, or a piece of one.
[[nodiscard]] QImage pictureIn(const uchar *bytes, qsizetype size);

[[nodiscard]] QByteArray answerOf(const Recognizer::Result &result);
[[nodiscard]] QByteArray answerOf(const CodeDetector::Result &result);

/// None for anything that the reader could not have meant.
[[nodiscard]] std::optional<Recognizer::Result> textIn(const QByteArray &answer);
[[nodiscard]] std::optional<CodeDetector::Result> codesIn(const QByteArray &answer);

} // namespace tavrine::readerProtocol
