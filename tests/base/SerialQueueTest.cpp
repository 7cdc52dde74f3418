#include "base/SerialQueue.h"

#include <QSemaphore>
#include <QThread>

#include <atomic>
#include <memory>
#include <vector>

#include <gtest/gtest.h>
#include <sys/prctl.h>

namespace tavrine {
namespace {

TEST(SerialQueue, workRunsInTheOrderOfArrivalOneAtATime) {
    SerialQueue queue(QStringLiteral("com.tavrine.test"));
    std::vector<int> order; // touched by the queue alone, so a second thread would be a race
    for (int i = 0; i < 1000; ++i)
        queue.async([&order, i] { order.push_back(i); });
    queue.sync([] {});
    ASSERT_EQ(order.size(), 1000U);
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(order[static_cast<size_t>(i)], i);
}

TEST(SerialQueue, syncGivesTheResultOfTheWork) {
    SerialQueue queue(QStringLiteral("com.tavrine.test"));
    EXPECT_EQ(queue.sync([] { return 42; }), 42);
    EXPECT_EQ(*queue.sync([] { return std::make_unique<int>(7); }), 7);
}

TEST(SerialQueue, asyncDoesNotWait) {
    SerialQueue queue(QStringLiteral("com.tavrine.test"));
    QSemaphore gate;
    std::atomic<bool> isDone = false;
    queue.async([&] {
        gate.acquire();
        isDone = true;
    });
    EXPECT_FALSE(isDone);
    gate.release();
    queue.sync([] {});
    EXPECT_TRUE(isDone);
}

TEST(SerialQueue, allWorkIsOnOneThreadThatIsNotTheCallers) {
    SerialQueue queue(QStringLiteral("com.tavrine.test"));
    const auto thread = [&] { return queue.sync([] { return QThread::currentThreadId(); }); };
    EXPECT_NE(thread(), QThread::currentThreadId());
    EXPECT_EQ(thread(), thread());
}

TEST(SerialQueue, theThreadCarriesTheLabelAsFarAsTheKernelAllows) {
    SerialQueue queue(QStringLiteral("com.tavrine.clipboard.db"));
    const std::string name = queue.sync([] {
        char text[16] = {};
        prctl(PR_GET_NAME, text);
        return std::string(text);
    });
    EXPECT_EQ(name, "com.tavrine.cli");
    EXPECT_EQ(queue.label(), QStringLiteral("com.tavrine.clipboard.db"));
}

TEST(SerialQueue, aQueueKnowsItsOwnThread) {
    SerialQueue queue(QStringLiteral("one"));
    SerialQueue other(QStringLiteral("other"));
    EXPECT_FALSE(queue.isCurrent());
    EXPECT_TRUE(queue.sync([&] { return queue.isCurrent(); }));
    EXPECT_FALSE(queue.sync([&] { return other.isCurrent(); }));
}

TEST(SerialQueue, theEndWaitsForWhatWasHandedIn) {
    int done = 0;
    {
        SerialQueue queue(QStringLiteral("com.tavrine.test"));
        for (int i = 0; i < 100; ++i)
            queue.async([&done] { ++done; });
    }
    EXPECT_EQ(done, 100);
}

TEST(SerialQueueDeathTest, waitingForItselfEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            SerialQueue queue(QStringLiteral("com.tavrine.test"));
            queue.sync([&] { queue.sync([] {}); });
        },
        "asked to wait for itself: com.tavrine.test");
}

} // namespace
} // namespace tavrine
