#include "adapters/wayland/PlayedCompositor.h"
#include "adapters/wayland/WaylandWindows.h"
#include "adapters/wayland/WaylandWorkspace.h"
#include "base/NotificationCenter.h"
#include "base/Program.h"
#include "support/Eventually.h"

#include <QGuiApplication>
#include <QRasterWindow>

#include <gtest/gtest.h>
#include <wayland-server-core.h>
#include <wayland/wlr-foreign-toplevel-management-unstable-v1.h>

extern "C" const wl_interface wl_seat_interface;

namespace tavrine {
namespace {

using test::eventually;
using test::letPass;

enum OfManager { toplevel };
enum OfToplevel { title, applicationId, outputEnter, outputLeave, state, done };

class WaylandPauseTest : public ::testing::Test {
protected:
    /// On the compositor's thread.
    wl_resource *open() {
        wl_resource *const window = m_compositor.make(m_manager, zwlr_foreign_toplevel_handle_v1_interface);
        wl_resource_post_event(m_manager, toplevel, window);
        wl_resource_post_event(window, applicationId, "Program");
        setActive(window, true);
        return window;
    }
    static void setActive(wl_resource *window, bool isActive) {
        std::uint32_t active = ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED;
        wl_array states{.size = isActive ? sizeof active : 0, .alloc = 0, .data = &active};
        wl_resource_post_event(window, state, &states);
        wl_resource_post_event(window, done);
    }

    wl_resource *m_manager = nullptr;
    PlayedCompositor m_compositor{{&wl_seat_interface, &zwlr_foreign_toplevel_manager_v1_interface},
                                  [this](const PlayedCompositor::Request &request) {
                                      if (request.name == "zwlr_foreign_toplevel_manager_v1.bind")
                                          m_manager = request.resource;
                                  }};
};

TEST_F(WaylandPauseTest, aProgramIsNotLeftWhileTheCompositorStandsStillBetweenItsWindows) {
    WaylandWorkspace workspace(WaylandWindows::make());
    int departures = 0;
    const auto observer = workspace.notificationCenter().addObserver(
        QLatin1String(Workspace::didDeactivateApplicationNotification), [&](const Notification &) { ++departures; });
    wl_resource *first = nullptr;
    m_compositor.doThere([&] { first = open(); });
    ASSERT_TRUE(eventually([&] { return workspace.frontmostApplication().has_value(); }));
    const auto window = workspace.frontmostApplication()->window;

    m_compositor.doThere([&] { setActive(first, false); });
    m_compositor.stop();
    letPass(std::chrono::milliseconds(500)); // longer than a healthy compositor takes from one window to the next
    m_compositor.goOn();
    m_compositor.doThere([&] { static_cast<void>(open()); });
    EXPECT_TRUE(eventually([&] {
        const auto now = workspace.frontmostApplication();
        return now && now->window != window;
    }));
    letPass(std::chrono::milliseconds(50));
    EXPECT_EQ(departures, 0);
}

/// As in Clean Mode: what a person copies with the mouse then is the copy of a program.
TEST_F(WaylandPauseTest, whileTheKeyboardIsHeldWhatWasActiveLastIsInFront) {
    bool isHeld = false;
    WaylandWorkspace workspace(WaylandWindows::make(), nullptr, [&] { return isHeld; });
    const auto windowInFront = [&] {
        const auto front = workspace.frontmostApplication();
        return front ? front->window : 0;
    };
    wl_resource *first = nullptr;
    wl_resource *second = nullptr;
    m_compositor.doThere([&] { first = open(); });
    ASSERT_TRUE(eventually([&] { return windowInFront() != 0; }));
    const quint32 before = windowInFront();
    isHeld = true;
    m_compositor.doThere([&] { setActive(first, false); });
    letPass(std::chrono::milliseconds(400));
    EXPECT_EQ(windowInFront(), before);
    m_compositor.doThere([&] { // clicked, and the keyboard is taken back at once
        second = open();
        setActive(second, false);
    });
    EXPECT_TRUE(eventually([&] { return windowInFront() != before; }));
    letPass(std::chrono::milliseconds(400));
    EXPECT_GT(windowInFront(), before);
    m_compositor.doThere([&] { setActive(first, true); });
    EXPECT_TRUE(eventually([&] { return windowInFront() == before; }));
    isHeld = false;
    m_compositor.doThere([&] { setActive(first, false); });
    EXPECT_TRUE(eventually([&] { return windowInFront() == 0; }));
}

/// With a panel that has the keyboard over the window of another program.
class WaylandPanelPauseTest : public WaylandPauseTest {
protected:
    WaylandPanelPauseTest() {
        m_compositor.doThere([this] { m_behind = open(); });
        EXPECT_TRUE(eventually([this] { return m_workspace.frontmostApplication().has_value(); }));
        m_isCalled = true;
        takeKeyboard();
    }
    void takeKeyboard() {
        m_panel.show();
        m_panel.requestActivate();
        EXPECT_TRUE(eventually([] { return QGuiApplication::focusWindow() != nullptr; }));
        m_compositor.doThere([this] { setActive(m_behind, false); });
        EXPECT_TRUE(eventually([this] { return m_windows->refresh() && !m_windows->active(); }));
    }
    void loseKeyboard() {
        m_panel.destroy();
        EXPECT_TRUE(eventually([] { return QGuiApplication::focusWindow() == nullptr; }));
        m_compositor.doThere([this] { setActive(m_behind, true); });
        EXPECT_TRUE(eventually([this] { return m_windows->refresh() && m_windows->active(); }));
    }

