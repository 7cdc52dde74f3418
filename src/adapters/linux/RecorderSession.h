#pragma once

#include "base/Descriptor.h"
#include "ports/MovieWriter.h"

#include <atomic>
#include <chrono>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include <sys/types.h>

namespace tavrine {

/// One run of TavrineRecorder: what is told to it, what it holds, and how it ends. A thread of its own listens to it;
/// the other calls come from the writer, one at a time, and wait for nothing.
///
/// The thread holds the session, which so outlives its writer until the process is gone.
class RecorderSession : public std::enable_shared_from_this<RecorderSession> {
public:
    /// As many pictures as any stream hands out, and more: a stream with all of them out waits with the newest picture,
    /// where one that is refused would be lost.
    static constexpr std::size_t mostHeldFrames = 8;
    /// Of a process that was told to end, whatever it says meanwhile: what waits for the disk and the index of ten
    /// hours at 400 kB/s.
    static constexpr std::chrono::minutes longestEnding{3};

    /// `file` is the movie's at `path`.
    RecorderSession(const std::string &path, Descriptor file) : m_path(path), m_file(std::move(file)) {}

    /// 0, or errno's number when the program cannot be started; then it may be tried again.
    [[nodiscard]] int start(const QString &program, const std::string &firstMessage);

    /// False when it did not fit, or nobody hears.
    bool tell(const std::string &message);
    /// The same for a picture, whose frame is held until it was read. `memory` is its descriptor when the recorder does
    /// not have it, else -1.
    bool tell(const std::string &message, int memory, std::shared_ptr<const ScreenFrame> frame);
    [[nodiscard]] bool holdsAllFrames() const;
    /// There is room for more.
    [[nodiscard]] bool takesMore() const;

    /// Called when it ends though nobody told it to. Before `start`.
    void setOnEndedByItself(MovieWriter::Completion handler) { m_onEndedByItself = std::move(handler); }
    /// `lastMessage` is told as soon as it fits. A process that then says nothing for `patience` is killed.
    void finish(const std::string &lastMessage, std::chrono::milliseconds patience, MovieWriter::Completion completion);
    /// The process is ended and the file removed.
    void cancel();
    /// Nobody will tell it more; it ends with what it has. Nothing is called any more when this returns.
    void abandon(std::chrono::milliseconds patience);

    [[nodiscard]] MovieWriterStatus status() const { return m_status; }
    [[nodiscard]] std::optional<QString> error() const;
    [[nodiscard]] MovieWriterFailure failure() const { return m_failure; }
    /// Why it never began.
    void setError(const QString &error);
    /// If it is still the file that was made.
    void removeFile() const;

private:
    using Clock = std::chrono::steady_clock;

    [[nodiscard]] bool send(const std::string &message, int memory) const;
    void wake() const;
    void run();
    /// Until the process has ended, or has to; why, in words, or none for a movie that is whole.
    [[nodiscard]] std::optional<QString> listen();
    /// None while there is no news of its end; else as `listen`.
    [[nodiscard]] std::optional<std::optional<QString>> hear();
    /// Until there may be something to do. False when that is too late.
    [[nodiscard]] bool wait();
    /// With the lock held.
    void setDeadline(std::chrono::milliseconds patience);
    /// It lives: the deadline moves, if there is one.
    void noteLife();
    void letFrameGo();
    [[nodiscard]] bool isFileInPlace() const;
    void end(std::optional<QString> error);
    /// Calls whoever waits for the end.
    void tellEnd();

    const std::string m_path;
    const Descriptor m_file;
    Descriptor m_socket;
    Descriptor m_wake;
    pid_t m_pid = 0;
    std::atomic<MovieWriterStatus> m_status = MovieWriterStatus::unknown;
    std::atomic<MovieWriterFailure> m_failure = MovieWriterFailure::other;

    std::mutex m_calling;       ///< held while one of the writer's handlers is called; before the other
    mutable std::mutex m_mutex; // for what follows
    std::deque<std::shared_ptr<const ScreenFrame>> m_held;
    std::optional<QString> m_error;
    std::optional<std::string> m_lastMessage;
    std::chrono::milliseconds m_patience{};
    std::optional<Clock::time_point> m_deadline;
    Clock::time_point m_lastDeadline; ///< whatever it says
    MovieWriter::Completion m_completion;
    MovieWriter::Completion m_onEndedByItself;
    bool m_hasTaken = false; ///< a picture
};

} // namespace tavrine
