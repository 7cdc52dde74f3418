#include "look/Motion.h"

#include "adapters/fake/FakeAppearance.h"
#include "adapters/fake/VirtualTime.h"
#include "look/Look.h"

#include <cmath>

#include <gtest/gtest.h>

namespace tavrine::look {
namespace {

using namespace std::chrono_literals;

// The spring's own equation, integrated in small steps: x'' = k (1 - x) - c x', from rest at 0.
double integrated(double stiffness, double damping, double until) {
    const double step = 1e-5;
    double x = 0;
    double v = 0;
    const auto pull = [&](double place, double speed) { return stiffness * (1 - place) - damping * speed; };
    for (double t = 0; t < until - step / 2; t += step) {
        const double v1 = v;
        const double a1 = pull(x, v);
        const double v2 = v + step / 2 * a1;
        const double a2 = pull(x + step / 2 * v1, v2);
        const double v3 = v + step / 2 * a2;
        const double a3 = pull(x + step / 2 * v2, v3);
        const double v4 = v + step * a3;
        const double a4 = pull(x + step * v3, v4);
        x += step / 6 * (v1 + 2 * v2 + 2 * v3 + v4);
        v += step / 6 * (a1 + 2 * a2 + 2 * a3 + a4);
    }
    return x;
}

class SpringTest : public testing::TestWithParam<std::pair<double, double>> {};

TEST_P(SpringTest, followsTheEquationOfADampedSpring) {
    const auto [response, fraction] = GetParam();
    const Spring spring = Spring::responding(response, fraction);
    const double frequency = 2 * M_PI / response;
    for (const double t : {0.02, 0.1, 0.2, 0.35, 0.6})
        EXPECT_NEAR(spring.at(Seconds{t}), integrated(frequency * frequency, 2 * fraction * frequency, t), 1e-6) << t;
}

TEST_P(SpringTest, isSettledFromTheTimeItNamesAndNotBefore) {
    const auto [response, fraction] = GetParam();
    const Spring spring = Spring::responding(response, fraction);
    const Seconds settled = spring.settled();
    for (int i = 0; i <= 400; ++i)
        EXPECT_NEAR(spring.at(settled + Seconds{i * 0.005}), 1, 0.00101);
    bool wasOutside = false;
    for (int i = 1; i <= 20; ++i)
        wasOutside |= std::abs(spring.at(settled - Seconds{i * 0.001}) - 1) > 0.001;
    EXPECT_TRUE(wasOutside);
}

INSTANTIATE_TEST_SUITE_P(TheSystemsSprings, SpringTest,
                         testing::Values(std::pair{0.3, 0.825}, std::pair{0.3, 0.7}, std::pair{0.35, 0.7},
                                         std::pair{0.4, 0.7}, std::pair{0.4, 0.6}, std::pair{0.55, 0.65},
                                         std::pair{0.3, 1.0}, std::pair{0.3, 1.4}));

TEST(Spring, byMassStiffnessAndDampingFollowsTheSameEquation) {
    const Spring spring = Spring::interpolating(1, 300, 20);
    for (const double t : {0.05, 0.15, 0.3})
        EXPECT_NEAR(spring.at(Seconds{t}), integrated(300, 20, t), 1e-6);
}

TEST(Spring, runsOverWhenItIsUnderdampedAndNeverWhenItIsNot) {
    double highest = 0;
    double highestCritical = 0;
    for (int i = 0; i < 1000; ++i) {
        highest = std::max(highest, Spring::responding(0.3, 0.7).at(Seconds{i * 0.001}));
        highestCritical = std::max(highestCritical, Spring::responding(0.3, 1).at(Seconds{i * 0.001}));
    }
    EXPECT_NEAR(highest, 1 + std::exp(-0.7 * M_PI / std::sqrt(1 - 0.49)), 1e-4);
    EXPECT_LE(highestCritical, 1);
}

TEST(Spring, startsAtNothing) {
    EXPECT_EQ(Spring::responding(0.3, 0.7).at(Seconds{0}), 0);
}

TEST(Timing, easesInAsTheCurveSays) {
    // At s = 1/2 the curve (0.42,0),(1,1) is at x = 3/8·0.42 + 3/8 + 1/8 = 0.6575 and y = 3/8 + 1/8 = 0.5.
    EXPECT_NEAR(easeIn.at(0.6575), 0.5, 1e-9);
    EXPECT_NEAR(easeOut.at(1 - 0.6575), 0.5, 1e-9);
    EXPECT_NEAR(easeInOut.at(0.5), 0.5, 1e-9);
    EXPECT_NEAR(linearTiming.at(0.3), 0.3, 1e-9);
}

TEST(Timing, staysWithinItsEnds) {
    EXPECT_EQ(easeIn.at(-1), 0);
    EXPECT_EQ(easeIn.at(0), 0);
    EXPECT_EQ(easeIn.at(1), 1);
    EXPECT_EQ(easeIn.at(2), 1);
}

TEST(CubicInOut, isTheCubeBothWays) {
    EXPECT_DOUBLE_EQ(cubicInOut(0.25), 4 * 0.25 * 0.25 * 0.25);
    EXPECT_DOUBLE_EQ(cubicInOut(0.5), 0.5);
    EXPECT_DOUBLE_EQ(cubicInOut(0.75), 1 - 0.5 * 0.5 * 0.5 / 2);
    EXPECT_EQ(cubicInOut(1.5), 1);
}

class MotionTest : public testing::Test {
protected:
    VirtualTime time;
    FakeAppearance appearance;
    Look look{time, &appearance};
    Motion motion;
    std::vector<double> values;
    int ends = 0;

