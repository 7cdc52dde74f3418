#pragma once

#include <cstdint>
#include <functional>
#include <memory>

extern "C" {
#include <libavformat/avio.h>
}

namespace tavrine {

/// A file that is open already, as the library reads and writes it: nothing else is opened for it. It has a place of
/// its own in the file, so that two of them may be at one descriptor. One thread.
class OpenFile {
public:
    enum class Use { reading, writing };

    /// `isUsed` is called whenever something is read or written.
    OpenFile(int descriptor, Use use, std::function<void()> isUsed);
    ~OpenFile();
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;

    /// Null where memory is wanting.
    [[nodiscard]] AVIOContext *context() const { return m_context; }

private:
    static int read(void *self, std::uint8_t *bytes, int count);
    static int write(void *self, std::uint8_t *bytes, int count);
    static std::int64_t seek(void *self, std::int64_t offset, int whence);

    int m_descriptor;
    std::function<void()> m_isUsed;
    std::int64_t m_place = 0;
    AVIOContext *m_context = nullptr;
};

} // namespace tavrine
