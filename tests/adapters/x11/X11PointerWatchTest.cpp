// Looks at the pointer that go on while it is in use, and rest with it.

#include "adapters/linux/QtTime.h"
#include "adapters/x11/PointerAlarm.h"
#include "adapters/x11/X11Screens.h"
#include "support/LateScreen.h"
#include "support/TestKeyboard.h"
#include "support/Wait.h"

#include <atomic>
#include <chrono>
#include <thread>

#include <gtest/gtest.h>
#include <xcb/res.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using testing::waitUntil;

constexpr Seconds interval{0.01};
constexpr Seconds longInterval{0.1};
constexpr auto restBeat = 1000ms; ///< between two looks while the pointer rests

class X11PointerWatchTest : public ::testing::Test {
protected:
    void watch(Seconds length = interval) {
        keyboard.movePointer(300, 300);
        pointerWatch = screens.watchPointer(time, length, [this] { ++told; });
        ASSERT_TRUE(waitUntil([&] { return told == 1; })); // the first look
    }
    /// Until looks come as seldom as they do at rest.
    [[nodiscard]] bool waitForRest() {
        return waitUntil([&] { return time.now() - pointerWatch->lastLook() > Seconds(0.5); });
    }
    [[nodiscard]] bool waitForLook() {
        return waitUntil([&, before = pointerWatch->lastLook()] { return pointerWatch->lastLook() != before; });
    }
    /// At rest they would take a second each.
    [[nodiscard]] bool tenLooksAreSoon() {
        const auto before = Clock::now();
        for (int i = 0; i < 10; ++i)
            if (!waitForLook())
                return false;
        return Clock::now() - before < 5 * restBeat;
    }
    [[nodiscard]] bool waitForWord() {
        return waitUntil([&, before = told] { return told > before; });
    }

    testing::TestKeyboard keyboard;
    QtTime time;
    X11Screens screens;
    int told = 0;
    std::unique_ptr<PointerWatch> pointerWatch;
};

TEST_F(X11PointerWatchTest, itTellsOfChangesAloneUntilItIsToTellOfEveryLook) {
    watch();
    const Date first = pointerWatch->lastLook();
    ASSERT_TRUE(waitUntil([&] { return pointerWatch->lastLook() - first > Seconds(0.1); }));
    EXPECT_EQ(told, 1); // later looks found nothing new
    keyboard.movePointer(310, 300);
    EXPECT_TRUE(waitUntil([&] { return told == 2; }));
    EXPECT_EQ(screens.mouseLocation().x(), 310);
    keyboard.press(1);
    EXPECT_TRUE(waitUntil([&] { return told == 3 && screens.pressedMouseButtons() == 1; }));
    keyboard.release(1);
    EXPECT_TRUE(waitUntil([&] { return told == 4 && screens.pressedMouseButtons() == 0; }));
    pointerWatch->setTellsAll(true);
    EXPECT_TRUE(waitUntil([&] { return told > 10; }));
    pointerWatch.reset();
    const int before = told;
    keyboard.movePointer(300, 300);
    int toldAfter = 0;
    const auto other = screens.watchPointer(time, interval, [&] { ++toldAfter; });
    EXPECT_TRUE(waitUntil([&] { return toldAfter > 0; }));
    EXPECT_EQ(told, before);
}

TEST_F(X11PointerWatchTest, whileThePointerRestsSoDoTheLooks) {
    watch();
    ASSERT_TRUE(waitForRest());
    ASSERT_TRUE(waitForLook()) << "a look each second finds what nothing tells of";
    EXPECT_TRUE(waitForRest());
    EXPECT_EQ(told, 1);
}

TEST_F(X11PointerWatchTest, aServerThatIsLateWhenTheAlarmIsMadeIsAskedForItAgain) {
    constexpr int lastAnswer = 3; // of those that it takes
    for (const int answer : {0, lastAnswer}) {
        testing::LateScreen screen(500ms); // 200 are waited
        screen.hold(answer);
        told = 0;
        watch();
        EXPECT_TRUE(screen.hasHeld());
        EXPECT_TRUE(waitForRest()) << answer;
        pointerWatch.reset();
    }
}

/// Right after a look at rest the next is a second away: what is told of sooner was not found by it.
TEST_F(X11PointerWatchTest, aPointerThatMovesAfterARestIsSeenLongBeforeTheNextLookAtRest) {
    watch();
    bool isSoon = false;
    for (int i = 0; i < 10 && !isSoon; ++i) { // a machine that is busy may be late a few times
        ASSERT_TRUE(waitForRest() && waitForLook());
        const auto before = Clock::now();
        keyboard.movePointer(310 + i, 300);
        ASSERT_TRUE(waitForWord());
        isSoon = Clock::now() - before < restBeat / 2;
    }
    EXPECT_TRUE(isSoon);
}

