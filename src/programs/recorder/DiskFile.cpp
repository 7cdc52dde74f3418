#include "programs/recorder/DiskFile.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <unistd.h>

namespace tavrine {
namespace {

/// Of one call.
constexpr std::size_t mostAtOnce = std::size_t(1) << 20;

} // namespace

DiskFile::DiskFile(int descriptor, std::function<void()> onProgress)
    : m_descriptor(descriptor), m_onProgress(std::move(onProgress)), m_thread([this] { run(); }) {}

DiskFile::~DiskFile() {
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void DiskFile::append(std::string bytes) {
    add({.kind = Operation::Kind::append, .bytes = std::move(bytes)});
}

void DiskFile::overwrite(std::uint64_t offset, std::string bytes) {
    add({.kind = Operation::Kind::overwrite, .offset = offset, .bytes = std::move(bytes)});
}

void DiskFile::sync() {
    add({.kind = Operation::Kind::sync});
}

void DiskFile::add(Operation operation) {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_waitingBytes < mostWaiting; });
    m_waitingBytes += operation.bytes.size();
    m_waiting.push_back(std::move(operation));
    m_changed.notify_all();
}

MovieStore::State DiskFile::settle() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_waiting.empty() && !m_isWorking; });
    m_hasFailed = false;
    return {m_length, std::exchange(m_error, 0)};
}

void DiskFile::run() {
    std::unique_lock lock(m_mutex);
    while (true) {
        const auto isDue = [this] { return !m_waiting.empty() || m_isEnding; };
        if (!m_hasUnsynced)
            m_changed.wait(lock, isDue);
        else if (!m_changed.wait_until(lock, m_synced + syncPeriod, isDue)) {
            m_isWorking = true;
            lock.unlock();
            syncNow();
            lock.lock();
            m_isWorking = false;
            m_changed.notify_all();
            continue;
        }
        if (m_waiting.empty())
            return;
        const Operation operation = std::move(m_waiting.front());
        m_waiting.pop_front();
        m_isWorking = true;
        lock.unlock();
        carryOut(operation);
        if (m_hasUnsynced && std::chrono::steady_clock::now() >= m_synced + syncPeriod)
            syncNow();
        lock.lock();
        m_waitingBytes -= operation.bytes.size();
        m_isWorking = false;
        m_changed.notify_all();
    }
}

void DiskFile::carryOut(const Operation &operation) {
    switch (operation.kind) {
    case Operation::Kind::append:
        appendNow(operation.bytes);
        break;
    case Operation::Kind::overwrite:
        if (operation.offset + operation.bytes.size() > m_length)
            break;
        if (const int error = writeAt(operation.offset, operation.bytes))
            fail(error);
        break;
    case Operation::Kind::sync:
        syncNow();
        break;
    }
}

void DiskFile::appendNow(const std::string &bytes) {
    if (m_error != 0)
        return;
    if (const int error = writeAt(m_length, bytes)) {
        // Half of a piece would be taken for a broken file.
        if (::ftruncate(m_descriptor, static_cast<off_t>(m_length)) != 0)
            fail(errno);
        fail(error);
        return;
    }
    m_length += bytes.size();
}

int DiskFile::writeAt(std::uint64_t offset, const std::string &bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t written = ::pwrite(m_descriptor, bytes.data() + done, std::min(bytes.size() - done, mostAtOnce),
                                         static_cast<off_t>(offset + done));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return written < 0 ? errno : EIO;
        done += static_cast<std::size_t>(written);
        m_hasUnsynced = true;
        m_unsyncedBytes += static_cast<std::size_t>(written);
        m_onProgress();
        if (m_unsyncedBytes >= mostUnsynced)
            syncNow();
    }
    return 0;
}

void DiskFile::fail(int error) {
    if (m_error == 0)
        m_error = error;
    m_hasFailed = true;
}

void DiskFile::syncNow() {
    if (::fdatasync(m_descriptor) != 0)
        fail(errno);
    m_onProgress();
    m_hasUnsynced = false;
    m_unsyncedBytes = 0;
    m_synced = std::chrono::steady_clock::now();
}

} // namespace tavrine
