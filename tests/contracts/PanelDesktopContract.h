#pragma once

// What a desktop promises for panels, monitors, screens, activation and posting, on every desktop that is instantiated.

#include "base/VirtualKeys.h"
#include "ports/Access.h"
#include "ports/ApplicationActivator.h"
#include "ports/EventMonitors.h"
#include "ports/PanelWindow.h"
#include "ports/Screens.h"
#include "ports/Workspace.h"

#include <memory>
#include <vector>

#include <gmock/gmock.h>

namespace tavrine {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// One desktop, on which the person does things. Every action is over when it returns.
class PanelDesktop {
public:
    virtual ~PanelDesktop() = default;
    virtual PanelWindows &windows() = 0;
    virtual EventMonitors &monitors() = 0;
    virtual Screens &screens() = 0;
    virtual Workspace &workspace() = 0;
    virtual ApplicationActivator &activator() = 0;
    virtual Access &access() = 0;
    virtual void tapOption() = 0;
    virtual void tapKey(int keyCode) = 0;
    /// With the left button, at a place in points from the bottom left.
    virtual void click(QPointF place) = 0;
    /// With a button of its number: pressed at one place, released at the other. 0 for a move without one.
    virtual void drag(int button, QPointF from, QPointF to) = 0;
    /// Another program comes up and takes the keyboard, and it ends.
    virtual RunningApplication startProgram() = 0;
    virtual void endProgram(const RunningApplication &application) = 0;
    virtual bool comesTrue(const std::function<bool()> &condition) = 0;
};

template <class T>
std::unique_ptr<PanelDesktop> make() {
    return std::make_unique<T>();
}

class PanelDesktopContract : public ::testing::TestWithParam<std::unique_ptr<PanelDesktop> (*)()> {
protected:
    std::unique_ptr<PanelWindow> showPanel(bool canBecomeKey = true) {
        auto panel = desktop->windows().makePanel(
            {.title = QStringLiteral("A panel"), .contentSize = QSizeF(300, 200), .canBecomeKey = canBecomeKey});
        panel->setFrame({400, 300, 300, 200});
        panel->makeKeyAndOrderFront();
        return panel;
    }
    std::unique_ptr<EventMonitor> watchGlobally(quint32 mask) {
        return desktop->monitors().addGlobalMonitor(mask, [this](const InputEvent &event) { global.push_back(event); });
    }
    std::unique_ptr<EventMonitor> watchLocally(quint32 mask) {
        return desktop->monitors().addLocalMonitor(mask, [this](const InputEvent &event) {
            local.push_back(event);
            return false;
        });
    }
    /// So many of what goes to other programs, or nothing where the desktop keeps that to itself.
    [[nodiscard]] size_t ofOthers(size_t count) const { return desktop->monitors().tellsOfOthers() ? count : 0; }
    [[nodiscard]] std::vector<quint32> kindsOfOthers(std::vector<quint32> kinds) const {
        return desktop->monitors().tellsOfOthers() ? kinds : std::vector<quint32>();
    }
    bool panelHasKeyboard() {
        // A key goes to the local monitors once the panel has it.
        const auto monitor = watchLocally(eventMask::keyDown);
        return desktop->comesTrue([&] {
            local.clear();
            desktop->tapKey(virtualKey::p);
            return local.size() == 1;
        });
    }

    /// In their order, a row of equal ones as one.
    static std::vector<quint32> kinds(const std::vector<InputEvent> &events) {
        std::vector<quint32> kinds;
        for (const InputEvent &event : events)
            if (kinds.empty() || kinds.back() != event.type)
                kinds.push_back(event.type);
        return kinds;
    }

