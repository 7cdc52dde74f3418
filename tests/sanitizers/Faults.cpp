// Makes the fault that is named, for the proof that the sanitizers of this build see it:
//
//   faults address|bounds|undefined|type|leak|race|race-after-child|handed-over      the last is none

#include "base/SerialQueue.h"
#include "walls/ForeignDescriptors.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QObject>
#include <QProcess>
#include <QThread>

#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

volatile int sink = 0;

void readFreedMemory() {
    const std::string *volatile memory = new std::string(100, 'x');
    delete memory;
    sink = static_cast<int>(memory->size()); // NOLINT(clang-analyzer-cplusplus.NewDelete)
}

void readBehindTheEnd() {
    const std::vector<int> three(3);
    sink = three[static_cast<std::size_t>(sink) + 3];
}

void overflow() {
    sink = INT_MAX;
    sink = sink + 1;
}

struct Any {
    virtual ~Any() = default;
};
struct Other : Any {
    int number = 1;
};

void takeForAnother() {
    const std::unique_ptr<Any> any(new Any);
    sink = static_cast<Other *>(any.get())->number; // NOLINT(cppcoreguidelines-pro-type-static-cast-downcast)
}

void leak() {
    sink = static_cast<int>(reinterpret_cast<std::uintptr_t>(new char[1000]) & 1);
}

void race() {
    int count = 0;
    std::thread other([&] { ++count; });
    ++count;
    other.join();
    sink = count;
}

/// What calls queued for a thread have written, read by who has waited for its end.
int ofThreadThatHasEnded() {
    std::vector<int> calls;
    QThread thread;
    auto *const onThread = new QObject;
    onThread->moveToThread(&thread);
    QObject::connect(&thread, &QThread::finished, onThread, &QObject::deleteLater);
    thread.start();
    for (int i = 0; i < 3; ++i)
        QMetaObject::invokeMethod(
            onThread, [&calls, i] { calls.push_back(i); }, Qt::QueuedConnection);
    QMetaObject::invokeMethod(
        onThread, [&thread] { thread.quit(); }, Qt::QueuedConnection);
    thread.wait();
    return static_cast<int>(calls.size());
}

/// To a queue and back, by a queued call; and by the end of a thread.
void handOver(QCoreApplication &application) {
    tavrine::SerialQueue queue(QStringLiteral("handed over"));
    std::vector<int> rows(100, 1); // each piece of work writes what the one before it wrote
    for (int i = 0; i < 100; ++i)
        queue.async(
            [&rows, i, text = std::string(100, 'x')] { rows[static_cast<std::size_t>(i)] += int(text.size()); });
    sink = queue.sync([&rows] { return rows.back(); });
    queue.async([&application, copy = rows] {
        QMetaObject::invokeMethod(
            &application, [copy] { QCoreApplication::exit(copy.front() == 101 ? 0 : 1); }, Qt::QueuedConnection);
    });
    if (QCoreApplication::exec() == 0 && ofThreadThatHasEnded() == 3)
        std::puts("nothing was found");
}

/// After the toolkit has started a child beside another thread.
void raceAfterAChild() {
    std::promise<void> hasChildEnded;
    std::thread other([&] { hasChildEnded.get_future().wait(); });
    sink = QProcess::execute(QStringLiteral("true"));
    hasChildEnded.set_value();
    other.join();
    race();
}

} // namespace

int main(int argc, char **argv) {
    std::signal(SIGABRT, [](int) { _exit(1); }); // ctest takes a signal for a failure, whatever was said
    // These findings are for the test alone.
    dup2(STDERR_FILENO, tavrine::numberOfFindings);
    dup2(STDERR_FILENO, tavrine::numberOfFindings + 1);
    QCoreApplication application(argc, argv);
    const std::map<std::string, std::function<void()>> faults{{"address", &readFreedMemory},
                                                              {"bounds", &readBehindTheEnd},
                                                              {"undefined", &overflow},
                                                              {"type", &takeForAnother},
                                                              {"leak", &leak},
                                                              {"race", &race},
                                                              {"handed-over", [&] { handOver(application); }},
                                                              {"race-after-child", &raceAfterAChild}};
    const auto fault = faults.find(argc > 1 ? argv[1] : "");
    if (fault == faults.end())
        return 2;
    fault->second();
    return 0;
}
