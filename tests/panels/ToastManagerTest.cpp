#include "panels/ToastManager.h"

#include "adapters/fake/FakePanelWindow.h"
#include "adapters/fake/FakeScreens.h"
#include "adapters/fake/VirtualTime.h"

#include <memory>
#include <thread>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class ToastManagerTest : public testing::Test {
protected:
    /// Shows it and lets it appear.
    void show(const char *message) {
        toasts->show(QString::fromUtf8(message), QStringLiteral("checkmark"));
        time.runPending();
    }
    [[nodiscard]] const FakePanelWindows::Window &window() const {
        EXPECT_THAT(windows.windows(), SizeIs(1));
        return *windows.windows().at(0);
    }
    [[nodiscard]] QString message() const { return windows.visibleTitles().join(u'|'); }

    VirtualTime time;
    FakeScreens screens;
    FakePanelWindows windows;
    QStringList icons;
    std::unique_ptr<ToastManager> toasts = std::make_unique<ToastManager>(
        time, screens, windows, [this](const QString & /*message*/, const QString &icon) -> QWidget * {
            icons.append(icon);
            return nullptr;
        });
};

TEST_F(ToastManagerTest, appearsInALaterTurn) {
    toasts->show(QStringLiteral("Copied"), QStringLiteral("checkmark"));
    EXPECT_THAT(windows.windows(), IsEmpty());
    time.runPending();
    EXPECT_EQ(message(), QStringLiteral("Copied"));
    EXPECT_THAT(icons, ElementsAre(QStringLiteral("checkmark")));
    EXPECT_TRUE(window().isVisible());
}

TEST_F(ToastManagerTest, mayBeShownFromAnyThread) {
    std::thread([this] { toasts->show(QStringLiteral("Copied"), QStringLiteral("checkmark")); }).join();
    EXPECT_THAT(windows.windows(), IsEmpty());
    time.runPending();
    EXPECT_EQ(message(), QStringLiteral("Copied"));
}

TEST_F(ToastManagerTest, standsInAWindowThatTakesNeitherKeysNorClicks) {
    show("Copied");
    const PanelDescription &description = window().description();
    EXPECT_EQ(description.contentSize, QSizeF(250, 60));
    EXPECT_EQ(description.level, windowLevel::status) << "as high as the status item: over full screens too";
    EXPECT_EQ(description.collectionBehavior, 257U);
    EXPECT_TRUE(description.isClear && description.ignoresMouseEvents);
    EXPECT_FALSE(description.canBecomeKey || description.hasShadow);
    EXPECT_EQ(windows.keyWindow(), nullptr);
}

