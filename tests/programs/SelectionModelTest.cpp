#include "programs/screencapture/SelectionModel.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

using State = SelectionModel::State;

class Selection : public testing::Test {
protected:
    void key(OverlayKey which, bool isShift = false, bool isControl = false) {
        model.keyPressed(which, isShift, isControl, false);
    }
    void dragTo(QPoint place) {
        model.buttonPressed(1, {100, 100});
        model.pointerMoved(place);
    }
    void click(int button, QPoint place) {
        model.buttonPressed(button, place);
        model.buttonReleased(button, place);
    }

    SelectionModel model{QRect(0, 0, 1000, 800), {500, 400}};
};

TEST_F(Selection, aimsAtThePointerAndHasNothing) {
    EXPECT_EQ(model.state(), State::aiming);
    EXPECT_EQ(model.pointer(), QPoint(500, 400));
    EXPECT_EQ(model.selection(), std::nullopt);
}

TEST_F(Selection, aDragHoldsBothOfItsEndPixels) {
    dragTo({109, 104});
    EXPECT_EQ(model.selection(), QRect(100, 100, 10, 5));
    model.buttonReleased(1, {110, 104});
    EXPECT_EQ(model.state(), State::accepted);
    EXPECT_EQ(model.selection(), QRect(100, 100, 11, 5));
}

TEST_F(Selection, aDragStaysOnThePlaneOnWhichItBegan) {
    model.addPlane({0, 0, 200, 800});
    model.addPlane({300, 0, 700, 800});
    dragTo({350, 120});
    EXPECT_EQ(model.selection(), QRect(QPoint(100, 100), QPoint(199, 120)));
    model.buttonReleased(1, {400, 130});
    EXPECT_EQ(model.selection(), QRect(QPoint(100, 100), QPoint(199, 130)));
}

TEST_F(Selection, keysDoNotLeaveThePlaneButThePointerDoes) {
    model.addPlane({0, 0, 200, 800});
    model.addPlane({300, 0, 700, 800});
    model.pointerMoved({195, 10});
    key(OverlayKey::right, false, true);
    EXPECT_EQ(model.pointer(), QPoint(199, 10));
    model.pointerMoved({305, 10});
    EXPECT_EQ(model.pointer(), QPoint(305, 10));
    key(OverlayKey::left, false, true);
    EXPECT_EQ(model.pointer(), QPoint(300, 10));
}

TEST_F(Selection, aDragMayGoInAnyDirection) {
    dragTo({91, 96});
    EXPECT_EQ(model.selection(), QRect(91, 96, 10, 5));
    model.pointerMoved({109, 96});
    EXPECT_EQ(model.selection(), QRect(100, 96, 10, 5));
}

TEST_F(Selection, aDragOfOnePixelIsEnough) {
    dragTo({101, 100});
    model.buttonReleased(1, {101, 100});
    EXPECT_EQ(model.selection(), QRect(100, 100, 2, 1));
}

TEST_F(Selection, aDragThatCameBackToItsPixelChoosesIt) {
    dragTo({120, 120});
    model.buttonReleased(1, {100, 100});
    EXPECT_EQ(model.selection(), QRect(100, 100, 1, 1));
}

TEST_F(Selection, aClickChoosesNothing) {
    click(1, {100, 100});
    EXPECT_EQ(model.state(), State::aiming);
    EXPECT_EQ(model.selection(), std::nullopt);
}

TEST_F(Selection, aReleaseWithoutItsPressMeansNothing) {
    model.buttonReleased(1, {10, 10});
    model.buttonReleased(3, {10, 10});
    EXPECT_EQ(model.state(), State::aiming);
}

TEST_F(Selection, escapeAndARightClickCancelWhateverTheState) {
    for (const bool isEscape : {true, false})
        for (const State state : {State::aiming, State::dragging, State::picking}) {
            SelectionModel each(QRect(0, 0, 1000, 800), {5, 5});
            if (state == State::dragging)
                each.buttonPressed(1, {10, 10});
            if (state == State::picking)
                each.keyPressed(OverlayKey::space, false, false, false);
            ASSERT_EQ(each.state(), state);
            if (isEscape) {
                each.keyPressed(OverlayKey::escape, false, false, false);
            } else {
                each.buttonPressed(3, {10, 10});
                EXPECT_EQ(each.state(), state) << "the release would reach another program";
                each.buttonReleased(3, {10, 10});
            }
            EXPECT_EQ(each.state(), State::cancelled);
            EXPECT_EQ(each.selection(), std::nullopt);
        }
}

TEST_F(Selection, nothingChangesWhatIsFinished) {
    key(OverlayKey::escape);
    dragTo({300, 300});
    model.buttonReleased(1, {300, 300});
    key(OverlayKey::space);
    EXPECT_EQ(model.state(), State::cancelled);
}

