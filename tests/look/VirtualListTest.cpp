#include "look/VirtualList.h"

#include "adapters/fake/FakeAppearance.h"
#include "adapters/fake/VirtualTime.h"
#include "look/Look.h"

#include <QAccessible>
#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

namespace tavrine::look {
namespace {

using namespace std::chrono_literals;

class VirtualListTest : public testing::Test {
protected:
    VirtualTime time;
    FakeAppearance appearance;
    Look look{time, &appearance};
    VirtualList list;
    int rows = 100;
    int heightCalls = 0;
    std::vector<int> painted;

    void SetUp() override {
        list.resize(300, 400);
        list.show();
        list.setSource(source());
    }

    VirtualList::Source source() {
        VirtualList::Source made;
        made.count = [this] { return rows; };
        made.height = [this](int row) {
            ++heightCalls;
            return row % 10 == 0 ? 30 : 60;
        };
        made.isActive = [](int row) { return row % 10 != 0; };
        made.paint = [this](QPainter &, int row, const QRectF &, const RowState &) { painted.push_back(row); };
        made.accessibleText = [](int row) { return QStringLiteral("row %1").arg(row); };
        return made;
    }

    std::vector<int> paintAll() {
        painted.clear();
        list.grab();
        return painted;
    }

    /// As the window system sends it: the second press is an event of another kind.
    void doubleClick(QPoint place) {
        for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease, QEvent::MouseButtonDblClick,
                                QEvent::MouseButtonRelease}) {
            const auto held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
            QMouseEvent event(type, place, list.mapToGlobal(place), Qt::LeftButton, held, Qt::NoModifier);
            QCoreApplication::sendEvent(&list, &event);
        }
    }

    void wheel(int angle, int pixels = 0) {
        QWheelEvent event(QPointF(10, 10), list.mapToGlobal(QPointF(10, 10)), QPoint(0, pixels), QPoint(0, angle),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&list, &event);
    }
};

