#pragma once

#include "base/SerialQueue.h"

#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

class Time;

/// Moves recordings to where they are kept. Within a file system that is a new name; between two it is a copy, which
/// may take minutes and is made on a queue of its own.
///
/// Main thread, owned by ClipboardManager. A copy has its name when it is whole and on the disk, and only then the
/// source goes. Dropping the mover gives up what is being copied: the source stays, and nothing else.
class RecordingMover {
public:
    /// The path there, or none when it could not be moved: then the source is where it was.
    using Then = std::function<void(const std::optional<QString> &target)>;

    explicit RecordingMover(Time &time) : m_time(time) {}
    ~RecordingMover();
    RecordingMover(const RecordingMover &) = delete;
    RecordingMover &operator=(const RecordingMover &) = delete;

    /// Into `folder`, under `name` as `recordingTarget` has it. `then` comes once, within the call where a new name is
    /// enough, else in a later turn, and not after the mover has gone. What fails is told on standard output.
    void move(const QString &source, const QString &folder, const std::optional<QString> &name, Then then);

private:
    void copy(const QString &source, const QString &target, Then then);
    void copied(const QString &source, const QString &target, int error, const Then &then);

    Time &m_time;
    QStringList m_underWay; ///< where copies will be
    std::shared_ptr<std::atomic<bool>> m_isGone = std::make_shared<std::atomic<bool>>(false);
    std::unique_ptr<SerialQueue> m_queue; ///< from the first copy on
};

} // namespace tavrine
