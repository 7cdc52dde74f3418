#include "adapters/linux/FileLooks.h"

#include <QFile>

#include <condition_variable>
#include <csignal>
#include <mutex>
#include <thread>

#include <pthread.h>
#include <sys/stat.h>

namespace tavrine {
namespace {

FileLooks::Kind kindAt(const QByteArray &path) {
    struct stat status {};
    if (::stat(path.constData(), &status) != 0)
        return FileLooks::Kind::unknown;
    if (S_ISDIR(status.st_mode))
        return FileLooks::Kind::folder;
    return S_ISREG(status.st_mode) && (status.st_mode & S_IXUSR) ? FileLooks::Kind::program : FileLooks::Kind::file;
}

} // namespace

struct FileLooks::State {
    std::mutex mutex;
    std::condition_variable answered;
    bool isAsking = false;
    Kind answer = Kind::unknown;
};

FileLooks::FileLooks() : m_state(std::make_shared<State>()) {}

FileLooks::Kind FileLooks::look(const QString &path) {
    using Clock = std::chrono::steady_clock;
    std::unique_lock lock(m_state->mutex);
    if (m_state->isAsking || m_left.count() <= 0)
        return Kind::unknown;
    const auto begun = Clock::now();
    m_state->isAsking = true;
    std::thread([state = m_state, name = QFile::encodeName(path)] {
        sigset_t all; // signals are the main thread's
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
        const Kind kind = kindAt(name);
        const std::lock_guard guard(state->mutex);
        state->answer = kind;
        state->isAsking = false;
        state->answered.notify_one();
    }).detach();
    const bool isThere = m_state->answered.wait_for(lock, m_left, [this] { return !m_state->isAsking; });
    m_left -= std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begun);
    return isThere ? m_state->answer : Kind::unknown;
}

} // namespace tavrine
