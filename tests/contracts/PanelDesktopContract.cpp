// The contract of a desktop's panels, on the fakes and on the X server of a private desktop with a window manager.
#include "contracts/PanelDesktopContract.h"

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
#include "support/TestKeyboard.h"

#include <QApplication>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::ForeignWindow;
using testing::waitUntil;

class FakePanelDesktop final : public PanelDesktop {
public:
    FakePanelDesktop() {
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

class X11PanelDesktop final : public PanelDesktop {
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

INSTANTIATE_TEST_SUITE_P(Fake, PanelDesktopContract, ::testing::Values(&make<FakePanelDesktop>));
INSTANTIATE_TEST_SUITE_P(X11, PanelDesktopContract, ::testing::Values(&make<X11PanelDesktop>));

} // namespace
} // namespace tavrine

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    ::testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