TEST_F(ToastManagerTest, aLongMessageDoesNotChangeTheSize) {
    show(QByteArray(10'000, 'x').constData());
    time.advance(1s);
    EXPECT_EQ(window().frame().size(), QSizeF(250, 60));
}

TEST_F(ToastManagerTest, fadesInOver300MillisecondsWhileItRisesByTen) {
    show("Copied");
    EXPECT_EQ(window().frame(), QRectF(720 - 125, 120, 250, 60));
    EXPECT_EQ(window().alpha(), 0.0);
    time.advance(150ms);
    EXPECT_GT(window().alpha(), 0.3);
    EXPECT_GT(window().frame().y(), 123);
    time.advance(149ms);
    EXPECT_LT(window().alpha(), 1.0);
    EXPECT_LT(window().frame().y(), 130);
    time.advance(1ms);
    EXPECT_EQ(window().alpha(), 1.0);
    EXPECT_EQ(window().frame(), QRectF(720 - 125, 120 + 10, 250, 60));
}

TEST_F(ToastManagerTest, whereNothingMovesItIsThereAtOnceAndStaysAsLong) {
    windows.setComposited(false);
    show("Copied");
    EXPECT_EQ(window().alpha(), 1.0);
    EXPECT_EQ(window().frame().y(), 130);
    time.advance(2299ms);
    EXPECT_EQ(window().alpha(), 1.0);
    time.advance(501ms);
    EXPECT_THAT(windows.windows(), IsEmpty());
}

TEST_F(ToastManagerTest, standsAboveTheBottomOfTheWholeMainScreen) {
    screens.setScreens({Screen{1, QString(), QRectF(0, 0, 1000, 800), QRectF(0, 50, 1000, 700), 1.0},
                        Screen{2, QString(), QRectF(1000, -200, 1600, 1200), QRectF(1000, -150, 1600, 1100), 1.0}});
    screens.setKeyboardScreen(1);
    show("Copied");
    EXPECT_EQ(window().frame().topLeft(), QPointF(1800 - 125, -200 + 120));
}

TEST_F(ToastManagerTest, withoutAScreenItIsShownWhereWindowsBegin) {
    screens.setScreens({});
    show("Copied");
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(window().frame().topLeft(), QPointF(0, 0));
}

TEST_F(ToastManagerTest, fadesOutTwoSecondsAfterItHasFadedIn) {
    show("Copied");
    time.advance(2300ms);
    EXPECT_EQ(window().alpha(), 1.0);
    time.advance(250ms);
    EXPECT_LT(window().alpha(), 0.7);
    time.advance(249ms);
    EXPECT_NEAR(window().alpha(), 0.0, 0.05);
    EXPECT_NEAR(window().frame().y(), 120 + 15, 0.5);
}

TEST_F(ToastManagerTest, isClosedAfter2800Milliseconds) {
    show("Copied");
    time.advance(2799ms);
    EXPECT_THAT(windows.windows(), SizeIs(1));
    time.advance(1ms);
    EXPECT_THAT(windows.windows(), IsEmpty());
}

TEST_F(ToastManagerTest, twoInARowLeaveOneOnTheScreen) {
    show("first");
    show("second");
    EXPECT_EQ(message(), QStringLiteral("second"));
}

TEST_F(ToastManagerTest, aSecondOneGetsTheFadeOfTheFirst) {
    show("first");
    time.advance(2000ms);
    show("second");
    time.advance(300ms);
    EXPECT_EQ(message(), QStringLiteral("second"));
    EXPECT_EQ(window().alpha(), 1.0);
    time.advance(499ms);
    EXPECT_LT(window().alpha(), 0.1);
    time.advance(1ms);
    EXPECT_THAT(windows.windows(), IsEmpty());
}

TEST_F(ToastManagerTest, theTimerOfASecondOneThenFindsNothing) {
    show("first");
    time.advance(2000ms);
    show("second");
    time.advance(2000ms);
    show("third"); // 4.0 s; what is left of the second one comes at 4.3 s
    time.advance(799ms);
    EXPECT_LT(window().alpha(), 0.1) << "it acts on the toast that is there";
    time.advance(1ms);
    EXPECT_THAT(windows.windows(), IsEmpty());
    time.advance(10s);
    EXPECT_THAT(windows.windows(), IsEmpty());
}

TEST_F(ToastManagerTest, aTimerThatFindsNoToastDoesNotCloseALaterOne) {
    show("first");
    time.advance(600ms);
    show("second");       // its fade would begin at 2.9 s, when the first one's end has closed it at 2.8 s
    time.advance(2350ms); // 2.95 s
    EXPECT_THAT(windows.windows(), IsEmpty());
    show("third"); // lives to the end of its own time
    time.advance(2799ms);
    EXPECT_EQ(message(), QStringLiteral("third"));
    time.advance(1ms);
    EXPECT_THAT(windows.windows(), IsEmpty());
}

TEST_F(ToastManagerTest, oneThatAppearsDuringAFadeOutIsClosedAtItsEnd) {
    show("first");
    time.advance(2500ms);
    show("second");
    time.advance(299ms);
    EXPECT_GT(window().alpha(), 0.9);
    EXPECT_EQ(message(), QStringLiteral("second"));
    time.advance(1ms);
    EXPECT_THAT(windows.windows(), IsEmpty());
}

TEST_F(ToastManagerTest, twoFadesOfOneToastRiseTwice) {
    show("first");
    time.advance(200ms);
    show("second"); // fades out from 2.3 s on by the first one's timer and again from 2.5 s on by its own
    time.advance(2599ms);
    EXPECT_GT(window().frame().y(), 120 + 17); // once would be 15, and it is on its way to 20
    time.advance(1ms);
    EXPECT_THAT(windows.windows(), IsEmpty());
    time.advance(10s);
    EXPECT_THAT(windows.windows(), IsEmpty());
}

TEST_F(ToastManagerTest, leavesNothingBehindWhenItGoes) {
    show("first");
    toasts->show(QStringLiteral("second"), QString());
    toasts.reset();
    time.advance(10s);
    EXPECT_THAT(windows.windows(), IsEmpty());
}

/// Of two screens, the second one at the right and of another height.
const Screen first{
    .number = 1, .localizedName = {}, .frame = {0, 0, 1440, 900}, .visibleFrame = {0, 0, 1440, 876}, .scale = 1};
const Screen second{
    .number = 2, .localizedName = {}, .frame = {1440, 0, 1000, 600}, .visibleFrame = {1440, 0, 1000, 600}, .scale = 1};

TEST_F(ToastManagerTest, comesToTheScreenThatIsLeftWhenItsOwnGoesAndEndsAsEver) {
    screens.setScreens({first, second});
    screens.setKeyboardScreen(1);
    show("Copied");
    time.advance(1s);
    EXPECT_TRUE(second.frame.contains(window().frame()));
    screens.setKeyboardScreen(-1);
    screens.setScreens({first});
    EXPECT_EQ(window().frame(), QRectF(720 - 125, 120 + 10, 250, 60));
    EXPECT_EQ(window().alpha(), 1);
    EXPECT_TRUE(window().isVisible());
    time.advance(1799ms);
    EXPECT_TRUE(window().isVisible());
    time.advance(1ms);
    EXPECT_EQ(message(), QString());
}

TEST_F(ToastManagerTest, oneThatIsJustLeavingIsNotShownAgainOnAnotherScreen) {
    screens.setScreens({first, second});
    screens.setKeyboardScreen(1);
    show("Copied");
    time.advance(2500ms);
    screens.setKeyboardScreen(-1);
    screens.setScreens({first});
    EXPECT_EQ(window().alpha(), 0);
}

TEST_F(ToastManagerTest, staysWhereItIsWhenAnotherScreenGoes) {
    screens.setScreens({first, second});
    screens.setKeyboardScreen(0);
    show("Copied");
    time.advance(100ms);
    const QRectF before = window().frame();
    const double alpha = window().alpha();
    screens.setScreens({first});
    EXPECT_EQ(window().frame(), before);
    EXPECT_EQ(window().alpha(), alpha);
}

} // namespace
} // namespace tavrine
