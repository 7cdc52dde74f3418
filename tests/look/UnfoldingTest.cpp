#include "look/Unfolding.h"

#include "adapters/fake/FakeAppearance.h"
#include "adapters/fake/VirtualTime.h"
#include "look/Look.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

namespace tavrine::look {
namespace {

using namespace std::chrono_literals;

/// A red row of fixed size.
class Red final : public QWidget {
public:
    Red() {
        setAutoFillBackground(true);
        setPalette(QPalette(Qt::red));
        setFixedSize(200, 100);
    }
    [[nodiscard]] QSize sizeHint() const override { return {200, 100}; }
    int presses = 0;

protected:
    void mousePressEvent(QMouseEvent *) override { ++presses; }
};

class UnfoldingTest : public testing::Test {
protected:
    UnfoldingTest() { window.setPalette(QPalette(Qt::black)); }

    Unfolding &make(Qt::Orientation direction = Qt::Vertical) {
        auto *unfolding = new Unfolding(red, direction);
        if (direction == Qt::Vertical)
            column = new QVBoxLayout(&window);
        else
            column = new QHBoxLayout(&window);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(0);
        column->addWidget(unfolding);
        column->addStretch();
        window.resize(200, 300);
        window.show();
        return *unfolding;
    }
    void pass(std::chrono::milliseconds length) {
        time.advance(length);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    }
    /// How much of the row's own colour there is in the window's first line.
    double opacity() { return QColor(window.grab().toImage().pixel(0, 0)).redF(); }

    VirtualTime time;
    FakeAppearance appearance;
    Look look{time, &appearance};
    QWidget window;
    QBoxLayout *column = nullptr;
    Red *red = new Red;
};

TEST_F(UnfoldingTest, isGoneAtFirst) {
    Unfolding &row = make();
    EXPECT_FALSE(row.isVisible());
    EXPECT_FALSE(red->isVisible());
    EXPECT_FALSE(look.clock().isTicking());
}

TEST_F(UnfoldingTest, comesWithItsHeightAndItsOpacityAndFromAbove) {
    Unfolding &row = make();
    row.setShown(true);
    EXPECT_TRUE(red->isVisible());
    pass(0ms);
    EXPECT_EQ(row.height(), 0);
    pass(96ms); // six frames
    const double part = defaultTiming.at(96.0 / 250);
    EXPECT_NEAR(row.height(), 100 * part, 1);
    EXPECT_EQ(red->geometry().bottom(), row.rect().bottom()) << "its lower edge comes first";
    EXPECT_EQ(red->height(), 100);
    EXPECT_NEAR(opacity(), part, 0.02);
    pass(152ms); // two more would be the end
    EXPECT_TRUE(look.clock().isTicking());
    pass(8ms);
    EXPECT_EQ(row.height(), 100);
    EXPECT_EQ(red->geometry(), QRect(0, 0, 200, 100));
    EXPECT_EQ(opacity(), 1.0);
    EXPECT_FALSE(red->graphicsEffect()) << "it costs a picture for each painting";
    EXPECT_FALSE(look.clock().isTicking());
}

TEST_F(UnfoldingTest, goesAsItCameAndTakesNoClicksMeanwhile) {
    Unfolding &row = make();
    row.setShown(true);
    pass(1s);
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, {10, 10});
    EXPECT_EQ(red->presses, 1);
    row.setShown(false);
    pass(96ms);
    const double part = 1 - defaultTiming.at(96.0 / 250);
    EXPECT_NEAR(row.height(), 100 * part, 1);
    EXPECT_NEAR(opacity(), part, 0.02);
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, {10, 10});
    EXPECT_EQ(red->presses, 1);
    EXPECT_TRUE(row.isVisible());
    pass(160ms);
    EXPECT_FALSE(row.isVisible());
    row.setShown(true);
    pass(1s);
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, {10, 10});
    EXPECT_EQ(red->presses, 2);
}

TEST_F(UnfoldingTest, turnsRoundWhereItIs) {
    Unfolding &row = make();
    row.setShown(true);
    pass(96ms);
    const int height = row.height();
    ASSERT_GT(height, 20);
    row.setShown(false);
    pass(0ms);
    EXPECT_EQ(row.height(), height);
    pass(16ms);
    EXPECT_LT(row.height(), height);
    pass(1s);
    EXPECT_FALSE(row.isVisible());
}

TEST_F(UnfoldingTest, growsAndShrinksWithWhatItHolds) {
    Unfolding &row = make();
    row.setShown(true);
    pass(1s);
    const auto rowIsAsHighAs = [&](int height) {
        red->setFixedHeight(height);
        for (int round = 0; round < 2; ++round) // the column's turn comes after its own
            QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        return row.height() == height && red->geometry() == row.rect();
    };
    EXPECT_TRUE(rowIsAsHighAs(140));
    EXPECT_TRUE(rowIsAsHighAs(60));
}

TEST_F(UnfoldingTest, followsASpringToTheSide) {
    const Spring spring = Spring::responding(0.3, 0.5); // which runs far over
    Unfolding &end = make(Qt::Horizontal);
    window.resize(400, 100);
    end.setShown(true, spring);
    double widest = 0;
    for (int frame = 1; frame <= 20; ++frame) {
        pass(16ms);
        EXPECT_NEAR(end.width(), 200 * spring.at(Seconds{frame * 0.016}), 1) << frame;
        EXPECT_EQ(red->geometry(), QRect(0, 0, 200, 100)) << frame;
        widest = std::max(widest, double(end.width()));
    }
    EXPECT_GT(widest, 210);
    pass(1s);
    EXPECT_EQ(end.width(), 200);
}

TEST_F(UnfoldingTest, beforeItsParentIsShownItIsThereAtOnce) {
    Unfolding &row = make();
    window.hide();
    row.setShown(true);
    EXPECT_FALSE(look.clock().isTicking());
    EXPECT_EQ(row.sizeHint(), QSize(200, 100));
    row.setShown(false);
    EXPECT_TRUE(row.isHidden());
}

TEST_F(UnfoldingTest, whereNothingMayMoveItIsThereAtOnce) {
    appearance.set({.reducesMotion = true});
    Unfolding &row = make();
    row.setShown(true);
    pass(0ms);
    EXPECT_EQ(row.height(), 100);
    EXPECT_EQ(opacity(), 1.0);
    row.setShown(false);
    EXPECT_FALSE(row.isVisible());
    EXPECT_FALSE(look.clock().isTicking());
}

TEST_F(UnfoldingTest, atOnceEndsWhatIsOnItsWay) {
    Unfolding &row = make();
    row.setShown(true);
    pass(48ms);
    row.setShownAtOnce(false);
    EXPECT_FALSE(row.isVisible());
    pass(1s);
    EXPECT_FALSE(row.isVisible());
    row.setShownAtOnce(true);
    pass(0ms);
    EXPECT_EQ(row.height(), 100);
    EXPECT_EQ(opacity(), 1.0);
}

} // namespace
} // namespace tavrine::look
