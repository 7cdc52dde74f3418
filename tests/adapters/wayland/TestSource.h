#pragma once

#include <QByteArray>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

namespace tavrine {

/// What a `TestSource` does when it is asked for a target.
struct SourceAnswer {
    enum class Manner { whole, refuse, silent };

    Manner manner = Manner::whole;
    QByteArray bytes = {};
    qsizetype pieceBytes = 0;           ///< written in pieces of that size; in one go when 0
    std::chrono::milliseconds pause{0}; ///< after each piece
    int silentAfterPieces = -1;         ///< then it hangs, and the pipe stays open
    int endAfterPieces = -1;            ///< then its connection and its pipes are gone, as when it is killed
    bool isEndless = false;             ///< the same again and again, for as long as somebody reads

    static SourceAnswer refused() { return {.manner = Manner::refuse}; }
    static SourceAnswer silent() { return {.manner = Manner::silent}; }
};

/// A program that owns the clipboard of a Wayland compositor and behaves as the test says, well or badly. It runs on a
/// thread and a connection of its own, with nothing but the data-control protocol.
class TestSource {
public:
    using Contents = std::vector<std::pair<QByteArray, SourceAnswer>>;

    TestSource();
    ~TestSource();
    TestSource(const TestSource &) = delete;
    TestSource &operator=(const TestSource &) = delete;

    /// Takes the clipboard; on return the compositor has it so.
    /// So many times in a row, of which the last one stands.
    void own(Contents contents, int times = 1);
    void ownText(const QByteArray &text) { own({{"text/plain;charset=utf-8", {.bytes = text}}}); }
    /// Gives the clipboard up, as some toolkits do before they take it again.
    void letGo();
    /// Empties the clipboard on purpose, whoever owns it.
    void clear();
    /// The connection goes, as when the program is killed.
    void end();

    [[nodiscard]] int requestCount(const QByteArray &target) const;
    [[nodiscard]] int requestCount() const;
    /// Nobody has taken the clipboard from it.
    [[nodiscard]] bool isOwner() const { return m_isOwner; }
    /// Bytes that somebody has taken off it.
    [[nodiscard]] qint64 writtenBytes() const { return m_written; }

private:
    struct Program;

    void runOnThread(std::function<void()> work);
    void loop();
    void ownOnce();
    void answer(const QByteArray &target, int descriptor);

    std::unique_ptr<Program> m_program; ///< the thread's
    bool m_isGone = false;              ///< it was killed in the middle of something
    mutable std::mutex m_mutex;
    std::map<QByteArray, int> m_requests;
    std::vector<std::packaged_task<void()>> m_work;
    std::atomic<bool> m_isOwner = false;
    std::atomic<qint64> m_written = 0;
    std::atomic<bool> m_isStopping = false;
    int m_wakeUp = -1;
    std::thread m_thread;
};

} // namespace tavrine
