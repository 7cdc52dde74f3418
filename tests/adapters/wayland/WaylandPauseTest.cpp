#include "adapters/wayland/PlayedCompositor.h"
#include "adapters/wayland/WaylandWindows.h"
#include "adapters/wayland/WaylandWorkspace.h"
#include "base/NotificationCenter.h"
#include "support/Eventually.h"

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

} // namespace
} // namespace tavrine
