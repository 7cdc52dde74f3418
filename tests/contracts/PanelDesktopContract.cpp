// What a desktop promises for panels, monitors, screens, activation and posting: run on the fakes and on the X server
// of a private desktop with a window manager.
#include "adapters/fake/FakeAccess.h"
#include "adapters/fake/FakeApplicationActivator.h"
#include "adapters/fake/FakeEventMonitors.h"
#include "adapters/fake/FakePanelWindow.h"
#include "adapters/fake/FakeScreens.h"
#include "adapters/x11/ForeignWindow.h"
#include "adapters/x11/X11Access.h"
#include "adapters/x11/X11ApplicationActivator.h"
#include "adapters/x11/X11EventMonitors.h"
#include "adapters/x11/X11PanelWindow.h"
#include "adapters/x11/X11Screens.h"
#include "adapters/x11/X11Workspace.h"
#include "base/VirtualKeys.h"
#include "support/TestKeyboard.h"

#include <QApplication>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using testing::ForeignWindow;
using ::testing::IsEmpty;
using testing::waitUntil;

/// One desktop, on which the person does things. Every action is over when it returns.
class Desktop {
public:
    virtual ~Desktop() = default;
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

class FakeDesktop final : public Desktop {
public:
    FakeDesktop() {
        m_access.setAccessibilityTrusted(true);
        m_access.setScreenCaptureGranted(true);
    }
    PanelWindows &windows() override { return m_windows; }
    EventMonitors &monitors() override { return m_monitors; }
    Screens &screens() override { return m_screens; }
    Workspace &workspace() override { return m_workspace; }
    ApplicationActivator &activator() override { return m_activator; }
    Access &access() override { return m_access; }
    void tapOption() override {
        m_monitors.setActive(m_windows.keyWindow() != nullptr);
        m_monitors.flags(modifierFlag::option);
        m_monitors.flags(0);
    }
    void tapKey(int keyCode) override {
        m_monitors.setActive(m_windows.keyWindow() != nullptr);
        m_monitors.keyDown(keyCode);
    }
    void click(QPointF place) override {
        m_screens.setMouseLocation(place);
        const auto *key = m_windows.keyWindow();
        m_monitors.mouse(eventMask::leftMouseDown, key && key->frame().contains(place));
    }
    void drag(int button, QPointF from, QPointF to) override {
        const auto *key = m_windows.keyWindow();
        const auto isOver = [&](QPointF place) { return key && key->frame().contains(place); };
        m_screens.setMouseLocation(to);
        if (button == 0)
            return m_monitors.mouse(eventMask::mouseMoved, isOver(to));
        m_monitors.mouse(button == 1   ? eventMask::leftMouseDragged
                         : button == 3 ? eventMask::rightMouseDragged
                                       : eventMask::otherMouseDragged,
                         isOver(from));
        m_monitors.mouse(button == 1   ? eventMask::leftMouseUp
                         : button == 3 ? eventMask::rightMouseUp
                                       : eventMask::otherMouseUp,
                         isOver(from));
    }
    RunningApplication startProgram() override {
        const RunningApplication program{QStringLiteral("org.example.%1").arg(++m_last), {}, 1000 + m_last, 0};
        m_workspace.setFrontmost(program);
        return program;
    }
    void endProgram(const RunningApplication &application) override { m_activator.quit(application); }
    bool comesTrue(const std::function<bool()> &condition) override { return condition(); }

private:
    FakePanelWindows m_windows;
    FakeEventMonitors m_monitors;
    FakeScreens m_screens;
    FakeWorkspace m_workspace;
    FakeApplicationActivator m_activator{m_workspace};
    FakeAccess m_access;
    int m_last = 0;
};

class X11Desktop final : public Desktop {
public:
    PanelWindows &windows() override { return m_windows; }
    EventMonitors &monitors() override { return m_monitors; }
    Screens &screens() override { return m_screens; }
    Workspace &workspace() override { return m_workspace; }
    ApplicationActivator &activator() override { return m_activator; }
    Access &access() override { return m_access; }
    void tapOption() override {
        m_keyboard.tap(testing::key::leftAlt);
        settle();
    }
    void tapKey(int keyCode) override {
        m_keyboard.tap(*xKeycode(keyCode));
        settle();
    }
    void click(QPointF place) override {
        m_keyboard.click(1, static_cast<int>(place.x()), 800 - static_cast<int>(place.y()));
        settle();
    }
    void drag(int button, QPointF from, QPointF to) override {
        const auto move = [this](QPointF place) {
            m_keyboard.movePointer(static_cast<int>(place.x()), 800 - static_cast<int>(place.y()));
        };
        if (button == 0)
            return move(to), settle();
        move(from);
        settle();                              // of the way there nothing is told any more
        const bool isMenuButton = button != 1; // on the bare desktop
        if (isMenuButton) {
            EXPECT_TRUE(m_keyboard.grabPointer());
        }
        m_keyboard.press(button);
        move((from + to) / 2);
        move(to);
        m_keyboard.release(button);
        if (isMenuButton)
            m_keyboard.ungrabPointer();
        settle();
    }
    RunningApplication startProgram() override {
        m_programs.push_back(std::make_unique<ForeignWindow>(QStringLiteral(TAVRINE_GTK_ENTRY)));
        const qint64 pid = m_programs.back()->processId();
        EXPECT_TRUE(waitUntil([&] {
            const auto front = m_workspace.frontmostApplication();
            return front && front->processIdentifier == pid;
        }));
        return m_workspace.frontmostApplication().value_or(RunningApplication{});
    }
    void endProgram(const RunningApplication &application) override {
        std::erase_if(m_programs,
                      [&](const auto &program) { return program->processId() == application.processIdentifier; });
        settle();
    }
    bool comesTrue(const std::function<bool()> &condition) override { return waitUntil(condition); }

private:
    /// What was done has arrived: by turns, as a busy machine gives us few of them in a time.
    void settle() {
        for (int turn = 0; turn < 16; ++turn)
            (void)waitUntil([] { return false; }, 5ms);
    }