    wl_resource *m_behind = nullptr;
    std::shared_ptr<WaylandWindows> m_windows = WaylandWindows::make();
    bool m_isCalled = false;
    WaylandWorkspace m_workspace{m_windows, [this] { return m_isCalled; }};
    QRasterWindow m_panel;
    int m_departures = 0;
    const NotificationCenter::Token m_observer = m_workspace.notificationCenter().addObserver(
        QLatin1String(Workspace::didDeactivateApplicationNotification), [this](const Notification &notice) {
            const QVariant program = notice.userInfo.value(QLatin1String(Workspace::applicationKey));
            if (program.value<RunningApplication>().bundleIdentifier == ownBundleIdentifier)
                ++m_departures;
        });
};

/// As on another screen: the compositor gives the keyboard to the window behind between the two surfaces.
TEST_F(WaylandPanelPauseTest, aPanelWhoseSurfaceIsMadeAnewIsNotLeft) {
    for (int times = 0; times < 3; ++times) {
        loseKeyboard();
        letPass(std::chrono::milliseconds(50));
        takeKeyboard();
    }
    letPass(std::chrono::milliseconds(600));
    EXPECT_EQ(m_departures, 0);
}

TEST_F(WaylandPanelPauseTest, aPanelThatTheWindowBehindTookTheKeyboardFromIsLeftOnce) {
    loseKeyboard();
    EXPECT_TRUE(eventually([this] { return m_departures == 1; }));
    letPass(std::chrono::milliseconds(600));
    EXPECT_EQ(m_departures, 1);
}

TEST_F(WaylandPanelPauseTest, aPanelThatClosesIsNotLeft) {
    m_isCalled = false;
    loseKeyboard();
    letPass(std::chrono::milliseconds(600));
    EXPECT_EQ(m_departures, 0);
}

/// It is behind it, and has the keyboard for a moment.
TEST_F(WaylandPanelPauseTest, aPanelThatAnotherWindowCameBehindIsLeft) {
    m_compositor.doThere([this] { static_cast<void>(open()); });
    EXPECT_TRUE(eventually([this] { return m_departures == 1; }));
}

} // namespace
} // namespace tavrine
