#include "adapters/pasteboard/ImageFileReader.h"

#include <csignal>
#include <mutex>
#include <thread>

#include <pthread.h>

namespace tavrine {

struct ImageFileReader::State {
    struct Job {
        QList<QByteArray> paths;
        Done done;
    };

    explicit State(Read r) : readFiles(std::move(r)) {}

    [[nodiscard]] std::optional<Job> next() {
        const std::lock_guard lock(mutex);
        if (!waiting)
            --reads;
        return std::exchange(waiting, std::nullopt);
    }

    const Read readFiles;
    std::mutex mutex;
    int reads = 0;
    std::optional<Job> waiting;
};

ImageFileReader::ImageFileReader(Read read) : m_state(std::make_shared<State>(std::move(read))) {}

void ImageFileReader::read(QList<QByteArray> paths, Done done) {
    std::optional<State::Job> first = State::Job{std::move(paths), std::move(done)};
    {
        const std::lock_guard lock(m_state->mutex);
        if (m_state->reads == maxReads) {
            m_state->waiting = std::move(first);
            return;
        }
        ++m_state->reads;
    }
    std::thread([state = m_state, job = std::move(first)]() mutable {
        sigset_t all; // signals are the main thread's
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
        for (; job; job = state->next())
            job->done(state->readFiles(job->paths));
    }).detach();
}

} // namespace tavrine
