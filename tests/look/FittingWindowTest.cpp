#include "look/FittingWindow.h"

#include <QApplication>
#include <QScreen>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

const QRectF usable(100, 30, 1024, 570);

TEST(FittedFrame, whatFitsStaysWhereItIs) {
    EXPECT_EQ(fitted({100, 30, 1024, 570}, usable), usable);
    EXPECT_EQ(fitted({300, 40, 400, 300}, usable), QRectF(300, 40, 400, 300));
}

TEST(FittedFrame, whatIsTooLargeIsCutAndWhatReachesOutIsMovedByTheShortestWay) {
    EXPECT_EQ(fitted({162, 0, 900, 600}, usable), QRectF(162, 30, 900, 570));
    EXPECT_EQ(fitted({0, 0, 2000, 100}, usable), QRectF(100, 30, 1024, 100));
    EXPECT_EQ(fitted({1000, 500, 400, 300}, usable), QRectF(724, 300, 400, 300));
}

TEST(FittedFrame, withoutAUsablePartNothingChanges) {
    EXPECT_EQ(fitted({1, 2, 3, 4}, {}), QRectF(1, 2, 3, 4));
}

class FittingWindow : public testing::Test {
protected:
    ~FittingWindow() override { setCoveredPlace({}); }
    /// The middle of the screen's upper edge lies under something of ours.
    void cover() {
        setCoveredPlace([this] { return QRect(free.center().x() - 150, free.top(), 300, 24); });
    }
    void show(const QRect &geometry) {
        window.setGeometry(geometry);
        fitToScreen(window);
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        QApplication::processEvents();
    }
    const QRect free = QGuiApplication::primaryScreen()->availableGeometry();
    QWidget window;
};

TEST_F(FittingWindow, aWindowLargerThanItsScreenComesUpWithinIt) {
    window.setMinimumSize(free.size() + QSize(40, 40));
    show({-50, -50, free.width() + 100, free.height() + 100});
    EXPECT_TRUE(free.contains(window.frameGeometry()));
    EXPECT_EQ(window.frameGeometry().size(), free.size());
}

TEST_F(FittingWindow, aWindowThatFitsIsNotTouched) {
    const QRect geometry(free.topLeft() + QPoint(30, 40), QSize(200, 150));
    show(geometry);
    EXPECT_EQ(window.geometry(), geometry);
}

TEST_F(FittingWindow, aWindowThatWouldComeUpUnderTheCoveredPlaceStandsBelowIt) {
    cover();
    window.setMinimumSize(200, free.height());
    show({free.left(), free.top(), free.width(), free.height()});
    EXPECT_EQ(window.frameGeometry(), free.adjusted(0, 24, 0, 0));
}

TEST_F(FittingWindow, aWindowThatReachesUnderTheCoveredPlaceAndFitsBelowItIsOnlyMoved) {
    cover();
    show({free.center().x() - 100, free.top() + 10, 200, 150});
    EXPECT_EQ(window.size(), QSize(200, 150));
    EXPECT_EQ(window.frameGeometry().top(), free.top() + 24);
    EXPECT_EQ(window.geometry().x(), free.center().x() - 100);
}

TEST_F(FittingWindow, aWindowBelowTheCoveredPlaceIsNotTouched) {
    cover();
    const QRect geometry(free.center().x() - 100, free.top() + 24 + 40, 200, 150);
    show(geometry);
    EXPECT_EQ(window.geometry(), geometry);
}

TEST_F(FittingWindow, aWindowBesideTheCoveredPlaceStaysAtTheEdge) {
    cover();
    show({free.left(), free.top(), 200, 150});
    EXPECT_EQ(window.frameGeometry().top(), free.top());
}

TEST_F(FittingWindow, withoutAnythingOverItAWindowHasItsWholeScreen) {
    cover();
    setCoveredPlace({});
    show({free.left(), free.top(), free.width(), free.height()});
    EXPECT_EQ(window.frameGeometry(), free);
}

TEST_F(FittingWindow, whereThePersonMovesItLaterItStays) {
    show({free.topLeft() + QPoint(30, 40), QSize(200, 150)});
    const QPoint outside = free.topLeft() - QPoint(80, 0);
    window.move(outside);
    QApplication::processEvents();
    EXPECT_LT(window.x(), free.left() - 40);
}

} // namespace
} // namespace tavrine