    testing::TestKeyboard m_keyboard;
    X11ApplicationActivator m_activator;
    X11PanelWindows m_windows{m_activator};
    X11EventMonitors m_monitors;
    X11Screens m_screens;
    X11Workspace m_workspace;
    X11Access m_access;
    std::vector<std::unique_ptr<ForeignWindow>> m_programs;
};

template <class T>
std::unique_ptr<Desktop> make() {
    return std::make_unique<T>();
}

class PanelDesktopContract : public ::testing::TestWithParam<std::unique_ptr<Desktop> (*)()> {
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
    std::unique_ptr<Desktop> desktop = GetParam()();
    std::vector<InputEvent> global;
    std::vector<InputEvent> local;
};

INSTANTIATE_TEST_SUITE_P(Fake, PanelDesktopContract, ::testing::Values(&make<FakeDesktop>));
INSTANTIATE_TEST_SUITE_P(X11, PanelDesktopContract, ::testing::Values(&make<X11Desktop>));

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
    ASSERT_EQ(global.size(), 1U);
    EXPECT_EQ(global[0].keyCode, virtualKey::escape);
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
    EXPECT_EQ(global.size(), 2U);
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
    desktop->click({5, 5});
    EXPECT_EQ(global.size(), 1U);
    EXPECT_EQ(desktop->screens().mouseLocation(), QPointF(5, 5));
}

TEST_P(PanelDesktopContract, theDragOfEachButtonIsToldWithItsRelease) {
    const auto watcher = watchGlobally(drags);
    desktop->drag(1, {5, 5}, {50, 5});
    EXPECT_THAT(kinds(global), ElementsAre(eventMask::leftMouseDragged, eventMask::leftMouseUp));
    global.clear();
    desktop->drag(3, {5, 5}, {50, 5});
    EXPECT_THAT(kinds(global), ElementsAre(eventMask::rightMouseDragged, eventMask::rightMouseUp));
    global.clear();
    desktop->drag(2, {5, 5}, {50, 5});
    EXPECT_THAT(kinds(global), ElementsAre(eventMask::otherMouseDragged, eventMask::otherMouseUp));
}

TEST_P(PanelDesktopContract, aDragIsForWhoeverGotThePress) {
    const auto panel = showPanel();
    ASSERT_TRUE(panelHasKeyboard());
    const auto watcher = watchGlobally(drags);
    const auto localWatcher = watchLocally(drags);
    local.clear();
    desktop->drag(1, {5, 5}, panel->frame().center());
    EXPECT_THAT(kinds(global), ElementsAre(eventMask::leftMouseDragged, eventMask::leftMouseUp));
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
    EXPECT_THAT(kinds(global), ElementsAre(eventMask::mouseMoved));
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
    EXPECT_EQ(global.size(), 1U);
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
    EXPECT_EQ(global.size(), 1U);
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

} // namespace
} // namespace tavrine

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    ::testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
