#include "adapters/x11/X11PasteboardFixture.h"
#include "support/PrivateScreen.h"

#include <QElapsedTimer>

#include <cstdlib>
#include <thread>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

/// Owners that are too busy with the copy itself to hear the first question, and answer a later one.
class StallingOwner : public X11PasteboardFixture {
protected:
    StallingOwner() {
        SelectionLimits limits = shortLimits();
        limits.answer = 900ms;
        limits.askAgain = 100ms;
        limits.total = 4000ms;
        start(limits);
    }
    static Answer silentFor(int times, const QByteArray &bytes) { return {.bytes = bytes, .silentTimes = times}; }
    [[nodiscard]] Answer targetsSilentFor(int times) {
        Answer targets = owner.listOf(contents);
        targets.silentTimes = times;
        return targets;
    }

    TestOwner owner;
    const TestOwner::Contents contents{{"UTF8_STRING", {.bytes = "cells"}}};
};

TEST_F(StallingOwner, isAskedAgainForItsTargetsSoon) {
    SelectionLimits limits = shortLimits();
    limits.askAgain = 100ms;
    limits.answer = limits.total = 40s;
    start(limits);
    QElapsedTimer timer;
    timer.start();
    owner.own(contents, targetsSilentFor(1));
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("cells"));
    EXPECT_GE(timer.elapsed(), 99);
    EXPECT_LT(timer.elapsed(), 8000) << "not as late as the last time";
    EXPECT_EQ(steps(), 1);
}

TEST_F(StallingOwner, isAskedOnceMoreBeforeItIsGivenUp) {
    owner.own(contents, targetsSilentFor(2));
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("cells"));
    EXPECT_EQ(owner.requestCount("TARGETS"), 3);
}

TEST_F(StallingOwner, isAskedThreeTimesInAll) {
    owner.own(contents, targetsSilentFor(3));
    ASSERT_TRUE(changed());
    EXPECT_FALSE(pasteboard().string());
    EXPECT_FALSE(changed(500));
    EXPECT_EQ(owner.requestCount("TARGETS"), 3);
}

TEST_F(StallingOwner, isAskedAgainForItsTextToo) {
    owner.own({{"UTF8_STRING", silentFor(1, "cells")}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("cells"));
    owner.own({{"UTF8_STRING", silentFor(2, "more cells")}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("more cells"));
}

TEST_F(StallingOwner, isNotAskedTwiceForAPictureThatItMayBeEncoding) {
    owner.own({{"image/png", silentFor(1, pngOf(coloured(9, 9)))}});
    ASSERT_TRUE(changed());
    EXPECT_FALSE(pasteboard().image());
    EXPECT_EQ(owner.requestCount("image/png"), 1);
}

TEST_F(StallingOwner, mayAnswerTheFirstQuestionAfterTheSecondAndAllOfThem) {
    // Busy for longer than it takes to ask again, it then finds several questions, and answers each piecemeal.
    Answer slow{.manner = Answer::Manner::piecemeal, .bytes = QByteArray(50'000, 'x'), .pieceBytes = 1000};
    slow.before = [isFirst = std::make_shared<bool>(true)] {
        if (std::exchange(*isFirst, false))
            std::this_thread::sleep_for(600ms);
    };
    owner.own({{"UTF8_STRING", slow}, {"text/html", {.bytes = "<b>x</b>"}}});
    ASSERT_TRUE(changed());
    EXPECT_TRUE(pasteboard().string() == QString(50'000, QLatin1Char('x')));
    ASSERT_TRUE(waitUntil([&] { return owner.requestCount("text/html") == 1; }));
    EXPECT_GT(owner.requestCount("UTF8_STRING"), 1);
}

/// What stands still is not the owner: it answers as soon as it can.
class StandstillOfOthers : public ::testing::Test {
protected:
    static SelectionLimits limits() {
        SelectionLimits limits = shortLimits();
        limits.lastChance = 5000ms; // it is used up by an owner that hangs, and by a machine that is as busy
        return limits;
    }
    /// A picture is not asked for twice. Its owner is asked, `standstill` happens, and it answers.
    [[nodiscard]] static bool arrivesAfter(const std::function<void()> &standstill) {
        X11Pasteboard pasteboard(limits());
        TestOwner owner;
        Answer answer{.manner = Answer::Manner::piecemeal, .bytes = pngOf(coloured(40, 30)), .pieceBytes = 50};
        answer.before = standstill;
        owner.own({{"image/png", answer}});
        return waitUntil([&] { return pasteboard.types().has_value(); }, 20000) && pasteboard.image().has_value();
    }
};

TEST_F(StandstillOfOthers, ofTheMachineIsNotHeldAgainstAnOwner) {
    EXPECT_TRUE(arrivesAfter([] {
        EXPECT_EQ(std::system("kill -STOP $PPID; sleep 0.8; kill -CONT $PPID"), 0);
        std::this_thread::sleep_for(50ms); // it wakes up later than who waits for it
    }));
}

TEST_F(StandstillOfOthers, ofTheServerIsNotHeldAgainstAnOwner) {
    testing::PrivateScreen screen;
    EXPECT_TRUE(arrivesAfter([&screen] {
        screen.hang();
        std::thread([&screen] {
            std::this_thread::sleep_for(800ms);
            screen.goOn();
        }).detach();
    }));
}

} // namespace
} // namespace tavrine
