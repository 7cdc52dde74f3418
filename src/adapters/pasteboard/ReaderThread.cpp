#include "adapters/pasteboard/ReaderThread.h"

#include <csignal>
#include <future>
#include <memory>

#include <pthread.h>

namespace tavrine {

std::thread startReaderThread(std::function<void()> open, std::function<void()> run,
                              std::chrono::milliseconds longest) {
    const auto opened = std::make_shared<std::promise<void>>();
    std::thread thread([open = std::move(open), run = std::move(run), opened] {
        ::pthread_setname_np(::pthread_self(), "pasteboard");
        // Signals are the main thread's; and a write to whoever has gone must fail, not end the process.
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
        open();
        opened->set_value();
        run();
    });
    opened->get_future().wait_for(longest);
    return thread;
}

} // namespace tavrine
