// What the shelf sees of the mouse, and what becomes of it when a source dies or the screens change.
#include "NotchWindowTest.h"

namespace tavrine {
namespace {

// Sources that die.

TEST_F(NotchWindow, theSourcesAreStartedOnceAndSaySo) {
    controller.reset();
    output();
    make();
    EXPECT_EQ(output(), "[NotchShelf] Starting mouse monitoring (restart #1)\n");
    EXPECT_EQ(controller->monitorRestartCount(), 1);
    EXPECT_EQ(monitors.globalCount(), 1);
    EXPECT_EQ(monitors.localCount(), 1);
    EXPECT_EQ(time.timerCount(), 2);
}

TEST_F(NotchWindow, aHealthyShelfIsLookedAtEveryTenSecondsAndComesToTheFront) {
    output();
    const int keepings = window().keepings();
    const int showings = window().showings();
    time.advance(9s);
    EXPECT_EQ(window().keepings(), keepings);
    time.advance(1s);
    EXPECT_EQ(window().keepings(), keepings + 1);
    time.advance(10s);
    EXPECT_EQ(window().keepings(), keepings + 2);
    EXPECT_EQ(window().showings(), showings) << "nobody called it";
    EXPECT_EQ(output(), "");
}

TEST_F(NotchWindow, aMonitorThatCannotBeInstalledIsTriedAgainByTheNextHealthCheck) {
    monitors.setBroken(true);
    notices.happen(SessionNotice::didWake);
    time.runPending();
    EXPECT_EQ(monitors.globalCount(), 0);
    monitors.setBroken(false);
    output();
    time.advance(10s);
    EXPECT_EQ(output(), "[NotchShelf] Health check: Restarting monitors (monitors lost: true, polling lost: false, "
                        "stuck: false)\n[NotchShelf] Starting mouse monitoring (restart #3)\n");
    EXPECT_EQ(monitors.globalCount(), 1);
}

TEST_F(NotchWindow, whatIsLostOfTheSourcesIsNamedAndStartedAnew) {
    const auto afterALossOf = [this](const auto &setLost) {
        setLost(true);
        notices.happen(SessionNotice::didWake);
        time.runPending();
        setLost(false);
        output();
        time.advance(10s);
        return output();
    };
    EXPECT_THAT(afterALossOf([this](bool isLost) { monitors.setLocalBroken(isLost); }),
                testing::StartsWith("[NotchShelf] Health check: Restarting monitors (monitors lost: true, polling "
                                    "lost: false, stuck: false)\n[NotchShelf] Starting mouse monitoring (restart #3)"));
    EXPECT_EQ(monitors.localCount(), 1);
    EXPECT_THAT(afterALossOf([this](bool isLost) { screens.setWatchBroken(isLost); }),
                testing::StartsWith("[NotchShelf] Health check: Restarting monitors (monitors lost: false, polling "
                                    "lost: true, stuck: false)\n[NotchShelf] Starting mouse monitoring (restart #5)"));
    EXPECT_EQ(time.timerCount(), 2);
    time.advance(1min);
    EXPECT_EQ(output(), "");
}

TEST_F(NotchWindow, anItemOfItsOwnOnItsWayStaysAboveIt) {
    const int keepings = window().keepings();
    screens.setPressedMouseButtons(1);
    notices.happen(SessionNotice::didBecomeActive); // the drag holds the keyboard
    time.advance(10s);
    EXPECT_EQ(window().keepings(), keepings);
    screens.setPressedMouseButtons(0);
    time.advance(10s);
    EXPECT_EQ(window().keepings(), keepings + 1);
}

TEST_F(NotchWindow, aPointerThatRestsForHoursIsNotStuck) {
    output();
    time.advance(2h);
    EXPECT_EQ(output(), "");
}

TEST_F(NotchWindow, withoutAMouseCheckForMoreThanFifteenSecondsItCountsAsStuck) {
    const auto afterAJumpOf = [this](std::chrono::milliseconds jump) {
        controller.reset();
        make(); // 60 ms ago
        output();
        time.advance(9935ms); // the next poll and the health check are 5 ms away
        time.setWallClock(time.now() + jump);
        time.advance(5ms);
        return output();
    };
    // The last mouse check was a poll before.
    EXPECT_EQ(afterAJumpOf(14900ms), "");
    EXPECT_EQ(afterAJumpOf(15100ms), "[NotchShelf] Health check: Restarting monitors (monitors lost: false, polling "
                                     "lost: false, stuck: true)\n"
                                     "[NotchShelf] Starting mouse monitoring (restart #2)\n");
}

TEST_F(NotchWindow, whateverMightHaveHurtTheSourcesStartsThemAnew) {
    struct Case {
        SessionNotice notice;
        const char *line;
        bool comesToTheFront;
    };
    int restart = 1;
    for (const Case &one :
         {Case{SessionNotice::didWake, "System event detected, restarting monitors", true},
          Case{SessionNotice::screensDidWake, "System event detected, restarting monitors", true},
          Case{SessionNotice::activeSpaceDidChange, "System event detected, restarting monitors", true},
          Case{SessionNotice::didBecomeActive, "App event detected, restarting monitors", true},
          Case{SessionNotice::didUnhide, "App event detected, restarting monitors", true},
          Case{SessionNotice::screenIsUnlocked, "Screen unlocked, restarting monitors", false}}) {
        output();
        const int keepings = window().keepings();
        notices.happen(one.notice);
        time.runPending();
        EXPECT_EQ(output(), std::string("[NotchShelf] ") + one.line +
                                "\n[NotchShelf] Starting mouse monitoring (restart #" + std::to_string(++restart) +
                                ")\n");
        EXPECT_EQ(window().keepings() > keepings, one.comesToTheFront) << one.line;
        EXPECT_EQ(monitors.globalCount() + monitors.localCount() + time.timerCount(), 4);
    }
}

TEST_F(NotchWindow, aRestartDuringADragLosesNothing) {
    beginDrag(true);
    time.advance(100ms);
    notices.happen(SessionNotice::activeSpaceDidChange);
    time.advance(100ms);
    EXPECT_TRUE(model().isFileDragActive());
    EXPECT_EQ(window().frame().height(), 79);
    release();
    time.advance(100ms);
    EXPECT_FALSE(model().isFileDragActive());
}

// Screens.

TEST_F(NotchWindow, theScreenOfTheShelfUnpluggedMovesItToTheMainScreen) {
    screens.setKeyboardScreen(1);
    setScreens({1, 2});
    controller.reset();
    make();
    screens.setKeyboardScreen(0);
    output();
    setScreens({1});
    EXPECT_EQ(output(), "[NotchShelf] Screen configuration changed\n"
                        "[NotchShelf] Pinned display disconnected, re-pinned to Screen 1\n"
                        "[NotchShelf] Starting mouse monitoring (restart #2)\n");
    EXPECT_EQ(window().frame(), QRectF(350, 776, 300, 24));
    EXPECT_EQ(controller->notchRect(), QRectF(350, 776, 300, 24));
}

TEST_F(NotchWindow, ofTheScreensThatStayTheMainOneGetsTheShelfNotTheFirst) {
    screens.setKeyboardScreen(2);
    setScreens({1, 2, 3});
    controller.reset();
    make();
    ASSERT_EQ(controller->pinnedScreen().number, 3U);
    screens.setKeyboardScreen(1);
    output();
    setScreens({1, 2});
    EXPECT_THAT(output(), HasSubstr("Pinned display disconnected, re-pinned to Screen 2\n"));
    EXPECT_EQ(controller->pinnedScreen().number, 2U);
}

TEST_F(NotchWindow, anotherScreenUnpluggedMovesNothing) {
    setScreens({1, 2});
    const QRectF before = window().frame();
    output();
    screens.setKeyboardScreen(1);
    setScreens({1});
    EXPECT_EQ(window().frame(), before);
    EXPECT_EQ(output(), "[NotchShelf] Screen configuration changed\n"
                        "[NotchShelf] Starting mouse monitoring (restart #3)\n");
}

TEST_F(NotchWindow, aScreenThatChangesItsSizeTakesTheShelfWithIt) {
    setScreens({1});
    EXPECT_EQ(window().frame(), QRectF(350, 776, 300, 24));
    EXPECT_EQ(controller->notchRect(), QRectF(350, 776, 300, 24));
}

TEST_F(NotchWindow, anotherArrangementOfScreensBringsItToTheFront) {
    const int showings = window().showings();
    setScreens({1});
    EXPECT_EQ(window().showings(), showings + 1);
}

TEST_F(NotchWindow, aDesktopThatLosesAllScreensGetsItsShelfBackWithTheNextOne) {
    screens.setScreens({});
    time.advance(1min);
    setScreens({7});
    EXPECT_EQ(controller->pinnedScreen().number, 7U);
    EXPECT_EQ(window().frame(), QRectF(350, 776, 300, 24));
}

TEST_F(NotchWindow, aShelfThatBeginsWithoutAScreenIsOnTheFirstThatComes) {
    controller.reset();
    screens.setScreens({});
    make();
    setScreens({7});
    EXPECT_EQ(window().frame(), QRectF(350, 776, 300, 24));
}

} // namespace
} // namespace tavrine
