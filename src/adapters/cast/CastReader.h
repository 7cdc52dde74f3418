#pragma once

#include "adapters/cast/CastLines.h"
#include "base/Descriptor.h"

#include <QSize>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>

struct pw_buffer;
struct pw_context;
struct pw_core;
struct pw_loop;
struct pw_stream;
struct spa_pod;

namespace tavrine {

/// The newest picture of a PipeWire node, in shared memory. One thread, on which all its work is done; nothing of it
/// waits. Needs a PipeWire server and whoever links its nodes, which every desktop that casts its screen runs.
class CastReader {
public:
    CastReader();
    ~CastReader();
    CastReader(const CastReader &) = delete;
    CastReader &operator=(const CastReader &) = delete;

    /// By `remote`, a connection to PipeWire, or by the session's own. Why there is nothing to read, in words; pictures
    /// come later.
    [[nodiscard]] std::optional<QString> open(std::uint32_t node, Descriptor remote = {});
    /// Readable when `dispatch` has something to do.
    [[nodiscard]] int descriptor() const;
    void dispatch();
    /// Why no picture comes any more, in words.
    [[nodiscard]] std::optional<QString> lost() const { return m_lost; }

    /// A picture has come that was not let go. It is replaced when a newer one comes.
    [[nodiscard]] bool hasPicture() const { return m_picture != nullptr; }
    /// Of a picture that is there.
    [[nodiscard]] QSize size() const { return m_size; }
    /// A line of it as blue, green, red and a byte that is always full: `count` pixels of it.
    void readLine(int y, int from, int count, std::uint32_t *into) const;
    /// The compositor may have its memory back.
    void letGo();
    /// Looks, as from the start, or away: compositors give their picture to who begins to look. For when none has come,
    /// as what is given before PipeWire runs on both sides is lost, and a still screen gives no other.
    void setLooking(bool isLooking);

private:
    friend struct CastEvents;
    void agreeOn(const spa_pod *format);
    void take();
    [[nodiscard]] std::optional<CastLines> linesOf(const pw_buffer &buffer) const;
    void copyBytes(std::int64_t from, std::size_t count, void *into) const;

    pw_loop *m_loop = nullptr;
    pw_context *m_context = nullptr;
    pw_core *m_core = nullptr;
    pw_stream *m_stream = nullptr;
    struct Hook;
    std::unique_ptr<Hook> m_hook;
    pw_buffer *m_picture = nullptr;
    CastLines m_lines;           ///< of that picture
    bool m_cannotShrink = false; ///< its memory cannot end before its lines do
    QSize m_size;
    bool m_isRedFirst = false;
    std::optional<QString> m_lost;
};

} // namespace tavrine
