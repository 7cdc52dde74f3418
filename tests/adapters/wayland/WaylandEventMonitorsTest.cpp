#include "adapters/wayland/WaylandEventMonitors.h"

#include "adapters/x11/ForeignWindow.h"
#include "base/VirtualKeys.h"
#include "support/Wait.h"
#include "support/WaylandHand.h"

#include <QGuiApplication>
#include <QRasterWindow>

#include <gmock/gmock.h>

namespace tavrine::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Window final : public QRasterWindow {
public:
    int keys = 0;
    int moves = 0;

protected:
    void mouseMoveEvent(QMouseEvent * /*event*/) override { ++moves; }
    void keyPressEvent(QKeyEvent * /*event*/) override { ++keys; }
};

class WaylandEventMonitorsTest : public ::testing::Test {
protected:
    void show() {
        window.resize(400, 300);
        window.show();
        ASSERT_TRUE(waitUntil([this] { return QGuiApplication::focusWindow() == &window; }));
    }
    void watch(quint32 mask, bool swallows = false) {
        monitor = monitors.addLocalMonitor(mask, [this, swallows](const InputEvent &event) {
            types.push_back(event.type);
            keys.push_back(event.keyCode);
            flags.push_back(event.modifierFlags);
            return swallows;
        });
    }

    WaylandHand hand;
    Window window;
    WaylandEventMonitors monitors;
    std::unique_ptr<EventMonitor> monitor;
    std::vector<quint32> types;
    std::vector<int> keys;
    std::vector<quint32> flags;
};

TEST_F(WaylandEventMonitorsTest, modifiersAreToldAsTheyGoDownAndUp) {
    show();
    watch(eventMask::flagsChanged);
    hand.chord({KEY_LEFTALT, KEY_LEFTSHIFT});
    hand.chord({KEY_LEFTMETA, KEY_A});
    EXPECT_TRUE(waitUntil([this] { return flags.size() >= 6; }));
    EXPECT_THAT(flags, ElementsAre(0x80000, 0xA0000, 0x80000, 0, 0x100000, 0));
}

TEST_F(WaylandEventMonitorsTest, capsLockIsAFlagWhileItIsOn) {
    show();
    hand.tap(KEY_CAPSLOCK);
    watch(eventMask::flagsChanged);
    hand.tap(KEY_LEFTALT);
    ASSERT_TRUE(waitUntil([this] { return flags.size() >= 2; }));
    hand.tap(KEY_CAPSLOCK);
    hand.tap(KEY_LEFTALT);
    EXPECT_TRUE(waitUntil([this] { return flags.size() >= 4; }));
    EXPECT_THAT(flags, ElementsAre(0x90000, 0x10000, 0x80000, 0));
}

TEST_F(WaylandEventMonitorsTest, aSwallowedKeyIsSeenByNobodyElse) {
    show();
    watch(eventMask::keyDown, true);
    hand.tap(KEY_V);
    ASSERT_TRUE(waitUntil([this] { return !keys.empty(); }));
    EXPECT_THAT(keys, ElementsAre(virtualKey::v));
    monitor.reset();
    hand.tap(KEY_A);
    EXPECT_TRUE(waitUntil([this] { return window.keys > 0; }));
    EXPECT_EQ(window.keys, 1);
}

TEST_F(WaylandEventMonitorsTest, clicksOfOwnWindowsAreToldInOrder) {
    show();
    watch(eventMask::leftMouseDown | eventMask::leftMouseUp | eventMask::leftMouseDragged);
    const QPoint middle = hand.layout().center();
    ASSERT_TRUE(waitUntil([&, step = 0]() mutable { // the keyboard may come to it before its place
        hand.move(middle + QPoint(step++ % 2, 0));
        return window.moves > 0;
    }));
    hand.drag(middle, middle + QPoint(40, 0));
    ASSERT_TRUE(waitUntil([this] { return !types.empty() && types.back() == eventMask::leftMouseUp; }));
    EXPECT_EQ(types.front(), eventMask::leftMouseDown);
    EXPECT_EQ(types.at(1), eventMask::leftMouseDragged);
}

} // namespace
} // namespace tavrine::testing
