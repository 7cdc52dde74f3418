#include "panels/ToastManager.h"

#include "adapters/fake/FakeScreens.h"
#include "adapters/fake/FakeToastWindows.h"
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
    [[nodiscard]] FakeToastWindows::State window() const {
        EXPECT_THAT(windows.windows(), SizeIs(1));
        return windows.windows().empty() ? FakeToastWindows::State() : windows.windows().front();
    }
    [[nodiscard]] QString message() const { return windows.messages().join(u'|'); }

    VirtualTime time;
    FakeScreens screens;
    FakeToastWindows windows;
    std::unique_ptr<ToastManager> toasts = std::make_unique<ToastManager>(time, screens, windows);
};

TEST_F(ToastManagerTest, appearsInALaterTurn) {
    toasts->show(QStringLiteral("Copied"), QStringLiteral("checkmark"));
    EXPECT_THAT(windows.windows(), IsEmpty());
    time.runPending();
    EXPECT_EQ(message(), QStringLiteral("Copied"));
    EXPECT_EQ(window().description.icon, QStringLiteral("checkmark"));
    EXPECT_TRUE(window().isShown);
}

TEST_F(ToastManagerTest, mayBeShownFromAnyThread) {
    std::thread([this] { toasts->show(QStringLiteral("Copied"), QStringLiteral("checkmark")); }).join();
    EXPECT_THAT(windows.windows(), IsEmpty());
    time.runPending();
    EXPECT_EQ(message(), QStringLiteral("Copied"));
}

TEST_F(ToastManagerTest, standsInAWindowOfItsOwnKind) {
    show("Copied");
    EXPECT_EQ(window().description.size, QSizeF(250, 60));
    EXPECT_EQ(window().description.level, 3);
    EXPECT_EQ(window().description.collectionBehavior, 257U);
}

TEST_F(ToastManagerTest, aLongMessageDoesNotChangeTheSize) {
    show(QByteArray(10'000, 'x').constData());
    EXPECT_EQ(window().description.size, QSizeF(250, 60));
}

TEST_F(ToastManagerTest, fadesInOver300MillisecondsWhileItRisesByTen) {
    show("Copied");
    EXPECT_EQ(window().origin, QPointF(720 - 125, 120 + 10));
    EXPECT_EQ(window().alpha, 1.0);
    EXPECT_EQ(window().lastDuration, Seconds{0.3});
}

TEST_F(ToastManagerTest, standsAboveTheBottomOfTheWholeMainScreen) {
    screens.setScreens({Screen{1, QString(), QRectF(0, 0, 1000, 800), QRectF(0, 50, 1000, 700), 1.0},
                        Screen{2, QString(), QRectF(1000, -200, 1600, 1200), QRectF(1000, -150, 1600, 1100), 1.0}});
    screens.setKeyboardScreen(1);
    show("Copied");
    EXPECT_EQ(window().origin, QPointF(1800 - 125, -200 + 120 + 10));
}

TEST_F(ToastManagerTest, withoutAScreenItIsShownWhereWindowsBegin) {
    screens.setScreens({});
    show("Copied");
    EXPECT_TRUE(window().isShown);
    EXPECT_EQ(window().origin, QPointF(0, 10));
}

TEST_F(ToastManagerTest, fadesOutTwoSecondsAfterItHasFadedIn) {
    show("Copied");
    time.advance(2299ms);
    EXPECT_EQ(window().alpha, 1.0);
    time.advance(1ms);
    EXPECT_EQ(window().alpha, 0.0);
    EXPECT_EQ(window().lastDuration, Seconds{0.5});
    EXPECT_EQ(window().origin, QPointF(720 - 125, 120 + 15));
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
    time.advance(299ms);
    EXPECT_EQ(window().alpha, 1.0);
    time.advance(1ms);
    EXPECT_EQ(message(), QStringLiteral("second"));
    EXPECT_EQ(window().alpha, 0.0);
    time.advance(500ms);
    EXPECT_THAT(windows.windows(), IsEmpty());
}

TEST_F(ToastManagerTest, theTimerOfASecondOneThenFindsNothing) {
    show("first");
    time.advance(2000ms);
    show("second");
    time.advance(2000ms);
    show("third"); // 4.0 s; what is left of the second one comes at 4.3 s
    time.advance(300ms);
    EXPECT_EQ(window().alpha, 0.0) << "it acts on the toast that is there";
    time.advance(500ms);
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
    EXPECT_EQ(window().alpha, 1.0);
    time.advance(299ms);
    EXPECT_EQ(message(), QStringLiteral("second"));
    time.advance(1ms);
    EXPECT_THAT(windows.windows(), IsEmpty());
}

TEST_F(ToastManagerTest, twoFadesOfOneToastRiseTwice) {
    show("first");
    time.advance(200ms);
    show("second"); // fades out at 2.3 s by the first one's timer and again at 2.5 s by its own
    time.advance(2200ms);
    EXPECT_EQ(window().animations, 2);
    time.advance(100ms);
    EXPECT_EQ(window().animations, 3);
    EXPECT_EQ(window().origin, QPointF(720 - 125, 120 + 20));
    time.advance(299ms);
    EXPECT_THAT(windows.windows(), SizeIs(1));
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

} // namespace
} // namespace tavrine
