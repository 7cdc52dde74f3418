#pragma once

#include <QByteArray>
#include <QList>

#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

/// Reads pictures in copied files on threads of its own, since on a file system that has gone a read never returns.
/// Owned by the pasteboard; may be called on any thread.
///
///  1. At most `maxReads` reads are under way. One that hangs does so for ever, and a few of them must not end the
///     reading of files that are there.
///  2. Of those that find no room only the newest waits; an older one is never read, since it has been replaced.
///  3. The threads are detached: nobody waits for a read, and it may end after this object.
class ImageFileReader {
public:
    using Read = std::function<std::optional<QByteArray>(const QList<QByteArray> &paths)>;
    using Done = std::function<void(std::optional<QByteArray>)>;
    static constexpr int maxReads = 4;

    /// `read` is called on the reading threads, also after the end of this object.
    explicit ImageFileReader(Read read);

    /// Returns at once. `done` is called on a reading thread, or never; it must not need anything that may have ended.
    void read(QList<QByteArray> paths, Done done);

private:
    struct State;
    std::shared_ptr<State> m_state;
};

} // namespace tavrine