TEST_F(Selection, otherButtonsMeanNothing) {
    for (const int button : {2, 4, 5, 8})
        click(button, {10, 10});
    EXPECT_EQ(model.state(), State::aiming);
}

TEST_F(Selection, arrowKeysMoveTheSelectionByAPixelAndWithControlByTen) {
    dragTo({199, 149});
    key(OverlayKey::right);
    key(OverlayKey::down, false, true);
    EXPECT_EQ(model.selection(), QRect(101, 110, 100, 50));
    key(OverlayKey::left, false, true);
    key(OverlayKey::up);
    EXPECT_EQ(model.selection(), QRect(91, 109, 100, 50));
}

TEST_F(Selection, shiftAndArrowKeysMoveTheFreeCorner) {
    dragTo({199, 149});
    key(OverlayKey::right, true);
    key(OverlayKey::up, true, true);
    EXPECT_EQ(model.selection(), QRect(100, 100, 101, 40));
}

TEST_F(Selection, whatKeysAddedStaysWhileThePointerGoesOn) {
    dragTo({199, 149});
    key(OverlayKey::right);
    key(OverlayKey::down, true);
    model.pointerMoved({209, 149});
    EXPECT_EQ(model.selection(), QRect(101, 100, 110, 51));
    model.buttonReleased(1, {209, 149});
    EXPECT_EQ(model.selection(), QRect(101, 100, 110, 51));
}

TEST_F(Selection, aPressThatOnlyKeysResizedIsTaken) {
    model.buttonPressed(1, {100, 100});
    key(OverlayKey::right, true);
    model.buttonReleased(1, {100, 100});
    EXPECT_EQ(model.selection(), QRect(100, 100, 2, 1));
}

TEST_F(Selection, theSelectionStopsAtTheScreensEdgeAndKeepsItsSize) {
    model.buttonPressed(1, {3, 3});
    model.pointerMoved({12, 12});
    for (int i = 0; i < 5; ++i)
        key(OverlayKey::left);
    EXPECT_EQ(model.selection(), QRect(0, 3, 10, 10));
    key(OverlayKey::left, false, true);
    EXPECT_EQ(model.selection(), QRect(0, 3, 10, 10));
}

TEST_F(Selection, theFreeCornerStopsAtTheScreensEdge) {
    model.buttonPressed(1, {990, 790});
    model.pointerMoved({1200, 900});
    EXPECT_EQ(model.selection(), QRect(990, 790, 10, 10));
    key(OverlayKey::right, true);
    EXPECT_EQ(model.selection(), QRect(990, 790, 10, 10));
}

TEST_F(Selection, arrowKeysMoveThePointerWhileAiming) {
    key(OverlayKey::left);
    EXPECT_EQ(model.takePointerMove(), QPoint(499, 400));
    EXPECT_EQ(model.takePointerMove(), std::nullopt);
    EXPECT_EQ(model.pointer(), QPoint(499, 400));
    model.pointerMoved({0, 0});
    key(OverlayKey::up);
    EXPECT_EQ(model.pointer(), QPoint(0, 0));
}

TEST_F(Selection, aPointerThatFollowsTheKeysLateTakesNoStepBack) {
    for (int i = 0; i < 3; ++i) {
        key(OverlayKey::right);
        EXPECT_TRUE(model.takePointerMove());
    }
    model.pointerMoved({501, 400});
    EXPECT_EQ(model.pointer(), QPoint(503, 400));
    key(OverlayKey::right); // not sent yet
    model.pointerMoved({503, 400});
    EXPECT_EQ(model.pointer(), QPoint(504, 400));
    EXPECT_EQ(model.takePointerMove(), QPoint(504, 400));
    model.pointerMoved({504, 400});
    EXPECT_EQ(model.pointer(), QPoint(504, 400));
    model.pointerMoved({501, 400}); // the person's own
    EXPECT_EQ(model.pointer(), QPoint(501, 400));
}

TEST_F(Selection, returnTakesADragButNotABarePress) {
    model.buttonPressed(1, {100, 100});
    key(OverlayKey::enter);
    EXPECT_EQ(model.state(), State::dragging);
    model.pointerMoved({110, 110});
    key(OverlayKey::enter);
    EXPECT_EQ(model.state(), State::accepted);
    EXPECT_EQ(model.selection(), QRect(100, 100, 11, 11));
}

TEST_F(Selection, returnSetsTheFirstCornerAndTakesWhatTheKeysMadeOfIt) {
    key(OverlayKey::enter);
    EXPECT_EQ(model.state(), State::dragging);
    EXPECT_EQ(model.anchor(), QPoint(500, 400));
    key(OverlayKey::right);
    key(OverlayKey::down, true);
    key(OverlayKey::right, false, true);
    EXPECT_EQ(model.takePointerMove(), QPoint(511, 410));
    EXPECT_EQ(model.selection(), QRect(500, 400, 12, 11));
    key(OverlayKey::enter);
    EXPECT_EQ(model.state(), State::accepted);
    EXPECT_EQ(model.selection(), QRect(500, 400, 12, 11));
}

