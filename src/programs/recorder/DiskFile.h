#pragma once

#include "programs/recorder/MovieStore.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace tavrine {

/// A movie's file on a disk, written by a thread of its own, so that a slow disk holds nobody. What it has is on the
/// disk a second later, whatever happens to the machine.
class DiskFile final : public MovieStore {
public:
    static constexpr std::chrono::milliseconds syncPeriod{1000};
    /// Bytes that wait for the disk, at most; whoever has more waits, too. Eight seconds of the best picture.
    static constexpr std::size_t mostWaiting = std::size_t(32) << 20;
    /// Bytes that wait for the disk within the kernel, so that a slow one shows that it gets on.
    static constexpr std::size_t mostUnsynced = std::size_t(2) << 20;

    /// `descriptor` stays its owner's. The file is empty. `onProgress` is called on the file's thread each time that
    /// something was written.
    explicit DiskFile(
        int descriptor, std::function<void()> onProgress = [] {});
    ~DiskFile() override; ///< writes what waits
    DiskFile(const DiskFile &) = delete;
    DiskFile &operator=(const DiskFile &) = delete;

    void append(std::string bytes) override;
    void overwrite(std::uint64_t offset, std::string bytes) override;
    void sync() override;
    [[nodiscard]] State settle() override;

    /// Of any thread: something could not be written since the last `settle`.
    [[nodiscard]] bool hasFailed() const { return m_hasFailed; }

private:
    struct Operation {
        enum class Kind { append, overwrite, sync } kind;
        std::uint64_t offset = 0;
        std::string bytes = {};
    };

    void add(Operation operation);
    void run();
    void carryOut(const Operation &operation);
    void appendNow(const std::string &bytes);
    /// 0 or errno's number.
    [[nodiscard]] int writeAt(std::uint64_t offset, const std::string &bytes);
    void fail(int error);
    void syncNow();

    const int m_descriptor;
    const std::function<void()> m_onProgress;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Operation> m_waiting;
    std::size_t m_waitingBytes = 0;
    bool m_isWorking = false;
    bool m_isEnding = false;
    std::atomic<bool> m_hasFailed = false;

    // The thread's, and of others while it does nothing.
    std::uint64_t m_length = 0;
    int m_error = 0;
    bool m_hasUnsynced = false;
    std::size_t m_unsyncedBytes = 0;
    std::chrono::steady_clock::time_point m_synced = std::chrono::steady_clock::now();
    std::thread m_thread;
};

} // namespace tavrine