    void start(Seconds length = 100ms) {
        motion.start(
            length, linearTiming, [this](double value) { values.push_back(value); }, [this] { ++ends; });
    }
};

TEST_F(MotionTest, endsAtExactlyOneAndThenSaysSo) {
    start();
    time.advance(99ms);
    EXPECT_EQ(ends, 0);
    time.advance(20ms);
    EXPECT_EQ(ends, 1);
    ASSERT_FALSE(values.empty());
    EXPECT_EQ(values.back(), 1.0);
    EXPECT_TRUE(std::is_sorted(values.begin(), values.end()));
}

TEST_F(MotionTest, takesItsValueFromTheTimeThatPassed) {
    start();
    time.advance(MotionClock::frame * 2);
    EXPECT_NEAR(values.back(), 0.32, 1e-9);
}

TEST_F(MotionTest, theClockIsThereOnlyWhileSomethingMoves) {
    EXPECT_EQ(time.timerCount(), 0);
    start();
    EXPECT_EQ(time.timerCount(), 1);
    Motion other;
    other.start(200ms, linearTiming, [](double) {});
    EXPECT_EQ(time.timerCount(), 1);
    time.advance(120ms);
    EXPECT_EQ(time.timerCount(), 1);
    time.advance(120ms);
    EXPECT_EQ(time.timerCount(), 0);
    EXPECT_FALSE(look.clock().isTicking());
}

TEST_F(MotionTest, aStoppedMotionDoesNotEnd) {
    start();
    time.advance(50ms);
    motion.stop();
    const size_t steps = values.size();
    time.advance(1s);
    EXPECT_EQ(ends, 0);
    EXPECT_EQ(values.size(), steps);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(MotionTest, aNewStartDropsTheOldOne) {
    start();
    time.advance(50ms);
    int laterEnds = 0;
    motion.start(
        50ms, linearTiming, [](double) {}, [&] { ++laterEnds; });
    time.advance(1s);
    EXPECT_EQ(ends, 0);
    EXPECT_EQ(laterEnds, 1);
}

TEST_F(MotionTest, maySafelyDestroyItselfAtItsEnd) {
    auto own = std::make_unique<Motion>();
    own->start(
        10ms, linearTiming, [](double) {}, [&] { own.reset(); });
    time.advance(1s);
    EXPECT_EQ(own, nullptr);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(MotionTest, maySafelyDestroyItselfInAStep) {
    auto own = std::make_unique<Motion>();
    own->start(1s, linearTiming, [&](double) { own.reset(); });
    time.advance(2s);
    EXPECT_EQ(own, nullptr);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(MotionTest, mayStartAgainAtItsEnd) {
    int rounds = 0;
    std::function<void()> again = [&] {
        if (++rounds < 3)
            motion.start(
                20ms, linearTiming, [](double) {}, again);
    };
    again();
    time.advance(1s);
    EXPECT_EQ(rounds, 3);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(MotionTest, goesToTheEndAtOnceUnderReducedMotion) {
    appearance.set({.reducesMotion = true});
    start();
    EXPECT_EQ(values, std::vector<double>{1.0});
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(MotionTest, anEndlessMotionStopsWhenItSaysSo) {
    Seconds whole{0};
    motion.run([&](Seconds passed) {
        whole += passed;
        return whole < 80ms;
    });
    time.advance(1s);
    EXPECT_NEAR(whole.count(), 0.08, 1e-9);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(MotionTest, anEndlessMotionMayDestroyItself) {
    auto own = std::make_unique<Motion>();
    own->run([&](Seconds) {
        own.reset();
        return false;
    });
    time.advance(1s);
    EXPECT_EQ(own, nullptr);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(MotionTest, anEndlessMotionKeepsItsStateBetweenFrames) {
    int frames = 0;
    motion.run([&frames, count = 0](Seconds) mutable {
        frames = ++count;
        return count < 5;
    });
    time.advance(1s);
    EXPECT_EQ(frames, 5);
}

TEST_F(MotionTest, anEndlessMotionDoesNotBeginUnderReducedMotion) {
    appearance.set({.reducesMotion = true});
    motion.run([](Seconds) { return true; });
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(MotionTest, goesToTheEndWithTheNextFrameWhenMotionIsReducedMeanwhile) {
    start(10s);
    Motion endless;
    int frames = 0;
    endless.run([&](Seconds) { return ++frames > 0; });
    time.advance(20ms);
    EXPECT_EQ(ends, 0);
    appearance.set({.reducesMotion = true});
    const int before = frames;
    time.advance(20ms);
    EXPECT_EQ(values.back(), 1.0);
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(frames, before);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST(MotionWithoutALook, goesToTheEndAtOnce) {
    Motion motion;
    double last = 0;
    motion.start(1s, easeIn, [&](double value) { last = value; });
    EXPECT_EQ(last, 1);
}

} // namespace
} // namespace tavrine::look
