// The one window of the shelf: where it is, and what opens it.
#include "NotchWindowTest.h"

namespace tavrine {
namespace {

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
