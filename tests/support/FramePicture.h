#pragma once

#include "ports/ScreenStream.h"

#include <QImage>

#include <sys/mman.h>

namespace tavrine::test {

/// What a frame shows, copied out of its memory as another process would see it.
inline QImage pictureOf(const ScreenFrame &frame) {
    const auto bytes = static_cast<size_t>(frame.bytesPerLine) * static_cast<size_t>(frame.size.height());
    void *const memory = ::mmap(nullptr, bytes, PROT_READ, MAP_SHARED, frame.memory, 0);
    if (memory == MAP_FAILED)
        return {};
    QImage picture = QImage(static_cast<const uchar *>(memory), frame.size.width(), frame.size.height(),
                            frame.bytesPerLine, QImage::Format_RGB32)
                         .copy();
    ::munmap(memory, bytes);
    return picture;
}

} // namespace tavrine::test
