// A cast of KWin's that begins, against a compositor that is played.
#include "adapters/wayland/cast/KWinCast.h"

#include "adapters/wayland/PlayedCompositor.h"
#include "support/OpeningCast.h"
#include "support/Wait.h"

#include <gtest/gtest.h>
#include <wayland-server-protocol.h>
#include <wayland/xdg-output-unstable-v1.h>
#include <wayland/zkde-screencast-unstable-v1.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;
using tavrine::testing::waitUntil;

constexpr auto asked = "zkde_screencast_unstable_v1.stream_output";

/// It has one output, and never says that it casts it.
class KWinCastOpening : public ::testing::Test {
protected:
    static void tell(const PlayedCompositor::Request &request) {
        if (request.name == "wl_output.bind" && wl_resource_get_version(request.resource) >= 4) {
            wl_output_send_mode(request.resource, WL_OUTPUT_MODE_CURRENT, 200, 100, 60'000);
            wl_output_send_name(request.resource, "played");
            wl_output_send_done(request.resource);
        }
    }
    PlayedCompositor compositor{{&wl_output_interface, &zkde_screencast_unstable_v1_interface}, tell};
};

TEST_F(KWinCastOpening, hearsAStopWhileTheCompositorMakesItsStream) {
    OpeningCast opening([] { return std::make_unique<KWinCast>(1h); });
    ASSERT_TRUE(waitUntil([this] { return compositor.count(asked) == 1; }));
    EXPECT_FALSE(opening.hasReturned());
    opening.stop();
    EXPECT_TRUE(waitUntil([&] { return opening.hasReturned(); }));
    EXPECT_TRUE(opening.isRefused());
}

TEST_F(KWinCastOpening, givesUpOnACompositorThatNeverMakesItsStream) {
    const OpeningCast opening([] { return std::make_unique<KWinCast>(50ms); });
    EXPECT_TRUE(waitUntil([&] { return opening.hasReturned(); }));
    EXPECT_TRUE(opening.isRefused());
    EXPECT_EQ(compositor.count(asked), 1);
}

} // namespace
} // namespace tavrine::test
