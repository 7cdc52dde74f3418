// The one window of the shelf, and what it sees of the mouse.
#include "shelf/NotchWindowController.h"

#include "adapters/fake/FakeDragPasteboard.h"
#include "adapters/fake/FakeEdgeWindow.h"
#include "adapters/fake/FakeEventMonitors.h"
#include "adapters/fake/FakeScreens.h"
#include "adapters/fake/FakeSessionNotices.h"
#include "shelf/ShelfTest.h"

namespace tavrine {
namespace {

/// A screen of 1440 by 900: the band is at 570 to 870, hovering from 560 to 880 and from 897 upwards.
class NotchWindow : public ShelfTest {
protected:
    NotchWindow() { make(); }
    ~NotchWindow() override { controller.reset(); }

    void make() {
        controller = std::make_unique<NotchWindowController>(
            NotchWindowController::Ports{.model = modelPorts(),
                                         .screens = screens,
                                         .eventMonitors = monitors,
                                         .edgeWindows = windows,
                                         .dragPasteboards = drags,
                                         .sessionNotices = notices},
            NotchWindowController::Views{.content =
                                             [this](NotchViewModel &, std::function<void()> dismiss) {
                                                 leave = std::move(dismiss);
                                                 return nullptr;
                                             },
                                         .outline = {}});
        controller->showWindow();
        time.advance(60ms); // the first look at the model
    }

    [[nodiscard]] NotchViewModel &model() { return controller->viewModel(); }
    [[nodiscard]] FakeEdgeWindows::Window &window() { return *windows.windows().front(); }

    void hold(int count) {
        for (int index = 0; index < count; ++index)
            model().addText(QString::number(index));
        time.advance(100ms);
    }
    void point(double x, double y) {
        screens.setMouseLocation({x, y});
        time.advance(100ms);
    }
    /// A stroke with the button down: what is dragged, and its first step.
    void beginDrag(bool holdsFiles) {
        screens.setPressedMouseButtons(1);
        drags.begin(holdsFiles);
        monitors.mouse(eventMask::leftMouseDragged);
    }
    void release() {
        screens.setPressedMouseButtons(0);
        drags.end();
        monitors.mouse(eventMask::leftMouseUp);
    }
    void setScreens(std::initializer_list<quint32> numbers) {
        QList<Screen> list;
        double x = 0;
        for (const quint32 number : numbers) {
            list << Screen{.number = number,
                           .localizedName = QStringLiteral("Screen %1").arg(number),
                           .frame = QRectF(x, 0, 1000, 800),
                           .visibleFrame = QRectF(x, 0, 1000, 770)};
            x += 1000;
        }
        screens.setScreens(list);
        time.advance(100ms);
    }