TEST_F(VirtualListTest, paintsOnlyTheRowsInSight) {
    // 30 and six of 60 are 390: the eighth row begins at 390 and shows ten points.
    EXPECT_EQ(paintAll(), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST_F(VirtualListTest, paintsOnlyTheRowsInSightAfterScrolling) {
    list.scrollTo(30 + 60 * 9, false); // to the second header
    EXPECT_EQ(paintAll(), (std::vector<int>{10, 11, 12, 13, 14, 15, 16, 17}));
}

TEST_F(VirtualListTest, findsEveryRowWhereItIsPlaced) {
    rows = 1000;
    list.reload();
    for (int row = 0; row < rows; ++row) {
        list.centreRow(row, false);
        const QRectF place = list.rowRect(row);
        EXPECT_EQ(list.rowAt(place.top()), row);
        EXPECT_EQ(list.rowAt(place.bottom() - 0.5), row);
        EXPECT_EQ(place.height(), row % 10 == 0 ? 30 : 60);
    }
}

TEST_F(VirtualListTest, hasNoRowOutsideItsRows) {
    rows = 2;
    list.reload();
    EXPECT_EQ(list.rowAt(-1), -1);
    EXPECT_EQ(list.rowAt(0), 0);
    EXPECT_EQ(list.rowAt(89), 1);
    EXPECT_EQ(list.rowAt(90), -1);
    EXPECT_TRUE(list.rowRect(2).isNull());
    EXPECT_TRUE(list.rowRect(-1).isNull());
}

TEST_F(VirtualListTest, centresARowAndStaysWithinTheEnds) {
    list.centreRow(50, false);
    EXPECT_NEAR(list.rowRect(50).center().y(), 200, 1);
    list.centreRow(0, false);
    EXPECT_EQ(list.offset(), 0);
    list.centreRow(99, false);
    EXPECT_EQ(list.offset(), list.maximumOffset());
    EXPECT_NEAR(list.rowRect(99).bottom(), 400, 0.5);
}

TEST_F(VirtualListTest, glidesToARowAndRests) {
    list.centreRow(50, true);
    EXPECT_EQ(list.offset(), 0);
    time.advance(50ms);
    const qreal onTheWay = list.offset();
    EXPECT_GT(onTheWay, 0);
    time.advance(2s);
    EXPECT_NEAR(list.rowRect(50).center().y(), 200, 1);
    EXPECT_LT(onTheWay, list.offset());
    time.advance(3s); // the bar fades too
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(VirtualListTest, jumpsUnderReducedMotion) {
    appearance.set({.reducesMotion = true});
    list.centreRow(50, true);
    EXPECT_NEAR(list.rowRect(50).center().y(), 200, 1);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(VirtualListTest, aWheelGlidesOnAfterItsNotches) {
    wheel(-120);
    wheel(-120);
    time.advance(32ms);
    const qreal soon = list.offset();
    EXPECT_GT(soon, 0);
    time.advance(2s);
    EXPECT_EQ(list.offset(), 160);
    EXPECT_LT(soon, 160);
}

TEST_F(VirtualListTest, aTouchpadMovesTheContentExactly) {
    wheel(-30, -17);
    EXPECT_EQ(list.offset(), 17);
}

TEST_F(VirtualListTest, aListThatFitsDoesNotScroll) {
    rows = 3;
    list.reload();
    wheel(-120);
    time.advance(1s);
    EXPECT_EQ(list.offset(), 0);
}

TEST_F(VirtualListTest, staysWithinItsEndsWhenRowsGo) {
    list.scrollTo(100000, false);
    rows = 10;
    list.reload();
    EXPECT_EQ(list.offset(), list.maximumOffset());
    EXPECT_EQ(list.offset(), 30 + 9 * 60 - 400);
    rows = 0;
    list.reload();
    EXPECT_EQ(list.offset(), 0);
    EXPECT_TRUE(paintAll().empty());
}

TEST_F(VirtualListTest, asksNoHeightsWhenAllAreEqual) {
    VirtualList::Source uniform = source();
    uniform.uniformHeight = 60;
    rows = 10'000'000;
    heightCalls = 0;
    list.setSource(uniform);
    list.centreRow(9'999'999, false);
    EXPECT_EQ(paintAll(), (std::vector<int>{9999993, 9999994, 9999995, 9999996, 9999997, 9999998, 9999999}));
    EXPECT_EQ(heightCalls, 0);
}

TEST_F(VirtualListTest, asksEachHeightOnceOnReload) {
    rows = 5000;
    heightCalls = 0;
    list.reload();
    EXPECT_EQ(heightCalls, 5000);
}

TEST_F(VirtualListTest, aSelectionOutsideTheRowsIsNone) {
    list.setSelectedRow(5);
    EXPECT_EQ(list.selectedRow(), 5);
    list.setSelectedRow(100);
    EXPECT_EQ(list.selectedRow(), -1);
    list.setSelectedRow(99);
    rows = 99;
    list.reload();
    EXPECT_EQ(list.selectedRow(), -1);
}

TEST_F(VirtualListTest, aClickNamesTheRowAndItsPlace) {
    int clicked = -1;
    QPointF place;
    QObject::connect(&list, &VirtualList::clicked, &list, [&](int row, QPointF at) {
        clicked = row;
        place = at;
    });
    QTest::mouseClick(&list, Qt::LeftButton, {}, QPoint(40, 100));
    EXPECT_EQ(clicked, 2);
    EXPECT_EQ(place, QPointF(40, 100));
}

TEST_F(VirtualListTest, aClickOnAHeaderIsNone) {
    int clicks = 0;
    QObject::connect(&list, &VirtualList::clicked, &list, [&] { ++clicks; });
    QTest::mouseClick(&list, Qt::LeftButton, {}, QPoint(40, 10));
    EXPECT_EQ(clicks, 0);
    EXPECT_EQ(list.hoveredRow(), -1);
}

TEST_F(VirtualListTest, aPressThatEndsOnAnotherRowIsNoClick) {
    int clicks = 0;
    QObject::connect(&list, &VirtualList::clicked, &list, [&] { ++clicks; });
    QTest::mousePress(&list, Qt::LeftButton, {}, QPoint(40, 100));
    QTest::mouseRelease(&list, Qt::LeftButton, {}, QPoint(40, 200));
    EXPECT_EQ(clicks, 0);
}

TEST_F(VirtualListTest, aPressWhoseRowChangedUnderItIsNoClick) {
    int clicks = 0;
    QObject::connect(&list, &VirtualList::clicked, &list, [&] { ++clicks; });
    QTest::mousePress(&list, Qt::LeftButton, {}, QPoint(40, 100));
    list.reload();
    QTest::mouseRelease(&list, Qt::LeftButton, {}, QPoint(40, 100));
    EXPECT_EQ(clicks, 0);
}

TEST_F(VirtualListTest, aDoubleClickOnRowsThatStayIsTwoClicks) {
    int clicks = 0;
    QObject::connect(&list, &VirtualList::clicked, &list, [&] { ++clicks; });
    doubleClick(QPoint(40, 100));
    EXPECT_EQ(clicks, 2);
}

TEST_F(VirtualListTest, aDoubleClickWhoseFirstHalfChangedTheRowsIsOneClick) {
    int clicks = 0;
    QObject::connect(&list, &VirtualList::clicked, &list, [&] {
        ++clicks;
        list.reload();
    });
    doubleClick(QPoint(40, 100));
    EXPECT_EQ(clicks, 1);
    QTest::mouseClick(&list, Qt::LeftButton, {}, QPoint(40, 100)); // a click of its own
    EXPECT_EQ(clicks, 2);
}

TEST_F(VirtualListTest, tellsAScreenReaderItsRows) {
    auto *interface = QAccessible::queryAccessibleInterface(&list);
    ASSERT_NE(interface, nullptr);
    EXPECT_EQ(interface->role(), QAccessible::List);
    ASSERT_EQ(interface->childCount(), 100);
    list.setSelectedRow(7);
    auto *row = interface->child(7);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->role(), QAccessible::ListItem);
    EXPECT_EQ(row->text(QAccessible::Name), QStringLiteral("row 7"));
    EXPECT_TRUE(row->state().selected);
    EXPECT_FALSE(interface->child(8)->state().selected);
    EXPECT_EQ(interface->indexOfChild(row), 7);
    EXPECT_EQ(interface->focusChild(), row);
    rows = 5;
    list.reload();
    EXPECT_FALSE(row->isValid());
    EXPECT_EQ(row->text(QAccessible::Name), QString());
}

} // namespace
} // namespace tavrine::look
