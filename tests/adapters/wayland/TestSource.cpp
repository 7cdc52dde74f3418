#include "adapters/wayland/TestSource.h"

#include "adapters/wayland/WaylandLink.h"

#include <algorithm>
#include <csignal>
#include <memory>

#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>
#include <wayland/wlr-data-control-unstable-v1.h>

namespace tavrine {

struct TestSource::Program {
    WaylandLink link;
    zwlr_data_control_manager_v1 *manager =
        link.bind<zwlr_data_control_manager_v1>(zwlr_data_control_manager_v1_interface, 2);
    zwlr_data_control_device_v1 *device =
        zwlr_data_control_manager_v1_get_data_device(manager, link.bind<wl_seat>(wl_seat_interface, 1));
    zwlr_data_control_source_v1 *source = nullptr;
    Contents contents;
    std::vector<int> kept; ///< pipes of those who are told nothing

    Program() {
        static constexpr zwlr_data_control_device_v1_listener nothing{
            .data_offer = [](void *, zwlr_data_control_device_v1 *, zwlr_data_control_offer_v1 *) {},
            .selection =
                [](void *, zwlr_data_control_device_v1 *, zwlr_data_control_offer_v1 *offer) {
                    if (offer)
                        zwlr_data_control_offer_v1_destroy(offer);
                },
            .finished = [](void *, zwlr_data_control_device_v1 *) {},
            .primary_selection =
                [](void *, zwlr_data_control_device_v1 *, zwlr_data_control_offer_v1 *offer) {
                    if (offer)
                        zwlr_data_control_offer_v1_destroy(offer);
                },
        };
        zwlr_data_control_device_v1_add_listener(device, &nothing, nullptr);
    }
    ~Program() {
        for (const int pipe : kept)
            ::close(pipe);
    }
};

TestSource::TestSource() : m_wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    m_thread = std::thread([this] { loop(); });
    runOnThread([this] { m_program = std::make_unique<Program>(); });
}

TestSource::~TestSource() {
    m_isStopping = true;
    ::eventfd_write(m_wakeUp, 1);
    m_thread.join();
    ::close(m_wakeUp);
}

void TestSource::runOnThread(std::function<void()> work) {
    std::packaged_task<void()> task(std::move(work));
    std::future<void> done = task.get_future();
    {
        const std::lock_guard lock(m_mutex);
        m_work.push_back(std::move(task));
    }
    ::eventfd_write(m_wakeUp, 1);
    done.wait();
}

void TestSource::loop() {
    sigset_t all; // a write to a pipe that nobody reads must fail, not end the test
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
    while (!m_isStopping) {
        std::vector<std::packaged_task<void()>> work;
        {
            const std::lock_guard lock(m_mutex);
            eventfd_t count = 0;
            ::eventfd_read(m_wakeUp, &count);
            work.swap(m_work);
        }
        for (auto &task : work)
            task();
        if (std::exchange(m_isGone, false)) {
            m_program.reset();
            m_isOwner = false;
        }
        if (m_program && m_program->link.dispatch(std::chrono::milliseconds(1000), m_wakeUp))
            m_program->link.flush();
        else
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    m_program.reset();
}

void TestSource::own(Contents contents, int times) {
    runOnThread([&] {
        if (!m_program)
            m_program = std::make_unique<Program>();
        m_program->contents = std::move(contents);
        for (int i = 0; i < times; ++i)
            ownOnce();
        static_cast<void>(m_program->link.finish(std::chrono::seconds(20)));
    });
}

void TestSource::ownOnce() {
    zwlr_data_control_source_v1 *const before = m_program->source;
    m_program->source = zwlr_data_control_manager_v1_create_data_source(m_program->manager);
    static constexpr zwlr_data_control_source_v1_listener listener{
        .send = [](void *self, zwlr_data_control_source_v1 *, const char *target,
                   int pipe) { static_cast<TestSource *>(self)->answer(target, pipe); },
        .cancelled =
            [](void *self, zwlr_data_control_source_v1 *source) {
                auto &test = *static_cast<TestSource *>(self);
                if (test.m_program->source == source)
                    test.m_isOwner = false;
            },
    };
    zwlr_data_control_source_v1_add_listener(m_program->source, &listener, this);
    for (const auto &[target, answer] : m_program->contents)
        zwlr_data_control_source_v1_offer(m_program->source, target.constData());
    m_isOwner = true;
    zwlr_data_control_device_v1_set_selection(m_program->device, m_program->source);
    if (before)
        zwlr_data_control_source_v1_destroy(before);
}

void TestSource::letGo() {
    runOnThread([this] {
        zwlr_data_control_source_v1_destroy(std::exchange(m_program->source, nullptr));
        m_program->link.flush();
        m_isOwner = false;
    });
}

void TestSource::clear() {
    runOnThread([this] {
        zwlr_data_control_device_v1_set_selection(m_program->device, nullptr);
        static_cast<void>(m_program->link.finish());
        m_isOwner = false;
    });
}

void TestSource::end() {
    runOnThread([this] {
        m_program.reset();
        m_isOwner = false;
    });
}

void TestSource::answer(const QByteArray &target, int pipe) {
    {
        const std::lock_guard lock(m_mutex);
        ++m_requests[target];
    }
    const auto found = std::find_if(m_program->contents.begin(), m_program->contents.end(),
                                    [&](const auto &content) { return content.first == target; });
    const SourceAnswer answer = found != m_program->contents.end() ? found->second : SourceAnswer::refused();
    if (answer.manner == SourceAnswer::Manner::silent) {
        m_program->kept.push_back(pipe);
        return;
    }
    const qsizetype step = answer.pieceBytes > 0 ? answer.pieceBytes : answer.bytes.size();
    int pieces = 0;
    for (qsizetype offset = 0; answer.manner == SourceAnswer::Manner::whole && offset < answer.bytes.size();) {
        if (pieces == answer.silentAfterPieces) {
            m_program->kept.push_back(pipe);
            return;
        }
        if (pieces == answer.endAfterPieces) {
            ::shutdown(m_program->link.descriptor(), SHUT_RDWR);
            m_isGone = true;
            break;
        }
        const qsizetype size = std::min(step, answer.bytes.size() - offset);
        const ssize_t written = ::write(pipe, answer.bytes.constData() + offset, static_cast<size_t>(size));
        if (written <= 0)
            break;
        m_written += written;
        ++pieces;
        offset = answer.isEndless ? 0 : offset + written;
        std::this_thread::sleep_for(answer.pause);
        if (m_isStopping)
            break;
    }
    ::close(pipe);
}

int TestSource::requestCount(const QByteArray &target) const {
    const std::lock_guard lock(m_mutex);
    const auto found = m_requests.find(target);
    return found != m_requests.end() ? found->second : 0;
}

int TestSource::requestCount() const {
    const std::lock_guard lock(m_mutex);
    int sum = 0;
    for (const auto &[target, count] : m_requests)
        sum += count;
    return sum;
}

} // namespace tavrine
