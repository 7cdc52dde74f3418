#include "recording/ScreenRecorderSelectionView.h"

#include "look/Indicators.h"
#include "look/Look.h"
#include "recording/RecorderTest.h"
#include "recording/RecordingSetupCardView.h"
#include "recording/SeenViews.h"

#include <QTest>

namespace tavrine {
namespace {

using testing::Contains;
using testing::IsSupersetOf;

class SelectionView : public testing::Test {
protected:
    SelectionView() {
        view.resize(1000, 600);
        view.show();
    }
    void drag(QPoint from, QPoint to) {
        QTest::mousePress(&view, Qt::LeftButton, {}, from);
        QTest::mouseMove(&view, to);
        QTest::mouseRelease(&view, Qt::LeftButton, {}, to);
    }
    [[nodiscard]] RecordingSetupCardView &card() { return *view.findChild<RecordingSetupCardView *>(); }

    QStringList calls;
    std::shared_ptr<ScreenRecorderSelectionModel> model = std::make_shared<ScreenRecorderSelectionModel>(
        QSizeF(1000, 600), 1.0,
        ScreenRecorderSelectionModel::Actions{.onMic = [this] { calls << text("mic"); },
                                              .onStart = [this] { calls << text("start"); },
                                              .onCancel = [this] { calls << text("cancel"); }});
    ScreenRecorderSelectionView view{model};
};

TEST_F(SelectionView, itTellsHowToLeaveItAndItsCardWhatIsSetUp) {
    EXPECT_THAT(wordsOn(view), Contains(text("Press ESC to cancel")));
    drag({100, 100}, {500, 400});
    QCoreApplication::sendPostedEvents();
    EXPECT_THAT(wordsOn(card()),
                IsSupersetOf({text("Screen Recording Setup"), text("AUDIO INPUTS"), text("START DELAY")}));
}

TEST_F(SelectionView, theSpaceBarEndsARecordingAndSaysSoOnlyWhileThereIsOne) {
    EXPECT_FALSE(view.accessibleDescription().contains(text("Space")));
    QTest::keyClick(&view, Qt::Key_Space);
    EXPECT_THAT(calls, IsEmpty());
    ScreenRecorderSelectionView over(std::make_shared<ScreenRecorderSelectionModel>(
        QSizeF(1000, 600), 1.0,
        ScreenRecorderSelectionModel::Actions{
            .onMic = {}, .onStart = {}, .onCancel = {}, .onStop = [this] { calls << text("stop"); }}));
    over.resize(1000, 600);
    EXPECT_TRUE(over.accessibleDescription().contains(text("Press Space to stop the recording. Press ESC to cancel")));
    over.show();
    QTest::keyClick(&over, Qt::Key_Space);
    EXPECT_THAT(calls, ElementsAre(text("stop")));
    calls.clear();
    QTest::mousePress(&over, Qt::LeftButton, {}, {100, 100});
    QTest::keyClick(&over, Qt::Key_Space); // in the middle of a drag
    EXPECT_THAT(calls, IsEmpty());
    QTest::mouseMove(&over, {700, 500});
    QTest::mouseRelease(&over, Qt::LeftButton, {}, {700, 500});
    QTest::keyClick(&over, Qt::Key_Space); // over the card
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(SelectionView, aDragOpensTheCardOverTheArea) {
    EXPECT_TRUE(card().isHidden());
    EXPECT_EQ(view.cursor().shape(), Qt::CrossCursor);
    drag({100, 100}, {700, 500});
    EXPECT_EQ(model->selection(), QRectF(100, 100, 600, 400));
    EXPECT_TRUE(card().isVisible());
    EXPECT_LE((card().geometry().center() - QPoint(400, 300)).manhattanLength(), 4); // rounded
    expectNames(card());
}

TEST_F(SelectionView, theCardStaysOnTheScreen) {
    drag({980, 580}, {999, 599});
    EXPECT_TRUE(view.rect().contains(card().geometry()));
    model->closeCard();
    drag({0, 0}, {15, 15});
    EXPECT_TRUE(view.rect().contains(card().geometry()));
}

TEST_F(SelectionView, onALowScreenTheCardIsLowerAndStillWhole) {
    drag({10, 10}, {400, 250});
    const int full = card().height();
    view.resize(512, 300); // 1024 by 600 pixels at twice their size
    EXPECT_LT(card().height(), full);
    EXPECT_TRUE(view.rect().contains(card().geometry())) << card().height();
    QRegion taken;
    for (const char *name : {"Close", "Mic", "System", "None (0s)", "3 Seconds", "5 Seconds", "Start Recording"}) {
        const auto *each = button(card(), name);
        const QRect place(each->mapTo(&view, QPoint()), each->size());
        EXPECT_TRUE(each->isVisible() && card().geometry().contains(place)) << name;
        EXPECT_FALSE(taken.intersects(place)) << name;
        taken += place;
    }
    int hints = 0;
    for (const auto *label : card().findChildren<look::Label *>())
        hints += label->text() == text("Either one records the microphone") && label->isVisible() ? 1 : 0;
    EXPECT_EQ(hints, 1);
    view.resize(1000, 600);
    EXPECT_EQ(card().height(), full);
}

TEST_F(SelectionView, onAScreenThatIsTooLowForTheCardItsButtonIsWithinReach) {
    view.resize(400, 160);
    drag({10, 10}, {200, 100});
    const auto *start = button(card(), "Start Recording");
    EXPECT_TRUE(view.rect().contains(QRect(start->mapTo(&view, QPoint()), start->size())));
}

TEST_F(SelectionView, aClickOnTheCardIsNoneOnTheOverlay) {
    drag({100, 100}, {700, 500});
    QTest::mouseClick(&card(), Qt::LeftButton, {}, {5, 60});
    EXPECT_TRUE(model->isConfirming());
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(SelectionView, aClickAloneCancels) {
    QTest::mouseClick(&view, Qt::LeftButton, {}, {50, 50});
    EXPECT_THAT(calls, ElementsAre(text("cancel")));
}

TEST_F(SelectionView, theRightButtonDragsNothing) {
    QTest::mouseClick(&view, Qt::RightButton, {}, {50, 50});
    EXPECT_THAT(calls, IsEmpty());
    EXPECT_EQ(model->selection(), std::nullopt);
}

TEST_F(SelectionView, arrowsMoveTheAreaAndWithShiftResizeIt) {
    drag({100, 100}, {300, 200});
    QTest::keyClick(&view, Qt::Key_Left);
    QTest::keyClick(&view, Qt::Key_Down);
    EXPECT_EQ(model->selection(), QRectF(99, 101, 200, 100));
    QTest::keyClick(&view, Qt::Key_Right, Qt::ShiftModifier);
    QTest::keyClick(&view, Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(model->selection(), QRectF(99, 101, 201, 99));
    QTest::keyClick(&view, Qt::Key_Down, Qt::ControlModifier);
    EXPECT_EQ(model->selection(), QRectF(99, 111, 201, 99));
}

TEST_F(SelectionView, returnTakesTheWholeScreenAndThenStarts) {
    QTest::keyClick(&view, Qt::Key_Return);
    EXPECT_EQ(model->selection(), QRectF(0, 0, 1000, 600));
    EXPECT_THAT(calls, IsEmpty());
    QTest::keyClick(&view, Qt::Key_Enter);
    EXPECT_THAT(calls, ElementsAre(text("start")));
}

TEST_F(SelectionView, arrowsMoveACrossAndReturnSetsItsCorners) {
    QTest::keyClick(&view, Qt::Key_Left);
    QTest::keyClick(&view, Qt::Key_Up, Qt::ShiftModifier);
    QTest::keyClick(&view, Qt::Key_Up, Qt::ControlModifier);
    EXPECT_EQ(model->cross(), QPointF(499, 280));
    EXPECT_EQ(model->selection(), std::nullopt);
    QTest::keyClick(&view, Qt::Key_Return);
    for (int i = 0; i < 3; ++i) {
        QTest::keyClick(&view, Qt::Key_Right, Qt::ShiftModifier);
        QTest::keyClick(&view, Qt::Key_Down, Qt::ShiftModifier);
    }
    EXPECT_FALSE(model->isConfirming());
    QTest::keyClick(&view, Qt::Key_Return);
    EXPECT_TRUE(card().isVisible());
    EXPECT_EQ(model->selection(), QRectF(499, 280, 30, 30));
    EXPECT_THAT(calls, IsEmpty());
    QTest::keyClick(&view, Qt::Key_Return);
    EXPECT_THAT(calls, ElementsAre(text("start")));
}

TEST_F(SelectionView, theSpaceBarSetsTheCornersToo) {
    QTest::keyClick(&view, Qt::Key_Space);
    for (int i = 0; i < 2; ++i)
        QTest::keyClick(&view, Qt::Key_Left, Qt::ShiftModifier);
    QTest::keyClick(&view, Qt::Key_Down, Qt::ShiftModifier);
    QTest::keyClick(&view, Qt::Key_Down);
    QTest::keyClick(&view, Qt::Key_Space);
    EXPECT_TRUE(card().isVisible());
    EXPECT_EQ(model->selection(), QRectF(480, 300, 20, 11));
    QTest::keyClick(&view, Qt::Key_Space); // over the card it is no start
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(SelectionView, aReturnThatIsHeldFromElsewhereSelectsNothing) {
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, {}, {}, true);
    QApplication::sendEvent(&view, &held);
    EXPECT_FALSE(model->isConfirming());
}

TEST_F(SelectionView, screenReadersAreToldWhereTheKeysHaveCome) {
    EXPECT_EQ(view.accessibleDescription(),
              text("Arrow keys and Return select an area, Return alone the whole screen. Press ESC to cancel"));
    QTest::keyClick(&view, Qt::Key_Right);
    EXPECT_EQ(view.accessibleDescription(), text("Cross at 501, 300. Press Return to set the first corner"));
    QTest::keyClick(&view, Qt::Key_Return);
    for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Right, Qt::Key_Down, Qt::Key_Down})
        QTest::keyClick(&view, key, Qt::ShiftModifier);
    EXPECT_EQ(view.accessibleDescription(), text("Area of 20 × 20. Press Return to take the area"));
    QTest::keyClick(&view, Qt::Key_Return);
    QTest::keyClick(&view, Qt::Key_Right, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(view.accessibleDescription(), text("Area of 30 × 20. Press ESC to cancel"));
}

TEST_F(SelectionView, theCrossIsSeenOnAnyGroundAndGoesWithTheMouse) {
    QPixmap frozen(1000, 600);
    frozen.fill(Qt::gray);
    ScreenRecorderSelectionView over(model, frozen);
    over.resize(1000, 600);
    over.show();
    const auto brightnessAt = [&over](QPoint place) { return over.grab().toImage().pixelColor(place).lightness(); };
    const int before = brightnessAt({500, 550});
    QTest::keyClick(&over, Qt::Key_Up);
    EXPECT_GT(brightnessAt({500, 550}), 240);
    EXPECT_GT(brightnessAt({20, 299}), 240);
    EXPECT_LT(brightnessAt({501, 550}), before); // its dark edge
    QTest::keyClick(&over, Qt::Key_Return);
    drag({100, 100}, {300, 200}); // on the other view of the same model
    EXPECT_EQ(model->selection(), QRectF(100, 100, 200, 100));
    EXPECT_EQ(brightnessAt({500, 550}), before);
}

TEST_F(SelectionView, theCardsControlsDoWhatTheySay) {
    model->selectAll();
    button(card(), "Mic")->click();
    EXPECT_FALSE(button(card(), "Mic")->isChecked()); // not before it was granted
    button(card(), "System")->click();
    EXPECT_TRUE(model->includesSystemAudio());
    button(card(), "5 Seconds")->click();
    EXPECT_EQ(model->timerDelay(), 5);
    button(card(), "Start Recording")->click();
    EXPECT_THAT(calls, ElementsAre(text("mic"), text("start")));
    button(card(), "Close")->click();
    EXPECT_TRUE(card().isHidden());
    EXPECT_TRUE(model->includesSystemAudio());
}

TEST_F(SelectionView, onADesktopWithoutTranslucentWindowsTheFrozenScreenShows) {
    QPixmap frozen(1000, 600);
    frozen.fill(Qt::green);
    ScreenRecorderSelectionView opaque(model, frozen);
    opaque.resize(1000, 600);
    model->drag({100, 100}, {300, 200});
    const QImage picture = opaque.grab().toImage();
    EXPECT_EQ(picture.pixelColor(150, 150), QColor(Qt::green));
    EXPECT_LT(picture.pixelColor(50, 500).green(), 200); // under the veil
    EXPECT_GT(picture.pixelColor(50, 500).green(), 100);
}

} // namespace
} // namespace tavrine
