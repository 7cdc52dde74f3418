#include "TimeContract.h"

#include "adapters/fake/VirtualTime.h"
#include "adapters/linux/QtTime.h"

#include <QElapsedTimer>
#include <QTest>

#include <memory>
#include <thread>
#include <vector>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

class VirtualTimeUnderTest final : public TimeUnderTest {
public:
    Time &time() override { return m_time; }
    void pass(Seconds length) override { m_time.advance(length); }

private:
    VirtualTime m_time;
};

class QtTimeUnderTest final : public TimeUnderTest {
public:
    Time &time() override { return m_time; }
    void pass(Seconds length) override {
        QTest::qWait(static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(length).count()));
    }

private:
    QtTime m_time;
};

template <class T>
std::unique_ptr<TimeUnderTest> make() {
    return std::make_unique<T>();
}

INSTANTIATE_TEST_SUITE_P(Virtual, TimeContract, testing::Values(&make<VirtualTimeUnderTest>));
INSTANTIATE_TEST_SUITE_P(Qt, TimeContract, testing::Values(&make<QtTimeUnderTest>));

TEST_P(TimeContract, asyncRunsLaterAndInOrder) {
    std::vector<int> calls;
    for (int i = 0; i < 3; ++i)
        time.async([&calls, i] { calls.push_back(i); });
    EXPECT_TRUE(calls.empty());
    subject->pass(0s);
    EXPECT_EQ(calls, (std::vector{0, 1, 2}));
}

TEST_P(TimeContract, workHandedInByWorkRunsAfterWhatWaitsAlready) {
    std::vector<int> calls;
    time.async([&] {
        calls.push_back(1);
        time.async([&] { calls.push_back(3); });
    });
    time.async([&] { calls.push_back(2); });
    subject->pass(20ms);
    EXPECT_EQ(calls, (std::vector{1, 2, 3}));
}

TEST_P(TimeContract, asyncMayBeCalledOnAnyThread) {
    const auto mainThread = std::this_thread::get_id();
    std::thread::id ranOn;
    std::thread([&] { time.async([&] { ranOn = std::this_thread::get_id(); }); }).join();
    subject->pass(20ms);
    EXPECT_EQ(ranOn, mainThread);
}

TEST_P(TimeContract, delayedWorkRunsOnceAndNeverEarly) {
    int calls = 0;
    const Date start = time.now();
    Date ranAt = start;
    time.asyncAfter(50ms, [&] {
        ++calls;
        ranAt = time.now();
    });
    subject->pass(200ms);
    EXPECT_EQ(calls, 1);
    EXPECT_GE((ranAt - start).count(), 0.0499);
}

TEST_P(TimeContract, workIsRunInTheOrderOfItsMoments) {
    std::vector<int> calls;
    time.asyncAfter(60ms, [&] { calls.push_back(60); });
    time.asyncAfter(20ms, [&] { calls.push_back(20); });
    time.asyncAfter(40ms, [&] { calls.push_back(40); });
    subject->pass(200ms);
    EXPECT_EQ(calls, (std::vector{20, 40, 60}));
}

TEST_P(TimeContract, workDueAtTheSameMomentRunsInTheOrderOfArrival) {
    std::vector<int> calls;
    for (int i = 0; i < 5; ++i)
        time.asyncAfter(20ms, [&calls, i] { calls.push_back(i); });
    subject->pass(100ms);
    EXPECT_EQ(calls, (std::vector{0, 1, 2, 3, 4}));
}

TEST_P(TimeContract, aTimerRepeatsUntilItIsDestroyed) {
    int calls = 0;
    auto timer = time.repeat(20ms, [&] { ++calls; });
    EXPECT_EQ(calls, 0);
    subject->pass(150ms);
    EXPECT_GE(calls, 3);
    timer.reset();
    const int before = calls;
    subject->pass(100ms);
    EXPECT_EQ(calls, before);
}

TEST_P(TimeContract, aTimerMayDestroyItselfInItsWork) {
    int calls = 0;
    std::unique_ptr<Timer> timer;
    timer = time.repeat(10ms, [&] {
        timer.reset();
        ++calls;
    });
    subject->pass(100ms);
    EXPECT_EQ(calls, 1);
}

TEST_P(TimeContract, workOfAnOwnerThatHasGoneIsDropped) {
    int calls = 0;
    auto owner = std::make_unique<QObject>();
    QObject stays;
    time.async(owner.get(), [&] { ++calls; });
    time.asyncAfter(10ms, owner.get(), [&] { ++calls; });
    time.async(&stays, [&] { calls += 10; });
    owner.reset();
    subject->pass(50ms);
    EXPECT_EQ(calls, 10);
}

TEST_P(TimeContract, nowAndTheUptimeMoveOnTogether) {
    const Date now = time.now();
    const Seconds uptime = time.systemUptime();
    EXPECT_GT(uptime.count(), 0);
    subject->pass(50ms);
    EXPECT_GE((time.now() - now).count(), 0.0499);
    EXPECT_NEAR((time.now() - now).count(), (time.systemUptime() - uptime).count(), 0.02);
}

} // namespace
} // namespace tavrine