    static constexpr quint32 drags = eventMask::leftMouseUp | eventMask::rightMouseUp | eventMask::otherMouseUp |
                                     eventMask::leftMouseDragged | eventMask::rightMouseDragged |
                                     eventMask::otherMouseDragged;
    std::unique_ptr<PanelDesktop> desktop = GetParam()();
    std::vector<InputEvent> global;
    std::vector<InputEvent> local;
};

TEST_P(PanelDesktopContract, aNewPanelIsOrderedOut) {
    const auto panel = desktop->windows().makePanel({.title = {}, .contentSize = QSizeF(300, 200)});
    EXPECT_FALSE(panel->isVisible());
    EXPECT_EQ(panel->frame().size(), QSizeF(300, 200));
    EXPECT_EQ(panel->alpha(), 1.0);
}

TEST_P(PanelDesktopContract, aPanelKeepsItsFrameThroughShowingAndOrderingOut) {
    const auto panel = showPanel();
    EXPECT_TRUE(panel->isVisible());
    ASSERT_TRUE(panelHasKeyboard());
    EXPECT_EQ(panel->frame(), QRectF(400, 300, 300, 200));
    panel->orderOut();
    EXPECT_FALSE(panel->isVisible());
    EXPECT_EQ(panel->frame(), QRectF(400, 300, 300, 200));
}

TEST_P(PanelDesktopContract, everyPanelHasANumberThatStaysWithIt) {
    const auto panel = showPanel();
    const auto other = desktop->windows().makePanel({.title = {}, .contentSize = QSizeF(30, 20)});
    const qint64 number = panel->windowNumber();
    EXPECT_NE(number, 0);
    EXPECT_NE(number, other->windowNumber());
    panel->orderOut();
    panel->makeKeyAndOrderFront();
    EXPECT_EQ(panel->windowNumber(), number);
}

TEST_P(PanelDesktopContract, alphaIsReadBackAsItWasSet) {
    const auto panel = showPanel();
    panel->setAlpha(0.123);
    EXPECT_EQ(panel->alpha(), 0.123);
}

TEST_P(PanelDesktopContract, keysGoToTheProgramThatHasTheKeyboard) {
    const auto program = desktop->startProgram();
    const auto monitor = watchGlobally(eventMask::keyDown);
    desktop->tapKey(virtualKey::escape);
    ASSERT_EQ(global.size(), ofOthers(1));
    for (const InputEvent &event : global)
        EXPECT_EQ(event.keyCode, virtualKey::escape);
    const auto panel = showPanel();
    ASSERT_TRUE(panelHasKeyboard());
    global.clear();
    desktop->tapKey(virtualKey::escape);
    EXPECT_THAT(global, IsEmpty());
}

TEST_P(PanelDesktopContract, modifiersGoToTheLocalMonitorsWhileAPanelHasTheKeyboard) {
    const auto program = desktop->startProgram();
    const auto watcher = watchGlobally(eventMask::flagsChanged);
    const auto localWatcher = watchLocally(eventMask::flagsChanged);
    desktop->tapOption();
    EXPECT_EQ(global.size(), ofOthers(2));
    EXPECT_THAT(local, IsEmpty());
    const auto panel = showPanel();
    ASSERT_TRUE(panelHasKeyboard());
    global.clear();
    local.clear();
    desktop->tapOption();
    EXPECT_THAT(global, IsEmpty());
    ASSERT_EQ(local.size(), 2U);
    EXPECT_EQ(local[0].modifierFlags, modifierFlag::option);
    EXPECT_EQ(local[1].modifierFlags, 0U);
}

TEST_P(PanelDesktopContract, aClickGoesToTheWindowUnderIt) {
    const auto panel = showPanel();
    ASSERT_TRUE(panelHasKeyboard());
    const auto watcher = watchGlobally(eventMask::leftMouseDown | eventMask::rightMouseDown);
    desktop->click(panel->frame().center());
    EXPECT_THAT(global, IsEmpty());
    EXPECT_TRUE(desktop->comesTrue([&] { // who is told nothing of others needs a moment to hear of this
        global.clear();
        desktop->click({5, 5});
        return global.size() == 1;
    }));
    EXPECT_EQ(desktop->screens().mouseLocation(), QPointF(5, 5));
}

TEST_P(PanelDesktopContract, theDragOfEachButtonIsToldWithItsRelease) {
    const auto watcher = watchGlobally(drags);
    desktop->drag(1, {5, 5}, {50, 5});
    EXPECT_EQ(kinds(global), kindsOfOthers({eventMask::leftMouseDragged, eventMask::leftMouseUp}));
    global.clear();
    desktop->drag(3, {5, 5}, {50, 5});
    EXPECT_EQ(kinds(global), kindsOfOthers({eventMask::rightMouseDragged, eventMask::rightMouseUp}));
    global.clear();
    desktop->drag(2, {5, 5}, {50, 5});
    EXPECT_EQ(kinds(global), kindsOfOthers({eventMask::otherMouseDragged, eventMask::otherMouseUp}));
}

TEST_P(PanelDesktopContract, aDragIsForWhoeverGotThePress) {
    const auto panel = showPanel();
    ASSERT_TRUE(panelHasKeyboard());
    const auto watcher = watchGlobally(drags);
    const auto localWatcher = watchLocally(drags);
    local.clear();
    desktop->drag(1, {5, 5}, panel->frame().center());
    EXPECT_EQ(kinds(global), kindsOfOthers({eventMask::leftMouseDragged, eventMask::leftMouseUp}));
    EXPECT_THAT(local, IsEmpty());
    global.clear();
    desktop->drag(1, panel->frame().center(), {5, 5});
    EXPECT_THAT(global, IsEmpty());
    EXPECT_THAT(kinds(local), ElementsAre(eventMask::leftMouseDragged, eventMask::leftMouseUp));
}

TEST_P(PanelDesktopContract, aMoveIsForTheWindowUnderThePointer) {
    const auto panel = showPanel();
    ASSERT_TRUE(panelHasKeyboard());
    desktop->drag(0, {}, {5, 5});
    const auto watcher = watchGlobally(eventMask::mouseMoved);
    const auto localWatcher = watchLocally(eventMask::mouseMoved);
    local.clear();
    desktop->drag(0, {}, {50, 5});
    EXPECT_EQ(kinds(global), kindsOfOthers({eventMask::mouseMoved}));
    EXPECT_THAT(local, IsEmpty());
    global.clear();
    desktop->drag(0, {}, panel->frame().center());
    EXPECT_THAT(global, IsEmpty());
    EXPECT_THAT(kinds(local), ElementsAre(eventMask::mouseMoved));
}

TEST_P(PanelDesktopContract, whatNobodyAskedForIsNotTold) {
    const auto watcher = watchGlobally(eventMask::leftMouseUp);
    const auto localWatcher = watchLocally(eventMask::leftMouseUp);
    desktop->drag(1, {5, 5}, {50, 5});
    EXPECT_EQ(global.size(), ofOthers(1));
    EXPECT_THAT(local, IsEmpty());
}

TEST_P(PanelDesktopContract, aMonitorThatEndedIsNotCalled) {
    auto watcher = watchGlobally(eventMask::flagsChanged);
    watcher.reset();
    desktop->tapOption();
    EXPECT_THAT(global, IsEmpty());
}

TEST_P(PanelDesktopContract, aPanelThatTakesNoKeyboardLeavesItWhereItIs) {
    const auto program = desktop->startProgram();
    const auto panel = showPanel(false);
    const auto watcher = watchGlobally(eventMask::keyDown);
    desktop->tapKey(virtualKey::p);
    EXPECT_EQ(global.size(), ofOthers(1));
    EXPECT_EQ(desktop->workspace().frontmostApplication(), program);
}

TEST_P(PanelDesktopContract, aProgramIsBroughtToTheFront) {
    const auto first = desktop->startProgram();
    const auto second = desktop->startProgram();
    EXPECT_EQ(desktop->workspace().frontmostApplication(), second);
    EXPECT_TRUE(desktop->activator().isRunning(first));
    EXPECT_TRUE(desktop->activator().activate(first));
    EXPECT_TRUE(desktop->comesTrue([&] { return desktop->workspace().frontmostApplication() == first; }));
}

TEST_P(PanelDesktopContract, aProgramThatEndedCannotBeBroughtToTheFront) {
    const auto program = desktop->startProgram();
    desktop->endProgram(program);
    EXPECT_FALSE(desktop->activator().isRunning(program));
    EXPECT_FALSE(desktop->activator().activate(program));
}

TEST_P(PanelDesktopContract, theFirstScreenIsAtTheOrigin) {
    const auto screens = desktop->screens().screens();
    ASSERT_FALSE(screens.isEmpty());
    EXPECT_EQ(screens[0].frame.topLeft(), QPointF(0, 0));
    EXPECT_TRUE(screens[0].frame.contains(screens[0].visibleFrame));
    EXPECT_GT(screens[0].scale, 0.0);
    EXPECT_EQ(desktop->screens().mainScreen(), screens[0]);
    EXPECT_EQ(desktop->screens().pressedMouseButtons(), 0U);
}

TEST_P(PanelDesktopContract, whatIsGrantedIsGrantedWithoutAPrompt) {
    EXPECT_TRUE(desktop->access().isAccessibilityTrusted());
    EXPECT_TRUE(desktop->access().requestAccessibility());
    EXPECT_TRUE(desktop->access().isScreenCaptureGranted());
    EXPECT_TRUE(desktop->access().requestScreenCapture());
}

} // namespace tavrine
