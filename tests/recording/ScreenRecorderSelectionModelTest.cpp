#include "recording/ScreenRecorderSelectionModel.h"

#include "adapters/fake/VirtualTime.h"
#include "recording/CountdownModel.h"

#include <QStringList>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

class Selection : public testing::Test {
protected:
    void dragOver(QRectF area) {
        model.drag(area.topLeft(), area.topLeft());
        model.drag(area.topLeft(), area.bottomRight());
        model.endDrag();
    }

    QStringList calls;
    ScreenRecorderSelectionModel model{{1000, 600},
                                       2,
                                       {.onMic = [this] { calls << QStringLiteral("mic"); },
                                        .onStart = [this] { calls << QStringLiteral("start"); },
                                        .onCancel = [this] { calls << QStringLiteral("cancel"); }}};
};

TEST_F(Selection, aDragInAnyDirectionGivesTheSameArea) {
    model.drag({300, 200}, {100, 50});
    EXPECT_EQ(model.selection(), QRectF(100, 50, 200, 150));
    EXPECT_EQ(model.sizeText(), QString::fromUtf8("400 × 300")); // what the movie will have
    EXPECT_FALSE(model.isConfirming());
}

TEST_F(Selection, theFirstChangeOfADragFixesItsStart) {
    model.drag({300, 200}, {310, 210});
    model.drag({0, 0}, {400, 300});
    EXPECT_EQ(model.selection(), QRectF(300, 200, 100, 100));
}

TEST_F(Selection, moreThanTenPointsEitherWayOpensTheCard) {
    for (const QSizeF size : {QSizeF(10, 200), QSizeF(200, 10), QSizeF(10, 10), QSizeF(0, 0)}) {
        calls.clear();
        model.closeCard();
        dragOver({{100, 100}, size});
        EXPECT_FALSE(model.isConfirming());
        EXPECT_THAT(calls, testing::ElementsAre(QStringLiteral("cancel")));
    }
    calls.clear();
    model.closeCard();
    dragOver({100, 100, 10.5, 10.5});
    EXPECT_TRUE(model.isConfirming());
    EXPECT_THAT(calls, testing::IsEmpty());
}

TEST_F(Selection, theKeysTakeNoAreaThatADragWouldNotAndGiveNothingUp) {
    model.setCorner();
    EXPECT_TRUE(model.hasCorner());
    model.moveCross({10, 200});
    model.setCorner();
    EXPECT_FALSE(model.isConfirming());
    model.moveCross({0.5, 0});
    model.setCorner();
    EXPECT_TRUE(model.isConfirming());
    EXPECT_EQ(model.selection(), QRectF(500, 300, 10.5, 200));
    EXPECT_THAT(calls, testing::IsEmpty());
}

TEST_F(Selection, theCrossStaysOnTheOverlayAndHasNoPartInADrag) {
    model.moveCross({-2000, 2000});
    EXPECT_EQ(model.cross(), QPointF(0, 600));
    model.setCorner();
    model.drag({100, 100}, {150, 150});
    EXPECT_EQ(model.selection(), QRectF(100, 100, 50, 50));
    EXPECT_EQ(model.cross(), std::nullopt);
    model.moveCross({10, 10});
    model.setCorner();
    EXPECT_EQ(model.cross(), std::nullopt);
    EXPECT_EQ(model.selection(), QRectF(100, 100, 50, 50));
}

TEST_F(Selection, afterTheCardIsClosedTheCrossBeginsAnew) {
    model.setCorner();
    model.moveCross({50, 50});
    model.setCorner();
    ASSERT_TRUE(model.isConfirming());
    model.moveCross({50, 50});
    EXPECT_EQ(model.selection(), QRectF(500, 300, 50, 50));
    model.closeCard();
    EXPECT_EQ(model.cross(), std::nullopt);
    EXPECT_FALSE(model.hasCorner());
    model.moveCross({1, 0});
    EXPECT_EQ(model.cross(), QPointF(501, 300));
}

TEST_F(Selection, aClickWithoutADragCancels) {
    model.endDrag();
    EXPECT_THAT(calls, testing::ElementsAre(QStringLiteral("cancel")));
}

TEST_F(Selection, whileTheCardIsOpenNoDragCounts) {
    dragOver({100, 100, 200, 100});
    dragOver({0, 0, 5, 5});
    EXPECT_EQ(model.selection(), QRectF(100, 100, 200, 100));
    EXPECT_TRUE(model.isConfirming());
    EXPECT_THAT(calls, testing::IsEmpty());
}

