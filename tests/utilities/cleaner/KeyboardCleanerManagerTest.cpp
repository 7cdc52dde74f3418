#include "utilities/cleaner/KeyboardCleanerManager.h"

#include "adapters/fake/FakeAlerts.h"
#include "adapters/fake/FakeEventTap.h"
#include "adapters/fake/FakeUrlOpener.h"

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class KeyboardCleanerTest : public testing::Test {
public:
    KeyboardCleanerTest() {
        QObject::connect(&manager, &KeyboardCleanerManager::isCleaningPublished, &manager,
                         [this](bool isCleaning) { published.push_back(isCleaning); });
    }
    VirtualTime time;
    FakeEventTaps taps{time};
    FakeAlerts alerts;
    FakeUrlOpener urls;
    KeyboardCleanerManager manager{{taps, alerts, urls, time}};
    std::vector<bool> published;
};

TEST_F(KeyboardCleanerTest, beginsWithTheKeyboardFree) {
    EXPECT_FALSE(manager.isCleaning());
    EXPECT_TRUE(taps.keyArrives());
    EXPECT_EQ(taps.creations(), 0);
}

TEST_F(KeyboardCleanerTest, noKeyArrivesAndNoneEndsTheModeUntilItIsStopped) {
    manager.startCleaning();
    EXPECT_TRUE(manager.isCleaning());
    EXPECT_FALSE(taps.keyArrives());
    time.advance(1h);
    EXPECT_TRUE(manager.isCleaning());
    EXPECT_FALSE(taps.keyArrives());
    manager.stopCleaning();
    EXPECT_FALSE(manager.isCleaning());
    EXPECT_TRUE(taps.keyArrives());
    EXPECT_THAT(published, ElementsAre(true, false));
}

TEST_F(KeyboardCleanerTest, startingTwiceIsStartingOnce) {
    manager.startCleaning();
    manager.startCleaning();
    EXPECT_EQ(taps.creations(), 1);
    manager.stopCleaning();
    EXPECT_TRUE(taps.keyArrives());
}

TEST_F(KeyboardCleanerTest, stoppingWhenNothingRunsOnlySaysThatNothingIsBlocked) {
    manager.stopCleaning();
    EXPECT_FALSE(manager.isCleaning());
    EXPECT_THAT(published, ElementsAre(false));
    EXPECT_EQ(taps.creations(), 0);
    time.advance(1min);
    EXPECT_TRUE(alerts.shown().isEmpty());
}

TEST_F(KeyboardCleanerTest, whereNoProgramMayBlockTheKeyboardThePersonIsToldSoAndAskedForNothing) {
    taps.setThere(false);
    manager.startCleaning();
    EXPECT_FALSE(manager.isCleaning());
    time.runPending();
    ASSERT_EQ(alerts.shown().size(), 1);
    const Alert &alert = alerts.shown().constFirst();
    EXPECT_EQ(alert.message, QStringLiteral("Clean Mode Is Not Available"));
    EXPECT_THAT(alert.buttons, ElementsAre(QStringLiteral("OK")));
    EXPECT_TRUE(urls.opened().isEmpty());
}

TEST_F(KeyboardCleanerTest, withoutPermissionThePromptComesATurnLaterAndNothingIsBlocked) {
    taps.setPermitted(false);
    manager.startCleaning();
    EXPECT_FALSE(manager.isCleaning());
    EXPECT_TRUE(alerts.shown().isEmpty());
    time.runPending();
    ASSERT_EQ(alerts.shown().size(), 1);
    const Alert &alert = alerts.shown().constFirst();
    EXPECT_EQ(alert.message, QStringLiteral("Accessibility Permission Required"));
    EXPECT_EQ(alert.information, QStringLiteral("Clean Mode requires Accessibility permission to block keyboard input."
                                                "\n\nGo to System Settings → Privacy & Security → Accessibility and "
                                                "enable Tavrine."));
    EXPECT_EQ(alert.buttons, QStringList({QStringLiteral("Open Settings"), QStringLiteral("Cancel")}));
}

TEST_F(KeyboardCleanerTest, afterCancelInThePromptTheModeIsOffAndALaterStartTriesAgain) {
    taps.setPermitted(false);
    manager.startCleaning();
    time.runPending();
    EXPECT_TRUE(urls.opened().isEmpty());
    EXPECT_FALSE(manager.isCleaning());
    taps.setPermitted(true);
    manager.startCleaning();
    EXPECT_TRUE(manager.isCleaning());
}

TEST_F(KeyboardCleanerTest, theFirstButtonOpensTheSettings) {
    taps.setPermitted(false);
    alerts.answerNextWithFirstButton();
    manager.startCleaning();
    time.runPending();
    EXPECT_EQ(urls.opened(), QList<QUrl>{QUrl(QStringLiteral(
                                 "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility"))});
}

TEST_F(KeyboardCleanerTest, whileAnotherProgramHoldsTheKeyboardNothingIsBlockedAndThenItIs) {
    taps.hold();
    manager.startCleaning();
    EXPECT_FALSE(manager.isCleaning());
    EXPECT_TRUE(manager.isStarting());
    time.advance(500ms);
    EXPECT_FALSE(manager.isCleaning());
    taps.letGo();
    EXPECT_TRUE(manager.isCleaning());
    EXPECT_FALSE(manager.isStarting());
    EXPECT_TRUE(alerts.shown().isEmpty());
}

TEST_F(KeyboardCleanerTest, aKeyboardThatIsHeldForASecondIsAskedForByThePrompt) {
    taps.hold();
    manager.startCleaning();
    time.advance(999ms);
    EXPECT_TRUE(alerts.shown().isEmpty());
    time.advance(1ms);
    EXPECT_EQ(alerts.shown().size(), 1);
    EXPECT_FALSE(manager.isCleaning());
    EXPECT_FALSE(manager.isStarting());
    taps.letGo();
    EXPECT_TRUE(taps.keyArrives());
}

TEST_F(KeyboardCleanerTest, stoppingDuringTheWaitEndsItWithoutAPrompt) {
    taps.hold();
    manager.startCleaning();
    manager.stopCleaning();
    EXPECT_FALSE(manager.isStarting());
    taps.letGo();
    time.advance(2s);
    EXPECT_FALSE(manager.isCleaning());
    EXPECT_TRUE(taps.keyArrives());
    EXPECT_TRUE(alerts.shown().isEmpty());
}

TEST_F(KeyboardCleanerTest, aLockOfTheSessionEndsTheModeAndTheWaitForItWithoutAPrompt) {
    for (const bool isWaiting : {true, false}) {
        if (isWaiting)
            taps.hold();
        else
            taps.letGo();
        manager.startCleaning();
        EXPECT_EQ(manager.isStarting(), isWaiting);
        taps.lock();
        time.advance(2s);
        EXPECT_FALSE(manager.isStarting());
        EXPECT_FALSE(manager.isCleaning());
        EXPECT_TRUE(taps.keyArrives());
        EXPECT_TRUE(alerts.shown().isEmpty()) << isWaiting;
    }
}

TEST_F(KeyboardCleanerTest, aDesktopThatIsLostEndsTheModeWithoutAPrompt) {
    manager.startCleaning();
    taps.lose();
    time.advance(1s);
    EXPECT_FALSE(manager.isCleaning());
    EXPECT_TRUE(alerts.shown().isEmpty());
    manager.startCleaning();
    EXPECT_TRUE(manager.isCleaning());
}

} // namespace
} // namespace tavrine
