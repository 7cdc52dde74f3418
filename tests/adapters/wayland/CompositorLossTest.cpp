#include "adapters/wayland/CompositorLoss.h"

#include <csignal>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>
#include <wayland-client.h>

namespace tavrine {
namespace {

/// Hears what nobody here has an ear for: that a global, 7, is gone.
void hearTheUnheard() {
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    compositorLoss::watchToolkit();
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        return;
    wl_display *const display = wl_display_connect_to_fd(ends[0]);
    wl_registry *const registry = wl_display_get_registry(display);
    static constexpr wl_registry_listener deaf{};
    wl_registry_add_listener(registry, &deaf, nullptr);
    const std::uint32_t event[3] = {wl_proxy_get_id(reinterpret_cast<wl_proxy *>(registry)), sizeof event << 16U | 1U,
                                    7};
    if (::write(ends[1], event, sizeof event) == sizeof event)
        static_cast<void>(wl_display_dispatch(display));
}

// The library aborts the process then, and its words are all that is ever said of it.
TEST(CompositorLossDeathTest, whatTheLibrarySaysBeforeItAbortsIsTold) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(hearTheUnheard(), testing::KilledBySignal(SIGABRT),
                "tavrine: libwayland: listener function for opcode 1 of wl_registry is NULL\n$");
}

TEST(CompositorLossDeathTest, theEndIsTheLastLineAndKeepsItsStatus) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(compositorLoss::endProgram("it is gone\n"), testing::ExitedWithCode(compositorLoss::exitStatus),
                "tavrine: the Wayland compositor is gone: it is gone\n$");
}

} // namespace
} // namespace tavrine