TEST_F(Selection, closingTheCardLeadsBackToTheDragAndKeepsTheSwitches) {
    dragOver({100, 100, 200, 100});
    model.flipMic();
    model.flipSystemAudio();
    model.setTimerDelay(5);
    model.closeCard();
    EXPECT_EQ(model.selection(), std::nullopt);
    EXPECT_FALSE(model.isConfirming());
    EXPECT_TRUE(model.includesMic());
    EXPECT_TRUE(model.includesSystemAudio());
    EXPECT_EQ(model.timerDelay(), 5);
    dragOver({10, 10, 50, 50});
    EXPECT_EQ(model.selection(), QRectF(10, 10, 50, 50));
}

TEST_F(Selection, theAreaStaysOnTheScreen) {
    dragOver(QRectF(QPointF(900, 500), QPointF(1400, 2000)));
    EXPECT_EQ(model.selection(), QRectF(900, 500, 100, 100));
    model.closeCard();
    dragOver(QRectF(QPointF(-50, -60), QPointF(20, 30)));
    EXPECT_EQ(model.selection(), QRectF(0, 0, 20, 30));
}

TEST_F(Selection, keysMoveTheConfirmedAreaWithinTheScreen) {
    model.move({1, 1});
    EXPECT_EQ(model.selection(), std::nullopt);
    dragOver({100, 100, 200, 100});
    model.move({-1, 10});
    EXPECT_EQ(model.selection(), QRectF(99, 110, 200, 100));
    model.move({-1000, 5000});
    EXPECT_EQ(model.selection(), QRectF(0, 500, 200, 100));
}

TEST_F(Selection, keysResizeTheConfirmedAreaWithinItsBounds) {
    dragOver({100, 100, 200, 100});
    model.resize({10, -10});
    EXPECT_EQ(model.selection(), QRectF(100, 100, 210, 90));
    model.resize({-1000, -1000});
    EXPECT_EQ(model.selection(), QRectF(100, 100, 11, 11));
    model.resize({5000, 5000});
    EXPECT_EQ(model.selection(), QRectF(100, 100, 900, 500));
}

TEST_F(Selection, anAreaAtTheScreensEdgeCanStillBeResized) {
    dragOver({980, 580, 15, 15});
    model.move({100, 100});
    model.resize({-100, -100});
    model.move({100, 100});
    model.resize({1, 1});
    EXPECT_EQ(model.selection(), QRectF(989, 589, 11, 11));
}

TEST_F(Selection, theWholeScreenCanBeTakenWithoutAPointer) {
    model.selectAll();
    EXPECT_EQ(model.selection(), QRectF(0, 0, 1000, 600));
    EXPECT_TRUE(model.isConfirming());
    model.closeCard();
    model.drag({10, 10}, {50, 50});
    model.selectAll(); // not while something is dragged
    EXPECT_EQ(model.selection(), QRectF(10, 10, 40, 40));
}

TEST_F(Selection, nothingStartsWithoutTheCard) {
    model.start();
    EXPECT_THAT(calls, testing::IsEmpty());
    model.selectAll();
    model.start();
    EXPECT_THAT(calls, testing::ElementsAre(QStringLiteral("start")));
}

TEST_F(Selection, onlyTheOfferedDelaysCount) {
    for (const int seconds : {3, 5, 0}) {
        model.setTimerDelay(seconds);
        model.setTimerDelay(4);
        model.setTimerDelay(-1);
        EXPECT_EQ(model.timerDelay(), seconds);
    }
    EXPECT_EQ(model.delayLabel(0), QStringLiteral("None (0s)"));
    EXPECT_EQ(model.delayLabel(3), QStringLiteral("3 Seconds"));
    EXPECT_EQ(model.delayLabel(5), QStringLiteral("5 Seconds"));
}

TEST(Countdown, everySecondIsShownAndTheLastOneEndsIt) {
    VirtualTime time;
    int ends = 0;
    QList<int> counts;
    CountdownModel model(3, time, [&ends] { ++ends; });
    QObject::connect(&model, &CountdownModel::ticked, [&] { counts << model.currentCount(); });
    EXPECT_EQ(model.currentCount(), 3);
    model.appear();
    time.advance(2'999ms);
    EXPECT_EQ(ends, 0);
    EXPECT_THAT(counts, testing::ElementsAre(2, 1));
    time.advance(1ms);
    EXPECT_EQ(ends, 1);
    time.advance(1min);
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST(Countdown, oneThatIsStoppedNeverEnds) {
    VirtualTime time;
    int ends = 0;
    CountdownModel model(5, time, [&ends] { ++ends; });
    model.appear();
    time.advance(4s);
    model.stop();
    time.advance(1min);
    EXPECT_EQ(ends, 0);
}

} // namespace
} // namespace tavrine