TEST_F(Selection, spaceTakesWhatTheKeysMadeAsWell) {
    key(OverlayKey::enter);
    key(OverlayKey::up, true);
    key(OverlayKey::space);
    EXPECT_EQ(model.state(), State::accepted);
    EXPECT_EQ(model.selection(), QRect(500, 390, 1, 11));
}

TEST_F(Selection, aCornerThatHasNotMovedIsNotTakenByAnyKeyOrClick) {
    key(OverlayKey::enter);
    key(OverlayKey::enter);
    key(OverlayKey::space);
    click(1, {500, 400});
    EXPECT_EQ(model.state(), State::dragging);
    key(OverlayKey::escape);
    EXPECT_EQ(model.state(), State::cancelled);
}

TEST_F(Selection, aHeldReturnNeitherBeginsNorTakes) {
    model.keyPressed(OverlayKey::enter, false, false, true);
    EXPECT_EQ(model.state(), State::aiming);
    key(OverlayKey::enter);
    key(OverlayKey::right);
    model.keyPressed(OverlayKey::enter, false, false, true);
    model.keyPressed(OverlayKey::space, false, false, true);
    EXPECT_EQ(model.state(), State::dragging);
}

TEST_F(Selection, theMouseGoesOnWhatTheKeysBeganAndAClickTakesIt) {
    key(OverlayKey::enter);
    model.buttonReleased(1, {510, 410}); // its press was another program's
    EXPECT_EQ(model.state(), State::dragging);
    model.pointerMoved({519, 409});
    EXPECT_EQ(model.selection(), QRect(500, 400, 20, 10));
    model.buttonPressed(1, {529, 409});
    EXPECT_EQ(model.state(), State::dragging);
    model.buttonReleased(1, {529, 409});
    EXPECT_EQ(model.state(), State::accepted);
    EXPECT_EQ(model.selection(), QRect(500, 400, 30, 10));
}

TEST_F(Selection, whatTheKeysDragStaysOnItsPlane) {
    model.addPlane({0, 0, 505, 800});
    key(OverlayKey::enter);
    key(OverlayKey::right, true);
    EXPECT_EQ(model.selection(), QRect(500, 400, 5, 1));
}

TEST_F(Selection, shiftMovesTheAimByTenAsControlDoes) {
    key(OverlayKey::left, true);
    key(OverlayKey::up, false, true);
    EXPECT_EQ(model.pointer(), QPoint(490, 390));
}

TEST_F(Selection, spacePicksTheTopmostWindowUnderThePointer) {
    model.setTargets({QRect(400, 300, 200, 200), QRect(300, 200, 200, 200), QRect(0, 0, 1000, 800)});
    key(OverlayKey::space);
    EXPECT_EQ(model.state(), State::picking);
    EXPECT_EQ(model.selection(), QRect(400, 300, 200, 200));
    model.pointerMoved({350, 250});
    EXPECT_EQ(model.selection(), QRect(300, 200, 200, 200));
    model.pointerMoved({10, 10});
    EXPECT_EQ(model.selection(), QRect(0, 0, 1000, 800));
    click(1, {350, 250});
    EXPECT_EQ(model.state(), State::accepted);
    EXPECT_EQ(model.selection(), QRect(300, 200, 200, 200));
}

TEST_F(Selection, spaceAgainAimsAgain) {
    key(OverlayKey::space);
    key(OverlayKey::space);
    EXPECT_EQ(model.state(), State::aiming);
    EXPECT_EQ(model.selection(), std::nullopt);
}

TEST_F(Selection, aHeldSpaceCountsOnce) {
    key(OverlayKey::space);
    for (int i = 0; i < 5; ++i)
        model.keyPressed(OverlayKey::space, false, false, true);
    EXPECT_EQ(model.state(), State::picking);
}

TEST_F(Selection, spaceMeansNothingDuringADrag) {
    dragTo({120, 120});
    key(OverlayKey::space);
    EXPECT_EQ(model.state(), State::dragging);
}

TEST_F(Selection, aWindowIsCutToTheScreenAndOneOutsideIsNone) {
    model.setTargets({QRect(-50, -60, 100, 100), QRect(2000, 0, 10, 10)});
    key(OverlayKey::space);
    model.pointerMoved({5, 5});
    EXPECT_EQ(model.selection(), QRect(0, 0, 50, 40));
    model.pointerMoved({60, 60});
    EXPECT_EQ(model.selection(), std::nullopt);
    click(1, {60, 60});
    EXPECT_EQ(model.state(), State::picking) << "there is nothing to take";
}

} // namespace
} // namespace tavrine