    FakeScreens screens;
    FakeEventMonitors monitors;
    FakeEdgeWindows windows;
    FakeDragPasteboards drags{time};
    FakeSessionNotices notices{time};
    std::function<void()> leave;
    std::unique_ptr<NotchWindowController> controller;
};

constexpr QRectF atRest(570, 876, 300, 24);

// The window.

TEST_F(NotchWindow, atRestItIsABandOfTwentyFourPointsAtTheVeryTopUnderWhichClicksGoThrough) {
    EXPECT_EQ(window().frame(), atRest);
    EXPECT_EQ(controller->notchRect(), atRest);
    EXPECT_TRUE(window().isVisible());
    EXPECT_TRUE(window().ignoresMouseEvents());
    EXPECT_FALSE(window().hasKeyboard());
}

TEST_F(NotchWindow, theDesktopIsToldWhatItIs) {
    EXPECT_EQ(window().description().title, text("NotchShelf"));
    EXPECT_EQ(window().description().level, 3);
    EXPECT_EQ(window().description().collectionBehavior, 337U);
    EXPECT_EQ(window().description().largestSize, QSizeF(550, 224));
}

TEST_F(NotchWindow, itIsOnTheScreenOfTheKeyboard) {
    screens.setKeyboardScreen(1);
    setScreens({1, 2});
    controller.reset();
    make();
    EXPECT_EQ(controller->pinnedScreen().number, 2U);
    EXPECT_EQ(window().frame(), QRectF(1350, 776, 300, 24));
}

TEST_F(NotchWindow, onceClosedNothingIsWatchedAndTheWindowIsGone) {
    beginDrag(true);
    controller->close();
    EXPECT_EQ(windows.windows().size(), 0U);
    EXPECT_EQ(monitors.globalCount() + monitors.localCount(), 0);
    EXPECT_EQ(time.timerCount(), 0);
    EXPECT_EQ(drags.watching(), 0);
    EXPECT_EQ(notices.following(), 0);
    output();
    setScreens({5});
    drags.end();
    time.advance(1min);
    EXPECT_EQ(output(), "");
}

TEST_F(NotchWindow, oneThatIsDroppedWatchesNothingEither) {
    controller.reset();
    EXPECT_EQ(windows.windows().size(), 0U);
    EXPECT_EQ(monitors.globalCount() + monitors.localCount() + time.timerCount() + drags.watching(), 0);
}

// The frame.

TEST_F(NotchWindow, fiveItemsGiveAWidthOf465PointsNineItems550ThreeItems300) {
    point(720, 899);
    const auto widthWith = [this](int count) {
        model().clearAll();
        hold(count);
        point(720, 899);
        EXPECT_EQ(window().frame().height(), 224);
        EXPECT_EQ(window().frame().center().x(), 720);
        EXPECT_EQ(maxY(window().frame()), 900);
        return window().frame().width();
    };
    EXPECT_EQ(widthWith(1), 300);
    EXPECT_EQ(widthWith(3), 300);
    EXPECT_EQ(widthWith(4), 380);
    EXPECT_EQ(widthWith(5), 465);
    EXPECT_EQ(widthWith(6), 550);
    EXPECT_EQ(widthWith(9), 550);
}

TEST_F(NotchWindow, theFrameOfEveryStateOfTheModelIsTheToldOne) {
    hold(5);
    for (int state = 0; state < 16; ++state) {
        const bool fileDrag = state & 1;
        const bool target = state & 2;
        const bool hovering = state & 4;
        const bool itemDrag = state & 8;
        model().setFileDragActive(fileDrag);
        model().setDragTargetActive(target);
        model().setHovering(hovering);
        model().setShelfItemDragActive(itemDrag);
        const bool items = (hovering || itemDrag) && !fileDrag && !target;
        const double height = items ? 224 : (fileDrag || target || hovering || itemDrag) ? 79 : 24;
        const double width = items ? 465 : 300;
        EXPECT_EQ(targetFrame(model(), QRectF(0, 0, 1440, 900)), QRectF(720 - width / 2, 900 - height, width, height))
            << state;
    }
}

TEST_F(NotchWindow, theWindowFollowsTheFlagsOnceTheyHaveStayedForFiftyMilliseconds) {
    screens.setPressedMouseButtons(1);
    const auto moves = window().durations().size();
    model().setFileDragActive(true);
    time.advance(49ms);
    model().setDragTargetActive(true);
    time.advance(49ms);
    EXPECT_EQ(window().frame(), atRest);
    time.advance(1ms);
    EXPECT_EQ(window().frame(), QRectF(570, 821, 300, 79));
    EXPECT_EQ(window().durations().size(), moves + 1);
    EXPECT_EQ(window().durations().back(), 250ms);
}

TEST_F(NotchWindow, aFrameThatStaysIsLeftAlone) {
    beginDrag(true);
    time.advance(100ms);
    const auto moves = window().durations().size();
    model().setDragTargetActive(true);
    time.advance(100ms);
    EXPECT_EQ(window().durations().size(), moves);
}

TEST_F(NotchWindow, theMouseIsSetOnlyWhenItChanges) {
    beginDrag(true);
    time.advance(100ms);
    const int changes = window().mouseChanges();
    model().setDragTargetActive(true);
    time.advance(100ms);
    EXPECT_EQ(window().mouseChanges(), changes);
}

TEST_F(NotchWindow, itTakesTheMouseWhileADropIsPossibleOrItemsShowAndNotOtherwise) {
    point(720, 899);
    EXPECT_TRUE(model().isHovering());
    EXPECT_TRUE(window().ignoresMouseEvents()) << "an empty shelf has nothing to click";
    hold(1);
    EXPECT_FALSE(window().ignoresMouseEvents());
    point(100, 100);
    EXPECT_TRUE(window().ignoresMouseEvents());
    beginDrag(true);
    time.advance(100ms);
    EXPECT_FALSE(window().ignoresMouseEvents());
    release();
    time.advance(100ms);
    EXPECT_TRUE(window().ignoresMouseEvents());
}

TEST_F(NotchWindow, noShelfIsWiderThanItsScreen) {
    hold(9);
    point(720, 899);
    EXPECT_EQ(targetFrame(model(), QRectF(0, 0, 551, 400)).width(), 550);
    EXPECT_EQ(targetFrame(model(), QRectF(0, 0, 512, 400)), QRectF(0, 176, 512, 224));
}

TEST_F(NotchWindow, aShelfThatLosesAnItemKeepsItsWidthUnderThePointer) {
    hold(5);
    point(720, 899);
    point(500, 750); // on the first tile
    model().removeItem(model().items().first().id);
    time.advance(1s);
    EXPECT_TRUE(model().isHovering());
    EXPECT_EQ(window().frame().width(), 465);
}

TEST_F(NotchWindow, aShelfThatIsClearedGetsOutOfTheWay) {
    hold(5);
    point(720, 899);
    point(720, 750);
    model().clearAll();
    time.advance(1s);
    EXPECT_EQ(window().frame(), atRest);
    EXPECT_TRUE(window().ignoresMouseEvents());
    EXPECT_FALSE(model().isHovering());
}

// Hovering.

TEST_F(NotchWindow, hoveringNeedsTheTopThreePointsOfTheScreen) {
    point(720, 896.5);
    EXPECT_FALSE(model().isHovering());
    point(720, 897);
    EXPECT_TRUE(model().isHovering());
}

TEST_F(NotchWindow, theBandReachesTenPointsBeyondTheNotchOnBothSides) {
    for (const double inside : {560.0, 880.0}) {
        point(inside, 900);
        EXPECT_TRUE(model().isHovering()) << inside;
        point(100, 100);
        EXPECT_FALSE(model().isHovering());
    }
    for (const double outside : {559.5, 880.5}) {
        point(outside, 900);
        EXPECT_FALSE(model().isHovering()) << outside;
    }
}

TEST_F(NotchWindow, leavingNeedsThePointerToGoFurtherThanEnteringDid) {
    hold(2);
    point(720, 899);
    ASSERT_EQ(window().frame(), QRectF(570, 676, 300, 224));
    point(560, 666);
    EXPECT_TRUE(model().isHovering());
    point(559.5, 666);
    EXPECT_FALSE(model().isHovering());
    point(720, 899);
    point(720, 665.5);
    EXPECT_FALSE(model().isHovering());
}

TEST_F(NotchWindow, aPointerThatIsFasterThanTheWindowIsOnTheShelfThatOpens) {
    hold(2);
    screens.setMouseLocation({720, 899});
    monitors.mouse(eventMask::mouseMoved);
    time.runPending();
    ASSERT_EQ(window().frame(), atRest);
    screens.setMouseLocation({720, 700}); // where it will be open
    monitors.mouse(eventMask::mouseMoved);
    time.runPending();
    EXPECT_TRUE(model().isHovering());
}

TEST_F(NotchWindow, twoLooksInOneTurnBringItToTheFrontOnce) {
    const int showings = window().showings();
    screens.setMouseLocation({720, 899});
    monitors.mouse(eventMask::mouseMoved);
    monitors.mouse(eventMask::mouseMoved);
    time.runPending();
    EXPECT_EQ(window().showings(), showings + 1);
}

TEST_F(NotchWindow, theBandIsOfItsOwnScreenAndNotOfTheOneAbove) {
    screens.setKeyboardScreen(0);
    const QList<Screen> stacked{{.number = 1, .localizedName = {}, .frame = {0, 0, 1440, 900}, .visibleFrame = {}},
                                {.number = 2, .localizedName = {}, .frame = {0, 900, 1440, 900}, .visibleFrame = {}}};
    screens.setScreens(stacked);
    point(720, 900.5);
    EXPECT_FALSE(model().isHovering());
    point(720, 900);
    EXPECT_TRUE(model().isHovering());
}

TEST_F(NotchWindow, onAScreenWithoutANotchTheBandIs24PointsHighAndHoveringStillNeedsTheTop3Points) {
    hold(1);
    EXPECT_EQ(window().frame().height(), 24);
    point(720, 890); // within the band
    EXPECT_FALSE(model().isHovering());
    EXPECT_TRUE(window().ignoresMouseEvents());
    point(720, 898);
    EXPECT_EQ(window().frame().height(), 224);
}

TEST_F(NotchWindow, hoveringIsSetInATurnOfItsOwn) {
    screens.setMouseLocation({720, 899});
    monitors.mouse(eventMask::mouseMoved);
    EXPECT_FALSE(model().isHovering());
    time.runPending();
    EXPECT_TRUE(model().isHovering());
}

TEST_F(NotchWindow, eachSourceAloneSeesThePointer) {
    screens.setMouseLocation({720, 899});
    monitors.mouse(eventMask::mouseMoved, true); // over a window of our own
    time.runPending();
    EXPECT_TRUE(model().isHovering());
    screens.setMouseLocation({100, 100});
    monitors.mouse(eventMask::mouseMoved, false);
    time.runPending();
    EXPECT_FALSE(model().isHovering());
    screens.setMouseLocation({720, 899});
    time.advance(50ms);
    EXPECT_TRUE(model().isHovering());
}

TEST_F(NotchWindow, theLocalMonitorSwallowsNothing) {
    monitors.setActive(true);
    EXPECT_FALSE(monitors.send({.type = eventMask::leftMouseUp, .keyCode = -1, .scrollDelta = {}}));
}

// Drags of others.

TEST_F(NotchWindow, aDragOfPlainTextOpensNothingAndAFileDoesAndSoDoesASecondOne) {
    beginDrag(false);
    time.advance(100ms);
    EXPECT_FALSE(model().isFileDragActive());
    EXPECT_EQ(window().frame(), atRest);
    release();
    for (int drag = 0; drag < 2; ++drag) {
        beginDrag(true);
        EXPECT_TRUE(model().isFileDragActive());
        time.advance(100ms);
        EXPECT_EQ(window().frame().height(), 79);
        release();
        time.advance(100ms);
        EXPECT_FALSE(model().isFileDragActive());
        EXPECT_EQ(window().frame(), atRest);
    }
}

TEST_F(NotchWindow, aStrokeThatDragsNothingOpensNothingThoughFilesWereDraggedBefore) {
    beginDrag(true);
    release();
    time.advance(1s);
    screens.setPressedMouseButtons(1);
    monitors.mouse(eventMask::leftMouseDragged);
    time.advance(1s);
    EXPECT_FALSE(model().isFileDragActive());
}

TEST_F(NotchWindow, whatWasDraggedBeforeTheShelfWasThereOpensNothing) {
    controller.reset();
    drags.begin(true);
    drags.end();
    time.runPending(); // heard by nobody
    make();
    screens.setPressedMouseButtons(1);
    monitors.mouse(eventMask::leftMouseDragged);
    time.advance(100ms);
    EXPECT_FALSE(model().isFileDragActive());
}

TEST_F(NotchWindow, aDragOpensItThoughThePointerRestsAndItsProgramAnswersLate) {
    drags.beSlow();
    screens.setPressedMouseButtons(1);
    drags.begin(true);
    time.advance(10ms);
    EXPECT_FALSE(model().isFileDragActive());
    drags.answerWithFiles();
    time.runPending();
    EXPECT_TRUE(model().isFileDragActive());
    time.advance(50ms);
    EXPECT_EQ(window().frame().height(), 79);
}

TEST_F(NotchWindow, everyButtonDragsAndEveryButtonEndsIt) {
    for (const quint32 down : {eventMask::leftMouseDragged, eventMask::rightMouseDragged, eventMask::otherMouseDragged})
        for (const quint32 up : {eventMask::leftMouseUp, eventMask::rightMouseUp, eventMask::otherMouseUp}) {
            screens.setPressedMouseButtons(1);
            drags.begin(true);
            monitors.mouse(down);
            EXPECT_TRUE(model().isFileDragActive());
            monitors.mouse(up);
            EXPECT_FALSE(model().isFileDragActive());
            release();
            time.advance(100ms);
        }
}

TEST_F(NotchWindow, aReleaseThatNoMonitorSawIsCaughtWithinFiftyMilliseconds) {
    beginDrag(true);
    time.advance(100ms);
    screens.setPressedMouseButtons(0);
    time.advance(50ms);
    EXPECT_FALSE(model().isFileDragActive());
    monitors.mouse(eventMask::leftMouseDragged); // the pasteboard still holds the file
    EXPECT_FALSE(model().isFileDragActive());
}

TEST_F(NotchWindow, aDragThatIsCancelledWithTheButtonDownIsOver) {
    beginDrag(true);
    time.advance(100ms);
    drags.end();
    time.advance(60ms);
    EXPECT_FALSE(model().isFileDragActive());
    EXPECT_EQ(window().frame(), atRest);
    monitors.mouse(eventMask::leftMouseDragged);
    EXPECT_FALSE(model().isFileDragActive());
}

TEST_F(NotchWindow, aDragWhoseProgramDiesInsideTheShelfLeavesItClosed) {
    beginDrag(false);
    time.advance(100ms);
    model().setDragTargetActive(true);
    model().setHovering(true);
    drags.end();
    time.advance(1s);
    EXPECT_FALSE(model().isDragTargetActive());
    EXPECT_EQ(window().frame(), atRest);
}

TEST_F(NotchWindow, theEndOfAFileDragEndsItsBeingInsideToo) {
    beginDrag(true);
    model().setDragTargetActive(true);
    monitors.mouse(eventMask::leftMouseUp);
    EXPECT_FALSE(model().isDragTargetActive());
}

TEST_F(NotchWindow, anyDragFindsTheBandAndOpensNothing) {
    beginDrag(false);
    time.runPending();
    EXPECT_FALSE(window().ignoresMouseEvents());
    EXPECT_EQ(window().frame(), atRest);
    release();
    time.runPending();
    EXPECT_FALSE(window().ignoresMouseEvents()) << "the drop may still look for its target";
    time.advance(50ms);
    EXPECT_TRUE(window().ignoresMouseEvents());
}

TEST_F(NotchWindow, aReleaseThatIsHeardOfLateDoesNotCompleteTheNextDrag) {
    drags.beSlow();
    screens.setPressedMouseButtons(1);
    drags.begin(true);
    monitors.mouse(eventMask::leftMouseUp); // of the click before
    drags.answerWithFiles();
    time.runPending();
    EXPECT_TRUE(model().isFileDragActive());
}

TEST_F(NotchWindow, aDragThatWasKnownToBeOfFilesOnlyAfterItsEndOpensNothing) {
    for (const bool isAfterAnother : {true, false}) {
        if (isAfterAnother) {
            drags.begin(true);
            time.advance(100ms);
            drags.end();
            time.advance(100ms);
        }
        drags.beSlow();
        drags.begin(true);
        time.advance(100ms);
        drags.end();
        time.advance(100ms);
        drags.answerWithFiles();
        time.advance(100ms);
        screens.setPressedMouseButtons(1);
        monitors.mouse(eventMask::leftMouseDragged);
        EXPECT_FALSE(model().isFileDragActive()) << isAfterAnother;
        screens.setPressedMouseButtons(0);
        monitors.mouse(eventMask::leftMouseUp);
    }
}

TEST_F(NotchWindow, aDragThatIsKnownToBeOfFilesWithTheButtonUpIsOverAtTheNextLook) {
    drags.beSlow();
    screens.setPressedMouseButtons(1);
    drags.begin(true);
    time.advance(100ms);
    screens.setPressedMouseButtons(0); // and no monitor sees it
    time.advance(100ms);
    drags.answerWithFiles();
    time.runPending();
    ASSERT_TRUE(model().isFileDragActive());
    time.advance(50ms);
    EXPECT_FALSE(model().isFileDragActive());
}

TEST_F(NotchWindow, aReleaseWithoutADragOfFilesLeavesATextThatIsInside) {
    model().setDragTargetActive(true);
    monitors.mouse(eventMask::rightMouseUp);
    EXPECT_TRUE(model().isDragTargetActive());
}

TEST_F(NotchWindow, aDragOutOfTheShelfItselfIsNotLookedAtWhileItIsMarked) {
    model().setShelfItemDragActive(true);
    beginDrag(true);
    time.advance(100ms);
    EXPECT_FALSE(model().isFileDragActive());
}

TEST_F(NotchWindow, aDropThatComesLateOpensTheShelfUnderThePointer) {
    screens.setMouseLocation({720, 899});
    beginDrag(true);
    model().setDragTargetActive(true);
    model().setHovering(true);
    time.advance(300ms);
    release();
    time.advance(400ms);
    ASSERT_EQ(window().frame(), atRest);
    model().addFile(file("/late.txt"));
    time.advance(60ms);
    EXPECT_EQ(window().frame().height(), 224);
}

TEST_F(NotchWindow, aDropDuringTheClosingIsHeldAndShown) {
    screens.setMouseLocation({720, 899});
    beginDrag(true);
    time.advance(300ms);
    release();
    time.advance(20ms);
    model().addFile(file("/a.txt"));
    time.advance(100ms);
    EXPECT_EQ(model().items().size(), 1);
    EXPECT_EQ(window().frame().height(), 224);
}

TEST_F(NotchWindow, aDragComesToTheFrontAndSoDoesHovering) {
    int showings = window().showings();
    beginDrag(false);
    time.runPending();
    EXPECT_GT(window().showings(), showings);
    release();
    showings = window().showings();
    point(720, 899);
    EXPECT_EQ(window().showings(), showings + 1);
    point(730, 899);
    EXPECT_EQ(window().showings(), showings + 1);
}

TEST_F(NotchWindow, removingWhatIsDraggedOutHarmsNothing) {
    files.insert(text("/a.txt"));
    model().addFile(file("/a.txt"));
    time.runPending();
    const ShelfItem item = model().items().first();
    beginDrag(true);
    model().removeItem(item.id);
    model().removeAfterMove(item, *item.url, notch::moveAttempts);
    files.clear();
    release();
    time.advance(3s);
    EXPECT_TRUE(model().items().isEmpty());
}

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

// Without a mouse.

TEST_F(NotchWindow, anEmptyShelfHasNothingToOpenByTheKeyboard) {
    EXPECT_FALSE(controller->openWithKeyboard());
    EXPECT_FALSE(window().hasKeyboard());
}

TEST_F(NotchWindow, openedByTheKeyboardItStaysOpenWhereverThePointerIs) {
    hold(2);
    EXPECT_TRUE(controller->openWithKeyboard());
    EXPECT_TRUE(window().hasKeyboard());
    EXPECT_EQ(window().frame().height(), 224);
    EXPECT_FALSE(window().ignoresMouseEvents());
    time.advance(1min);
    EXPECT_EQ(window().frame().height(), 224);
    EXPECT_TRUE(model().showsItems());
}

TEST_F(NotchWindow, leavingItByTheKeyboardClosesItAndGivesTheKeyboardBack) {
    hold(2);
    ASSERT_TRUE(controller->openWithKeyboard());
    leave();
    time.advance(100ms);
    EXPECT_FALSE(window().hasKeyboard());
    EXPECT_EQ(window().frame(), atRest);
    EXPECT_EQ(monitors.globalCount(), 1);
    leave(); // twice is as once
}

TEST_F(NotchWindow, leavingItByTheKeyboardLooksWhereThePointerIsAtOnce) {
    hold(2);
    ASSERT_TRUE(controller->openWithKeyboard());
    leave();
    time.runPending();
    EXPECT_FALSE(model().isHovering());
    screens.setMouseLocation({720, 899});
    ASSERT_TRUE(controller->openWithKeyboard());
    leave();
    time.runPending();
    EXPECT_TRUE(model().isHovering()) << "the pointer is on it";
}

TEST_F(NotchWindow, aPointerThatLeftAMomentBeforeDoesNotCloseWhatTheKeyboardOpened) {
    hold(2);
    point(720, 899);
    screens.setMouseLocation({100, 100});
    monitors.mouse(eventMask::mouseMoved);
    ASSERT_TRUE(controller->openWithKeyboard());
    time.runPending();
    EXPECT_TRUE(model().isHovering());
}

TEST_F(NotchWindow, aClickElsewhereLeavesIt) {
    hold(2);
    ASSERT_TRUE(controller->openWithKeyboard());
    monitors.mouseDown(eventMask::leftMouseDown, true);
    EXPECT_TRUE(window().hasKeyboard());
    monitors.mouseDown(eventMask::leftMouseDown, false);
    EXPECT_FALSE(window().hasKeyboard());
    time.advance(100ms);
    EXPECT_EQ(window().frame(), atRest);
}

TEST_F(NotchWindow, theLastItemRemovedLeavesIt) {
    hold(1);
    ASSERT_TRUE(controller->openWithKeyboard());
    model().clearAll();
    time.advance(100ms);
    EXPECT_FALSE(window().hasKeyboard());
    EXPECT_EQ(window().frame(), atRest);
}

} // namespace
} // namespace tavrine
