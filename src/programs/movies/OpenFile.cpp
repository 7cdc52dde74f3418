#include "programs/movies/OpenFile.h"

#include <cerrno>
#include <cstdio>
#include <utility>

#include <unistd.h>

extern "C" {
#include <libavutil/error.h>
#include <libavutil/mem.h>
}

namespace tavrine {
namespace {

constexpr int bufferSize = 1 << 16;

} // namespace

OpenFile::OpenFile(int descriptor, Use use, std::function<void()> isUsed)
    : m_descriptor(descriptor), m_isUsed(std::move(isUsed)) {
    auto *const buffer = static_cast<unsigned char *>(av_malloc(bufferSize));
    const bool writes = use == Use::writing;
    if (buffer)
        m_context = avio_alloc_context(buffer, bufferSize, writes ? 1 : 0, this, &OpenFile::read,
                                       writes ? &OpenFile::write : nullptr, &OpenFile::seek);
    if (!m_context)
        av_free(buffer);
}

OpenFile::~OpenFile() {
    if (m_context)
        av_freep(static_cast<void *>(&m_context->buffer));
    avio_context_free(&m_context);
}

int OpenFile::read(void *self, std::uint8_t *bytes, int count) {
    auto *const file = static_cast<OpenFile *>(self);
    file->m_isUsed();
    const ssize_t done = ::pread(file->m_descriptor, bytes, static_cast<std::size_t>(count), file->m_place);
    if (done < 0)
        return AVERROR(errno);
    file->m_place += done;
    return done == 0 ? AVERROR_EOF : static_cast<int>(done);
}

int OpenFile::write(void *self, std::uint8_t *bytes, int count) {
    auto *const file = static_cast<OpenFile *>(self);
    file->m_isUsed();
    int written = 0;
    while (written < count) {
        const ssize_t done =
            ::pwrite(file->m_descriptor, bytes + written, static_cast<std::size_t>(count - written), file->m_place);
        if (done < 0)
            return AVERROR(errno);
        written += static_cast<int>(done);
        file->m_place += done;
    }
    return written;
}

std::int64_t OpenFile::seek(void *self, std::int64_t offset, int whence) {
    auto *const file = static_cast<OpenFile *>(self);
    // The file's own place serves for its size alone, for which the C library asks by a call that takes names.
    const std::int64_t size = ::lseek(file->m_descriptor, 0, SEEK_END);
    if (size < 0)
        return AVERROR(errno);
    if ((whence & AVSEEK_SIZE) != 0)
        return size;
    const int from = whence & ~AVSEEK_FORCE;
    const std::int64_t begin = from == SEEK_CUR ? file->m_place : from == SEEK_END ? size : 0;
    std::int64_t place = 0;
    if (__builtin_add_overflow(begin, offset, &place) || place < 0)
        return AVERROR(EINVAL);
    file->m_place = place;
    return place;
}

} // namespace tavrine
