#include "base/ConcurrentQueue.h"

#include <QSemaphore>

#include <atomic>
#include <string>

#include <gtest/gtest.h>
#include <sys/prctl.h>

namespace tavrine {
namespace {

TEST(ConcurrentQueue, workRunsSideBySideUpToTheBound) {
    std::atomic<int> running = 0;
    std::atomic<int> most = 0;
    QSemaphore begun;
    QSemaphore gate;
    {
        ConcurrentQueue queue(QStringLiteral("com.tavrine.test"), 3);
        for (int i = 0; i < 9; ++i)
            queue.async([&] {
                const int now = ++running;
                for (int seen = most; seen < now && !most.compare_exchange_weak(seen, now);) {
                }
                begun.release();
                gate.acquire();
                --running;
            });
        EXPECT_TRUE(begun.tryAcquire(3, 30'000)) << "none of the three waits for another";
        EXPECT_FALSE(begun.tryAcquire(1, 200)) << "a fourth waits";
        gate.release(9);
    }
    EXPECT_EQ(most, 3);
}

TEST(ConcurrentQueue, itsThreadsCarryTheLabelAsFarAsTheKernelAllows) {
    std::string name;
    {
        ConcurrentQueue queue(QStringLiteral("com.tavrine.jsUploadEngine"), 2);
        queue.async([&name] {
            char text[16] = {};
            prctl(PR_GET_NAME, text);
            name = text;
        });
    }
    EXPECT_EQ(name, "com.tavrine.jsU");
}

TEST(ConcurrentQueue, theEndWaitsForWhatWasHandedIn) {
    std::atomic<int> done = 0;
    {
        ConcurrentQueue queue(QStringLiteral("com.tavrine.test"), 2);
        for (int i = 0; i < 100; ++i)
            queue.async([&done] { ++done; });
    }
    EXPECT_EQ(done, 100);
}

} // namespace
} // namespace tavrine
