// Drags of others over the one window of the shelf.
#include "NotchWindowTest.h"

namespace tavrine {
namespace {

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

TEST_F(NotchWindow, theEndOfADragIsToldHoweverItEndsAndWhateverItCarried) {
    int ends = 0;
    QObject::connect(&model(), &NotchViewModel::dragEnded, [&ends] { ++ends; });
    for (const bool holdsFiles : {false, true}) {
        ends = 0;
        beginDrag(holdsFiles);
        time.advance(100ms);
        EXPECT_EQ(ends, 0);
        drags.end();
        time.advance(100ms);
        EXPECT_EQ(ends, 1);
    }
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

} // namespace
} // namespace tavrine
