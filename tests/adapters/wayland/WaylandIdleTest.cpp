#include "adapters/wayland/WaylandClient.h"
#include "adapters/wayland/WaylandIdleKeeper.h"
#include "adapters/wayland/WaylandReader.h"
#include "support/Wait.h"
#include "support/WaylandHand.h"

#include <gtest/gtest.h>
#include <wayland/idle.h>

namespace tavrine::testing {
namespace {

constexpr std::chrono::milliseconds limit{50};

/// A program that locks or blanks: the compositor tells it that nobody has touched anything for a while.
class Locker {
public:
    Locker() {
        static constexpr org_kde_kwin_idle_timeout_listener listener{
            .idle = [](void *self, org_kde_kwin_idle_timeout *) { static_cast<Locker *>(self)->isIdle = true; },
            .resumed = [](void *self, org_kde_kwin_idle_timeout *) { static_cast<Locker *>(self)->isIdle = false; }};
        WaylandLink &link = m_client.link();
        auto *const idle = link.bind<org_kde_kwin_idle>(org_kde_kwin_idle_interface, 1);
        auto *const seat = link.bind<wl_seat>(wl_seat_interface, 1);
        auto *const timeout = org_kde_kwin_idle_get_idle_timeout(idle, seat, static_cast<std::uint32_t>(limit.count()));
        org_kde_kwin_idle_timeout_add_listener(timeout, &listener, this);
        m_client.flush();
    }
    bool isIdle = false;

private:
    WaylandClient m_client;
};

TEST(WaylandIdleKeeper, theSessionIsNotIdleWhileItIsWanted) {
    WaylandHand hand;
    const Locker before;
    ASSERT_TRUE(waitUntil([&] { return before.isIdle; }));
    WaylandIdleKeeper keeper;
    bool isTold = false;
    keeper.setOnChange([&] { isTold = true; });
    keeper.want({.display = true}, QStringLiteral("a test"));
    EXPECT_TRUE(waitUntil([&] { return isTold && keeper.held().display && !keeper.isAsking(); }));
    const Locker locker;
    // Ten times as long as it took without.
    EXPECT_FALSE(waitUntil([&] { return locker.isIdle; }, 10 * limit));
    keeper.want({}, {});
    EXPECT_FALSE(keeper.held().display);
    hand.tap(KEY_LEFTSHIFT);
    EXPECT_TRUE(waitUntil([&] { return locker.isIdle; }));
}

TEST(WaylandIdleKeeper, theConnectionThatItSharesOutlivesIt) {
    const auto reader = std::make_shared<WaylandReader>();
    WaylandClient other(reader);
    {
        WaylandIdleKeeper keeper(reader);
        keeper.want({.display = true}, QStringLiteral("a test"));
        ASSERT_TRUE(waitUntil([&] { return keeper.held().display; }));
    }
    EXPECT_TRUE(other.link().finish(WaylandLink::Wait{5'000}));
    EXPECT_TRUE(other.isConnected());
}

TEST(WaylandIdleKeeper, whatIsNoDisplayIsNotPromised) {
    WaylandIdleKeeper keeper;
    keeper.want({.sleep = true, .lid = true}, QStringLiteral("a test"));
    EXPECT_TRUE(keeper.held().isEmpty());
    EXPECT_FALSE(keeper.isAsking());
}

} // namespace
} // namespace tavrine::testing