TEST_F(X11PointerWatchTest, whoWantsToHearOfEveryLookWaitsForNoRest) {
    watch();
    bool isSoon = false;
    for (int i = 0; i < 10 && !isSoon; ++i) {
        pointerWatch->setTellsAll(false);
        ASSERT_TRUE(waitForRest() && waitForLook());
        const auto before = Clock::now();
        pointerWatch->setTellsAll(true);
        ASSERT_TRUE(waitForWord());
        isSoon = Clock::now() - before < restBeat / 2;
    }
    EXPECT_TRUE(isSoon);
}

/// Moves the threshold of all programs' alarms; nothing falls below none at all.
void setAlarms(int thresholdMs) {
    XcbLink link(10s);
    const auto clients = link.reply<xcb_res_query_clients_reply_t>(xcb_res_query_clients(link.connection()));
    ASSERT_TRUE(clients);
    const std::uint32_t value[] = {thresholdMs < 0 ? ~0U : 0U, static_cast<std::uint32_t>(thresholdMs)};
    for (auto each = xcb_res_query_clients_clients_iterator(clients.get()); each.rem > 0; xcb_res_client_next(&each))
        for (std::uint32_t number = 0; number < 16; ++number) // what is no alarm is refused
            xcb_sync_change_alarm(link.connection(), each.data->resource_base | number, XCB_SYNC_CA_VALUE, value);
    ASSERT_TRUE(link.finish());
}

/// It rings after a rest alone, so that there is none between one use and the next.
TEST_F(X11PointerWatchTest, aPointerInUseThatStaysWhereItIsIsLookedAtAllTheSame) {
    watch(longInterval);          // a hand that is held up shall not make a rest of half of it
    constexpr int sideButton = 8; // no part of what is looked for
    std::atomic<bool> isOver = false;
    std::thread person([&] {
        testing::TestKeyboard hand;
        while (!isOver) {
            hand.press(sideButton);
            hand.release(sideButton);
            std::this_thread::sleep_for(1ms);
        }
    });
    EXPECT_TRUE(tenLooksAreSoon());
    isOver = true;
    person.join();
    EXPECT_TRUE(waitForRest());
}

TEST_F(X11PointerWatchTest, anAlarmThatMissedAMoveIsReliedOnNoMoreUntilItRings) {
    watch();
    ASSERT_TRUE(waitForRest());
    setAlarms(-1);
    keyboard.movePointer(310, 300);
    ASSERT_TRUE(waitForWord());
    EXPECT_TRUE(tenLooksAreSoon());
    setAlarms(5);
    keyboard.movePointer(320, 300);
    ASSERT_TRUE(waitForWord());
    EXPECT_TRUE(waitForRest());
}

class PointerAlarmTest : public ::testing::Test {
protected:
    /// After the pointer has rested.
    void set() {
        ASSERT_TRUE(alarm.isSet());
        ASSERT_TRUE(waitUntil([&] { return alarm.rest(alarm.askForRest()) > 100ms; }));
        while (link.nextEvent()) {
        }
    }
    [[nodiscard]] bool isRung() {
        for (XcbEvent event = link.nextEvent(); event; event = link.nextEvent())
            if (alarm.isRinging(*event))
                return true;
        return false;
    }
    [[nodiscard]] bool rings() {
        return waitUntil([&] { return isRung(); });
    }

    testing::TestKeyboard keyboard;
    XcbLink link{10s};
    PointerAlarm alarm{link, 20ms};
};

TEST_F(PointerAlarmTest, itRingsForAMove) {
    keyboard.movePointer(300, 300);
    set();
    keyboard.movePointer(301, 300);
    EXPECT_TRUE(rings());
}

TEST_F(PointerAlarmTest, itRingsForAButtonThatGoesDownAndForOneThatComesUp) {
    set();
    keyboard.press(1);
    EXPECT_TRUE(rings());
    set();
    keyboard.release(1);
    EXPECT_TRUE(rings());
}

TEST_F(PointerAlarmTest, itRingsForAPointerThatAProgramPutsElsewhere) {
    keyboard.movePointer(300, 300);
    set();
    xcb_warp_pointer(link.connection(), XCB_NONE, link.root(), 0, 0, 0, 0, 350, 300);
    ASSERT_TRUE(link.finish());
    EXPECT_TRUE(rings());
}

TEST_F(PointerAlarmTest, itRingsWhileAnotherProgramHoldsThePointer) {
    keyboard.movePointer(300, 300);
    ASSERT_TRUE(keyboard.grabPointer());
    set();
    keyboard.movePointer(310, 300);
    EXPECT_TRUE(rings());
    keyboard.ungrabPointer();
}

TEST_F(PointerAlarmTest, aKeyIsNoUseOfThePointer) {
    set();
    keyboard.down(testing::key::leftShift);
    ASSERT_TRUE(waitUntil([&] { return keyboard.isDown(testing::key::leftShift); }));
    keyboard.up(testing::key::leftShift);
    ASSERT_TRUE(waitUntil([&] { return !keyboard.isDown(testing::key::leftShift); }));
    ASSERT_TRUE(link.finish());
    EXPECT_FALSE(isRung());
    EXPECT_GT(alarm.rest(alarm.askForRest()), 100ms);
}

} // namespace
} // namespace tavrine
