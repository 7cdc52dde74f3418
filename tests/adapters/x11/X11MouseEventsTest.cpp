// What the mouse does, as the monitors tell of it, where it is fast, under way, or this program's own.

#include "adapters/x11/X11DragPasteboards.h"
#include "adapters/x11/X11EventMonitors.h"
#include "support/DragRehearsal.h"
#include "support/OwnWindow.h"
#include "support/PrivateScreen.h"
#include "support/RawPresses.h"
#include "support/SlowManager.h"
#include "support/TestKeyboard.h"
#include "support/Wait.h"

#include <QDrag>
#include <QElapsedTimer>
#include <QMimeData>
#include <QMouseEvent>
#include <QRasterWindow>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <thread>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::waitUntil;

constexpr quint32 everyRelease = eventMask::leftMouseUp | eventMask::rightMouseUp | eventMask::otherMouseUp;
constexpr quint32 everyMotion =
    eventMask::mouseMoved | eventMask::leftMouseDragged | eventMask::rightMouseDragged | eventMask::otherMouseDragged;

class X11MouseEventsTest : public ::testing::Test {
protected:
    void watch(quint32 mask) {
        monitor = monitors.addGlobalMonitor(mask, [this](const InputEvent &event) { types.push_back(event.type); });
    }
    /// Something else that the mouse does, after all that was done: once it is told, everything before it has been.
    void settle() {
        const auto marks = [this] { return std::count(types.begin(), types.end(), mark); };
        const auto before = marks();
        keyboard.press(backButton);
        keyboard.release(backButton);
        EXPECT_TRUE(waitUntil([&] { return marks() > before; }));
        std::erase_if(types, [](quint32 type) { return type == mark; });
    }
    static constexpr quint32 mark = eventMask::otherMouseUp;
    static constexpr int backButton = 8; // without a meaning for the window manager

    testing::TestKeyboard keyboard;
    X11EventMonitors monitors;
    std::vector<quint32> types;
    size_t toldBefore = 0;
    std::unique_ptr<EventMonitor> monitor;
};

TEST_F(X11MouseEventsTest, aFloodOfMotionsTakesFewTurnsAndEachReleaseIsTold) {
    keyboard.movePointer(1000, 600);
    watch(everyRelease | everyMotion);
    QElapsedTimer clock;
    clock.start();
    std::atomic<bool> isOver = false;
    std::thread person([&] {
        testing::TestKeyboard fast;
        for (int i = 0; i < 3000; ++i) {
            fast.movePointer(1000 + i % 100, 600);
            if (i % 100 == 50)
                fast.press(1);
            if (i % 100 == 70)
                fast.release(1);
        }
        isOver = true;
    });
    // A turn of the loop for each thing that comes, and none of its own.
    int turns = 0;
    const auto count = [&] {
        if (types.size() != toldBefore)
            ++turns;
        toldBefore = types.size();
    };
    while (!isOver) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents);
        count();
    }
    person.join();
    EXPECT_TRUE(waitUntil([&] { return std::count(types.begin(), types.end(), eventMask::leftMouseUp) == 30; }));
    EXPECT_LE(turns, clock.elapsed() / X11MouseEvents::shortestPause.count() + 2);
    // In order: no drag after the release of its button.
    for (size_t i = 1; i < types.size(); ++i)
        EXPECT_FALSE(types[i] == eventMask::leftMouseUp && types[i - 1] == eventMask::mouseMoved) << i;
}

TEST_F(X11MouseEventsTest, aDragThatWasUnderWayBeforeTheWatchingBeganIsToldWithItsButton) {
    keyboard.movePointer(1000, 600);
    keyboard.press(1);
    watch(everyRelease | everyMotion);
    keyboard.movePointer(1010, 600);
    EXPECT_TRUE(waitUntil([&] { return types == std::vector{eventMask::leftMouseDragged}; }));
    keyboard.release(1);
    EXPECT_TRUE(waitUntil([&] { return types.back() == eventMask::leftMouseUp; }));
}

/// The server looks at its clock again for what windows get.
TEST_F(X11MouseEventsTest, aPressThatTheToolkitHasWithALaterTimeIsItsOwn) {
    std::vector<quint32> told;
    X11MouseEvents mouse([&](quint32 type) { told.push_back(type); });
    mouse.watch(X11MouseEvents::Wanted::all);
    keyboard.movePointer(1000, 600);
    testing::RawPresses presses;
    keyboard.press(1);
    mouse.noteOwnPress(presses.next() + 1);
    QThread::msleep(3); // the next press is later than that
    keyboard.movePointer(1010, 600);
    keyboard.release(1);
    keyboard.press(backButton); // one of another program
    keyboard.release(backButton);
    EXPECT_TRUE(waitUntil([&] { return !told.empty() && told.back() == mark; }));
    std::erase(told, eventMask::mouseMoved);
    EXPECT_THAT(told, ElementsAre(mark));
}

