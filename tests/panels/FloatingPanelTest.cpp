#include "panels/FloatingPanel.h"

#include "adapters/fake/FakePanelWindow.h"
#include "adapters/fake/FakeScreens.h"
#include "adapters/fake/VirtualTime.h"
#include "panels/Placement.h"

#include <cmath>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

class FloatingPanelTest : public testing::Test {
protected:
    static Screen screen(quint32 number, QRectF frame) {
        return {.number = number, .localizedName = {}, .frame = frame, .visibleFrame = frame, .scale = 1.0};
    }
    FakePanelWindows::Window &shown() { return static_cast<FakePanelWindows::Window &>(*panel.window()); }

    VirtualTime time;
    FakeScreens screens;
    FakePanelWindows windows;
    static void show(FloatingPanel &shownPanel) {
        shownPanel.build(nullptr);
        shownPanel.show();
    }
    void show() { show(panel); }

    FloatingPanel::Traits traits{
        .description = {.title = QStringLiteral("A"), .contentSize = {100, 50}, .canBecomeKey = false},
        .placement = [](const Screens &all, QSizeF size) -> std::optional<QRectF> {
            const auto screen = screenForTool(all);
            return QRectF((screen ? usableFrame(*screen) : QRectF()).topLeft() + QPointF(18, 18), size);
        },
        .motion = {.fadeIn = 180ms, .timingIn = look::easeOut, .fadeOut = 160ms, .timingOut = look::easeIn}};
    FloatingPanel panel{{windows, screens, time}, traits};
};

