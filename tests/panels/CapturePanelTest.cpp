#include "panels/CapturePanel.h"

#include "adapters/fake/FakePanelWindow.h"
#include "adapters/fake/FakeScreens.h"
#include "adapters/fake/VirtualTime.h"

#include <cmath>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

class CapturePanelTest : public testing::Test {
protected:
    static Screen screen(quint32 number, QRectF frame) {
        return {.number = number, .localizedName = {}, .frame = frame, .visibleFrame = frame, .scale = 1.0};
    }
    FakePanelWindows::Window &shown() { return static_cast<FakePanelWindows::Window &>(*panel.window()); }

    VirtualTime time;
    FakeScreens screens;
    FakePanelWindows windows;
    PanelDescription description{.title = QStringLiteral("A"), .contentSize = {100, 50}, .canBecomeKey = false};
    CapturePanel panel{
        {windows, screens, time}, description, [](const QRectF &usable) { return usable.topLeft() + QPointF(18, 18); }};
};

TEST_F(CapturePanelTest, fadesInAndIsThereWhole) {
    panel.show(nullptr);
    EXPECT_EQ(shown().alpha(), 0.0);
    EXPECT_TRUE(shown().isVisible());
    time.advance(90ms);
    EXPECT_GT(shown().alpha(), 0.3);
    EXPECT_LT(shown().alpha(), 1.0);
    time.advance(110ms);
    EXPECT_EQ(shown().alpha(), 1.0);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(CapturePanelTest, fadesOutInSixteenHundredthsEasingIn) {
    panel.show(nullptr);
    time.advance(1s);
    auto &window = shown();
    panel.dismiss(Dismissal::animated);
    EXPECT_FALSE(panel.isShown());
    EXPECT_TRUE(window.isVisible());
    time.advance(80ms);
    EXPECT_GT(window.alpha(), 0.5); // slow at first
    EXPECT_LT(window.alpha(), 1.0);
    time.advance(79ms);
    EXPECT_TRUE(window.isVisible());
    time.advance(1ms);
    EXPECT_EQ(windows.living(), 0);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(CapturePanelTest, goesAtOnceWhenItIsToldTo) {
    panel.show(nullptr);
    auto &window = shown();
    panel.dismiss(Dismissal::atOnce);
    EXPECT_FALSE(window.isVisible());
    EXPECT_FALSE(panel.isShown());
    time.runPending();
    EXPECT_EQ(windows.living(), 0);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(CapturePanelTest, dismissingNothingIsNothing) {
    panel.dismiss(Dismissal::animated);
    panel.dismiss(Dismissal::atOnce);
    time.advance(1s);
    EXPECT_EQ(windows.made(), 0);
}

TEST_F(CapturePanelTest, aSecondDismissalDoesNotHurryTheFirst) {
    panel.show(nullptr);
    auto &window = shown();
    panel.dismiss(Dismissal::animated);
    panel.dismiss(Dismissal::atOnce);
    EXPECT_TRUE(window.isVisible());
    time.advance(160ms);
    EXPECT_EQ(windows.living(), 0);
}

TEST_F(CapturePanelTest, theNextOneComesWhileTheLastOneFades) {
    panel.show(nullptr);
    panel.dismiss(Dismissal::animated);
    panel.show(nullptr);
    EXPECT_EQ(windows.living(), 2);
    time.advance(1s);
    EXPECT_EQ(windows.living(), 1);
    EXPECT_EQ(shown().alpha(), 1.0);
}

TEST_F(CapturePanelTest, showingAnotherTakesTheFirstAwayAtOnce) {
    panel.show(nullptr);
    auto &first = shown();
    panel.show(nullptr);
    EXPECT_FALSE(first.isVisible());
    time.runPending();
    EXPECT_EQ(windows.living(), 1);
}

TEST_F(CapturePanelTest, withoutACompositorThereAreNoFades) {
    windows.setComposited(false);
    panel.show(nullptr);
    EXPECT_EQ(shown().alpha(), 1.0);
    panel.dismiss(Dismissal::animated);
    time.runPending();
    EXPECT_EQ(windows.living(), 0);
}

TEST_F(CapturePanelTest, mayBeDestroyedWhileItFades) {
    {
        CapturePanel other({windows, screens, time}, description, [](const QRectF &) { return QPointF(); });
        other.show(nullptr);
        other.dismiss(Dismissal::animated);
    }
    time.advance(1s);
    EXPECT_EQ(windows.living(), 0);
}

TEST_F(CapturePanelTest, onlyAPanelThatTakesTheKeyboardGetsIt) {
    panel.show(nullptr);
    EXPECT_EQ(windows.keyWindow(), nullptr);
    description.canBecomeKey = true;
    CapturePanel other({windows, screens, time}, description, [](const QRectF &) { return QPointF(); });
    other.show(nullptr);
    EXPECT_EQ(windows.keyWindow(), other.window());
}

// The screen.

TEST_F(CapturePanelTest, opensOnTheScreenUnderThePointer) {
    screens.setScreens(
        {screen(1, {0, 0, 1000, 800}), screen(2, {1000, 200, 800, 600}), screen(3, {-500, 0, 500, 500})});
    for (const auto &[pointer, expected] :
         std::initializer_list<std::pair<QPointF, QPointF>>{{{999, 300}, {18, 18}},
                                                            {{1000, 300}, {1018, 218}},
                                                            {{1799, 799}, {1018, 218}},
                                                            {{-1, 10}, {-482, 18}},
                                                            {{0, 10}, {18, 18}}}) {
        screens.setMouseLocation(pointer);
        panel.show(nullptr);
        EXPECT_EQ(panel.window()->frame(), QRectF(expected, QSizeF(100, 50))) << pointer.x();
    }
}

TEST_F(CapturePanelTest, opensOnTheMainScreenWhenThePointerIsOnNone) {
    screens.setScreens({screen(1, {0, 0, 1000, 800}), screen(2, {1000, 0, 800, 600})});
    screens.setMouseLocation({5000, 5000});
    screens.setKeyboardScreen(1);
    panel.show(nullptr);
    EXPECT_EQ(panel.window()->frame().topLeft(), QPointF(1018, 18));
}

TEST_F(CapturePanelTest, keepsToTheVisiblePartOfTheScreen) {
    screens.setScreens(
        {{.number = 1, .localizedName = {}, .frame = {0, 0, 1000, 800}, .visibleFrame = {60, 40, 900, 700}}});
    panel.show(nullptr);
    EXPECT_EQ(panel.window()->frame().topLeft(), QPointF(78, 58));
}

TEST_F(CapturePanelTest, withoutAScreenItStillComes) {
    screens.setScreens({});
    panel.show(nullptr);
    EXPECT_TRUE(panel.window()->isVisible());
    EXPECT_EQ(panel.window()->frame().topLeft(), QPointF(18, 18));
}

TEST_F(CapturePanelTest, sizesThatAreNoNumbersDoNotMoveItOutOfSight) {
    const double nan = std::nan("");
    screens.setScreens(
        {{.number = 1, .localizedName = {}, .frame = {0, 0, 1000, 800}, .visibleFrame = {nan, nan, nan, nan}}});
    panel.show(nullptr);
    EXPECT_EQ(panel.window()->frame().topLeft(), QPointF(18, 18));
    screens.setScreens({screen(1, {nan, 0, HUGE_VAL, 800})});
    panel.show(nullptr);
    EXPECT_EQ(panel.window()->frame().topLeft(), QPointF(18, 18));
    screens.setScreens({screen(1, {0, 0, 0, 0})});
    panel.show(nullptr);
    EXPECT_EQ(panel.window()->frame().topLeft(), QPointF(18, 18));
}

TEST_F(CapturePanelTest, aScreenThatIsUnpluggedSendsItToAnother) {
    screens.setScreens({screen(1, {0, 0, 1000, 800}), screen(2, {1000, 0, 800, 600})});
    screens.setMouseLocation({1500, 100});
    panel.show(nullptr);
    ASSERT_EQ(panel.window()->frame().x(), 1018);
    screens.setMouseLocation({10, 10});
    screens.setScreens({screen(1, {0, 0, 1000, 800})});
    EXPECT_EQ(panel.window()->frame().topLeft(), QPointF(18, 18));
    EXPECT_EQ(windows.made(), 1);
}

TEST_F(CapturePanelTest, aChangeOfScreensThatLeavesItsPlaceLeavesItThere) {
    screens.setScreens({screen(1, {0, 0, 1000, 800}), screen(2, {1000, 0, 800, 600})});
    screens.setMouseLocation({1500, 100});
    panel.show(nullptr);
    screens.setMouseLocation({10, 10});
    screens.setScreens({screen(1, {0, 0, 900, 700}), screen(2, {1000, 0, 800, 600})});
    EXPECT_EQ(panel.window()->frame().x(), 1018);
}

TEST_F(CapturePanelTest, screensThatGoAllAtOnceAndComeBackLeaveItOnOne) {
    panel.show(nullptr);
    screens.setScreens({});
    screens.setScreens({screen(7, {0, 0, 640, 480})});
    EXPECT_EQ(panel.window()->frame().topLeft(), QPointF(18, 18));
    panel.dismiss(Dismissal::atOnce);
    screens.setScreens({});
    EXPECT_FALSE(panel.isShown());
}

} // namespace
} // namespace tavrine