TEST_F(X11MouseEventsTest, theWheelIsNoButton) {
    watch(everyRelease | everyMotion);
    ASSERT_TRUE(keyboard.grabPointer());
    for (const int wheel : {4, 5, 6, 7}) {
        keyboard.press(wheel);
        keyboard.release(wheel);
    }
    keyboard.press(3);
    keyboard.release(3);
    EXPECT_TRUE(waitUntil([&] { return !types.empty() && types.back() == eventMask::rightMouseUp; }));
    keyboard.ungrabPointer();
    EXPECT_THAT(types, ElementsAre(eventMask::rightMouseUp));
}

TEST_F(X11MouseEventsTest, monitorsThatAreAddedAnewWorkAfterTheServerWasLost) {
    auto first = std::make_unique<testing::PrivateScreen>();
    X11EventMonitors there;
    const auto add = [&] {
        return there.addGlobalMonitor(everyMotion, [&](const InputEvent &event) { types.push_back(event.type); });
    };
    monitor = add();
    first->end();
    const testing::PrivateScreen second;
    testing::TestKeyboard person;
    int place = 0;
    EXPECT_TRUE(waitUntil([&] { // anew as often as who uses them sees that they are silent
        monitor.reset();
        monitor = add();
        person.movePointer(10 + ++place % 100, 10);
        return !types.empty();
    }));
    monitor.reset();
}

/// A window out of which text is dragged.
class DraggedOutOf final : public QRasterWindow {
public:
    bool isPressed = false;
    bool isDragging = false;
    bool wasDragged = false;

protected:
    void mousePressEvent(QMouseEvent *) override { isPressed = true; }
    void mouseMoveEvent(QMouseEvent *event) override {
        if (event->buttons() == Qt::NoButton || std::exchange(isDragging, true))
            return;
        auto *drag = new QDrag(this);
        auto *text = new QMimeData;
        text->setText(QStringLiteral("text"));
        drag->setMimeData(text);
        (void)drag->exec(Qt::CopyAction);
        wasDragged = true;
    }
};

/// A drag of text out of a window of this program, from the press to the drop.
class DragOfOurs : public X11MouseEventsTest {
protected:
    void SetUp() override {
        window.setGeometry(300, 300, 100, 100);
        window.show();
        ASSERT_TRUE(testing::comesToTheFront(window));
        watch(everyRelease | everyMotion);
    }
    /// The hand moves on until `isEnough`, from a thread of its own: the toolkit leads a drag in a loop of its own.
    template <class Condition>
    void drag(Condition isEnough) {
        const auto local = monitors.addLocalMonitor(everyRelease | everyMotion, [&](const InputEvent &event) {
            if (window.isDragging)
                inside.push_back(event.type);
            return false;
        });
        keyboard.movePointer(350, 350);
        keyboard.press(1);
        std::atomic<bool> isReady = false;
        std::thread person([&] {
            testing::TestKeyboard hand;
            QElapsedTimer clock;
            clock.start();
            for (int i = 0; i < 50 || (!isReady && clock.elapsed() < 10'000); ++i) {
                hand.movePointer(350 + i % 50 * 10, 350);
                QThread::msleep(4);
            }
            hand.movePointer(840, 350); // however far it was: what comes after the drag is over no window of ours
            hand.release(1);
        });
        QTimer look;
        look.callOnTimeout([&] { isReady = window.isDragging && isEnough(); });
        look.start(5ms);
        EXPECT_TRUE(waitUntil([&] { return window.wasDragged && !inside.empty(); }));
        person.join();
        settle();
        std::erase(types, eventMask::mouseMoved);
    }

    DraggedOutOf window;
    std::vector<quint32> inside;
};

TEST_F(DragOfOurs, movesInsideAlone) {
    drag([] { return true; });
    EXPECT_THAT(inside, ElementsAre(eventMask::leftMouseUp));
    EXPECT_THAT(types, IsEmpty());
}

TEST_F(DragOfOurs, isNoneOfAnotherProgram) {
    const auto pasteboard = X11DragPasteboards().watch();
    ASSERT_TRUE(testing::seesDrags(*pasteboard));
    const int before = pasteboard->changeCount();
    bool isDragOfOthers = false;
    pasteboard->setOnChange([&] { isDragOfOthers = isDragOfOthers || pasteboard->isDragging(); });
    drag([&] { return pasteboard->changeCount() > before; });
    EXPECT_EQ(pasteboard->changeCount(), before + 1);
    EXPECT_FALSE(isDragOfOthers);
}

TEST_F(DragOfOurs, movesInsideAloneWhereTheWindowManagerKeepsItsPressForAWhile) {
    const testing::SlowManager manager(300ms);
    drag([] { return true; });
    EXPECT_THAT(inside, ElementsAre(eventMask::leftMouseUp));
    EXPECT_THAT(types, IsEmpty());
}

} // namespace
} // namespace tavrine