TEST_F(FloatingPanelTest, fadesInAndIsThereWhole) {
    show();
    EXPECT_EQ(shown().alpha(), 0.0);
    EXPECT_TRUE(shown().isVisible());
    time.advance(90ms);
    EXPECT_GT(shown().alpha(), 0.3);
    EXPECT_LT(shown().alpha(), 1.0);
    time.advance(110ms);
    EXPECT_EQ(shown().alpha(), 1.0);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(FloatingPanelTest, fadesOutInSixteenHundredthsEasingIn) {
    show();
    time.advance(1s);
    auto &window = shown();
    panel.release(Dismissal::animated);
    EXPECT_FALSE(panel.isBuilt());
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

TEST_F(FloatingPanelTest, goesAtOnceWhenItIsToldTo) {
    show();
    auto &window = shown();
    panel.release(Dismissal::atOnce);
    EXPECT_FALSE(window.isVisible());
    EXPECT_FALSE(panel.isBuilt());
    time.runPending();
    EXPECT_EQ(windows.living(), 0);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(FloatingPanelTest, dismissingNothingIsNothing) {
    panel.release(Dismissal::animated);
    panel.release(Dismissal::atOnce);
    time.advance(1s);
    EXPECT_EQ(windows.made(), 0);
}

TEST_F(FloatingPanelTest, aSecondDismissalDoesNotHurryTheFirst) {
    show();
    auto &window = shown();
    panel.release(Dismissal::animated);
    panel.release(Dismissal::atOnce);
    EXPECT_TRUE(window.isVisible());
    time.advance(160ms);
    EXPECT_EQ(windows.living(), 0);
}

TEST_F(FloatingPanelTest, theNextOneComesWhileTheLastOneFades) {
    show();
    panel.release(Dismissal::animated);
    show();
    EXPECT_EQ(windows.living(), 2);
    time.advance(1s);
    EXPECT_EQ(windows.living(), 1);
    EXPECT_EQ(shown().alpha(), 1.0);
}

TEST_F(FloatingPanelTest, showingAnotherTakesTheFirstAwayAtOnce) {
    show();
    auto &first = shown();
    show();
    EXPECT_FALSE(first.isVisible());
    time.runPending();
    EXPECT_EQ(windows.living(), 1);
}

TEST_F(FloatingPanelTest, withoutACompositorThereAreNoFades) {
    windows.setComposited(false);
    show();
    EXPECT_EQ(shown().alpha(), 1.0);
    panel.release(Dismissal::animated);
    time.runPending();
    EXPECT_EQ(windows.living(), 0);
}

TEST_F(FloatingPanelTest, mayBeDestroyedWhileItFades) {
    {
        FloatingPanel other({windows, screens, time}, traits);
        show(other);
        other.release(Dismissal::animated);
    }
    time.advance(1s);
    EXPECT_EQ(windows.living(), 0);
}

TEST_F(FloatingPanelTest, onlyAPanelThatTakesTheKeyboardGetsIt) {
    show();
    EXPECT_EQ(windows.keyWindow(), nullptr);
    traits.description.canBecomeKey = true;
    FloatingPanel other({windows, screens, time}, traits);
    show(other);
    EXPECT_EQ(windows.keyWindow(), other.window());
}

// A panel that stays for its next showing.

TEST_F(FloatingPanelTest, oneThatIsDismissedStaysForItsNextShowing) {
    show();
    time.advance(1s);
    panel.dismiss(Dismissal::animated);
    time.advance(159ms);
    EXPECT_TRUE(panel.isVisible());
    EXPECT_LT(shown().alpha(), 0.2);
    time.advance(1ms);
    EXPECT_FALSE(panel.isVisible());
    EXPECT_EQ(shown().alpha(), 1.0);
    panel.show();
    EXPECT_TRUE(panel.isVisible());
    EXPECT_EQ(windows.made(), 1);
}

TEST_F(FloatingPanelTest, oneThatTheDesktopClosesIsDismissedUnlessItsToolAnswers) {
    show();
    shown().closeFromOutside();
    time.advance(1s);
    EXPECT_FALSE(panel.isVisible());
    int wishes = 0;
    panel.setOnClosed([&] { ++wishes; });
    panel.show();
    shown().closeFromOutside();
    time.advance(1s);
    EXPECT_EQ(wishes, 1);
    EXPECT_TRUE(panel.isVisible());
}

TEST_F(FloatingPanelTest, oneThatShrinksOnItsWayKeepsItsFrame) {
    traits.motion.shrinksTo = 0.5;
    FloatingPanel other({windows, screens, time}, traits);
    show(other);
    time.advance(1s);
    other.dismiss(Dismissal::animated);
    time.advance(159ms);
    EXPECT_NEAR(other.window()->frame().width(), 50, 8);
    EXPECT_EQ(other.window()->frame().center(), QPointF(18 + 50, 18 + 25));
    EXPECT_EQ(other.frame(), QRectF(18, 18, 100, 50));
    time.advance(1ms);
    EXPECT_EQ(other.window()->frame(), QRectF(18, 18, 100, 50));
}

TEST_F(FloatingPanelTest, oneThatIsShownWhileItFadesStays) {
    show();
    time.advance(1s);
    panel.dismiss(Dismissal::animated);
    time.advance(100ms);
    panel.show();
    time.advance(1s);
    EXPECT_TRUE(panel.isVisible());
    EXPECT_EQ(shown().alpha(), 1.0);
}

TEST_F(FloatingPanelTest, oneThatIsPlacedOnceStaysWhereItWasPut) {
    traits.placed = FloatingPanel::Placed::once;
    FloatingPanel other({windows, screens, time}, traits);
    show(other);
    EXPECT_EQ(other.frame().topLeft(), QPointF(18, 18));
    int moves = 0;
    other.setOnMoved([&] { ++moves; });
    static_cast<FakePanelWindows::Window &>(*other.window()).moveByPerson({300, 200});
    other.dismiss(Dismissal::atOnce);
    other.show();
    EXPECT_EQ(other.frame().topLeft(), QPointF(300, 200));
    EXPECT_EQ(moves, 1);
}

TEST_F(FloatingPanelTest, whatItHoldsOutlivesTheButtonThatClosesIt) {
    panel.build(nullptr);
    auto &window = shown();
    panel.show();
    panel.release(Dismissal::atOnce);
    EXPECT_EQ(windows.windows(), std::vector{&window}) << "it may still be telling of the click";
    EXPECT_FALSE(window.isVisible());
    time.runPending();
    EXPECT_EQ(windows.living(), 0);
}

TEST_F(FloatingPanelTest, whatItHoldsOutlivesTheQuestionThatItAsked) {
    show();
    windows.setAsking(true);
    panel.release(Dismissal::atOnce);
    time.advance(10s);
    EXPECT_EQ(windows.living(), 1);
    EXPECT_TRUE(windows.visibleTitles().isEmpty());
    windows.setAsking(false);
    time.advance(50ms);
    EXPECT_EQ(windows.living(), 0);
}

TEST_F(FloatingPanelTest, whoReleasesItIsToldOnceItHasLeftTheScreen) {
    for (const Dismissal how : {Dismissal::atOnce, Dismissal::animated}) {
        show();
        time.advance(1s);
        int ends = 0;
        panel.release(how, [&] {
            ++ends;
            EXPECT_TRUE(windows.visibleTitles().isEmpty());
        });
        EXPECT_EQ(ends, 0);
        time.advance(159ms);
        EXPECT_EQ(ends, how == Dismissal::atOnce ? 1 : 0);
        time.advance(1ms);
        EXPECT_EQ(ends, 1);
    }
}

// The screen.

TEST_F(FloatingPanelTest, opensOnTheScreenUnderThePointer) {
    screens.setScreens(
        {screen(1, {0, 0, 1000, 800}), screen(2, {1000, 200, 800, 600}), screen(3, {-500, 0, 500, 500})});
    for (const auto &[pointer, expected] :
         std::initializer_list<std::pair<QPointF, QPointF>>{{{999, 300}, {18, 18}},
                                                            {{1000, 300}, {1018, 218}},
                                                            {{1799, 799}, {1018, 218}},
                                                            {{-1, 10}, {-482, 18}},
                                                            {{0, 10}, {18, 18}}}) {
        screens.setMouseLocation(pointer);
        show();
        EXPECT_EQ(panel.window()->frame(), QRectF(expected, QSizeF(100, 50))) << pointer.x();
    }
}

TEST_F(FloatingPanelTest, opensOnTheMainScreenWhenThePointerIsOnNone) {
    screens.setScreens({screen(1, {0, 0, 1000, 800}), screen(2, {1000, 0, 800, 600})});
    screens.setMouseLocation({5000, 5000});
    screens.setKeyboardScreen(1);
    show();
    EXPECT_EQ(panel.window()->frame().topLeft(), QPointF(1018, 18));
}

TEST_F(FloatingPanelTest, keepsToTheVisiblePartOfTheScreen) {
    screens.setScreens(
        {{.number = 1, .localizedName = {}, .frame = {0, 0, 1000, 800}, .visibleFrame = {60, 40, 900, 700}}});
    show();
    EXPECT_EQ(panel.window()->frame().topLeft(), QPointF(78, 58));
}

TEST_F(FloatingPanelTest, onAScreenThatIsSmallerItIsCutToItAndOnALargerOneItHasItsSizeAgain) {
    const auto at = [](const Screens &all, QSizeF size) -> std::optional<QRectF> {
        const auto first = screenForTool(all);
        return first ? std::optional(centredIn(usableFrame(*first), size, 60)) : std::nullopt;
    };
    FloatingPanel large({windows, screens, time},
                        {.description = {.title = QStringLiteral("L"), .contentSize = {680, 500}}, .placement = at});
    screens.setScreens({screen(1, {0, 0, 512, 300})});
    large.build(nullptr);
    large.show();
    EXPECT_EQ(large.frame(), QRectF(0, 0, 512, 300));
    screens.setScreens({screen(1, {0, 0, 1024, 600})});
    large.show();
    EXPECT_EQ(large.frame(), QRectF(172, 100, 680, 500)) << "whole, and as far up as there is room";
    screens.setScreens({screen(1, {0, 0, 1920, 1080})});
    large.show();
    EXPECT_EQ(large.frame(), QRectF(620, 350, 680, 500));
}

TEST_F(FloatingPanelTest, withoutAScreenItStillComes) {
    screens.setScreens({});
    show();
    EXPECT_TRUE(panel.window()->isVisible());
    EXPECT_EQ(panel.window()->frame().topLeft(), QPointF(18, 18));
}

TEST_F(FloatingPanelTest, sizesThatAreNoNumbersDoNotMoveItOutOfSight) {
    const double nan = std::nan("");
    screens.setScreens(
        {{.number = 1, .localizedName = {}, .frame = {0, 0, 1000, 800}, .visibleFrame = {nan, nan, nan, nan}}});
    show();
    EXPECT_EQ(panel.window()->frame().topLeft(), QPointF(18, 18));
    screens.setScreens({screen(1, {nan, 0, HUGE_VAL, 800})});
    show();
    EXPECT_EQ(panel.window()->frame().topLeft(), QPointF(18, 18));
    screens.setScreens({screen(1, {0, 0, 0, 0})});
    show();
    EXPECT_EQ(panel.window()->frame().topLeft(), QPointF(18, 18));
}

TEST_F(FloatingPanelTest, aScreenThatIsUnpluggedSendsItToAnother) {
    screens.setScreens({screen(1, {0, 0, 1000, 800}), screen(2, {1000, 0, 800, 600})});
    screens.setMouseLocation({1500, 100});
    show();
    ASSERT_EQ(panel.window()->frame().x(), 1018);
    screens.setMouseLocation({10, 10});
    screens.setScreens({screen(1, {0, 0, 1000, 800})});
    EXPECT_EQ(panel.window()->frame().topLeft(), QPointF(18, 18));
    EXPECT_EQ(windows.made(), 1);
}

TEST_F(FloatingPanelTest, aChangeOfScreensThatLeavesItsPlaceLeavesItThere) {
    screens.setScreens({screen(1, {0, 0, 1000, 800}), screen(2, {1000, 0, 800, 600})});
    screens.setMouseLocation({1500, 100});
    show();
    screens.setMouseLocation({10, 10});
    screens.setScreens({screen(1, {0, 0, 900, 700}), screen(2, {1000, 0, 800, 600})});
    EXPECT_EQ(panel.window()->frame().x(), 1018);
}

TEST_F(FloatingPanelTest, screensThatGoAllAtOnceAndComeBackLeaveItOnOne) {
    show();
    screens.setScreens({});
    screens.setScreens({screen(7, {0, 0, 640, 480})});
    EXPECT_EQ(panel.window()->frame().topLeft(), QPointF(18, 18));
    panel.release(Dismissal::atOnce);
    screens.setScreens({});
    EXPECT_FALSE(panel.isBuilt());
}

} // namespace
} // namespace tavrine
