#pragma once

#include "upload/WorkerTask.h"

#include <QByteArray>

#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <thread>

namespace tavrine {

/// The serial queue of the upload engine: work at its moments, and the writing of workers' standard input. Writing
/// never holds anything up, least of all the watchdog of the worker that does not read.
///
/// All functions may be called on any thread. The destructor drops what is still to come.
class WatchdogQueue {
public:
    using Clock = std::chrono::steady_clock;
    using Work = std::function<void()>;
    using Token = std::uint64_t;

    explicit WatchdogQueue(const char *label);
    ~WatchdogQueue();
    WatchdogQueue(const WatchdogQueue &) = delete;
    WatchdogQueue &operator=(const WatchdogQueue &) = delete;

    Token asyncAt(Clock::time_point moment, Work work);
    /// Work that has begun is not stopped, and not waited for.
    void cancel(Token token);
    /// Writes all of `bytes` as the reader takes them, then closes `pipe`; closes it early when nobody reads any more.
    void write(Descriptor pipe, QByteArray bytes);

private:
    struct Item {
        Token token;
        Work work;
    };
    struct Writing {
        Descriptor pipe;
        QByteArray bytes;
        qsizetype written = 0;
    };

    void run();
    void wake();
    [[nodiscard]] int waitMilliseconds() const;
    static bool advance(Writing &writing);

    std::mutex m_lock; // guards the next four
    std::multimap<Clock::time_point, Item> m_items;
    std::list<Writing> m_newWritings;
    Token m_lastToken = 0;
    bool m_isEnding = false;

    std::list<Writing> m_writings; // the thread's own
    Descriptor m_wake;
    std::thread m_thread;
};

} // namespace tavrine
