#include "adapters/wayland/PlayedCompositor.h"
#include "adapters/wayland/ScreenQuestions.h"
#include "adapters/wayland/Typist.h"
#include "adapters/wayland/WaylandAccess.h"
#include "adapters/wayland/WaylandClient.h"
#include "adapters/wayland/WaylandSession.h"
#include "support/Eventually.h"

#include <atomic>
#include <optional>
#include <set>
#include <vector>

#include <gtest/gtest.h>
#include <wayland-server-core.h>
#include <wayland-server-protocol.h>
#include <wayland/viewporter.h>
#include <wayland/virtual-keyboard-unstable-v1.h>
#include <wayland/wlr-layer-shell-unstable-v1.h>
#include <wayland/xdg-output-unstable-v1.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using test::eventually;

/// Tells what a seat has as soon as somebody takes it, and again whenever somebody asks for its pointer.
void answerSeat(const PlayedCompositor::Request &request) {
    if (request.name == "wl_seat.bind" || request.name == "wl_seat.get_pointer")
        wl_seat_send_capabilities(request.resource, WL_SEAT_CAPABILITY_KEYBOARD);
}

class Seat {
public:
    explicit Seat(WaylandLink &link, std::function<void(wl_seat *)> onCapabilities)
        : m_seat(link.bind<wl_seat>(wl_seat_interface, 1)), m_onCapabilities(std::move(onCapabilities)) {
        static constexpr wl_seat_listener listener{
            .capabilities = [](void *self, wl_seat *seat,
                               std::uint32_t) { static_cast<Seat *>(self)->m_onCapabilities(seat); },
            .name = [](void *, wl_seat *, const char *) {}};
        wl_seat_add_listener(m_seat, &listener, this);
    }
    [[nodiscard]] wl_seat *seat() const { return m_seat; }

private:
    wl_seat *m_seat;
    std::function<void(wl_seat *)> m_onCapabilities;
};

/// Says so much that the connection takes no more, and then a little more than that.
int fill(WaylandLink &link) {
    auto *const compositor = link.bind<wl_compositor>(wl_compositor_interface, 1);
    wl_region *const region = wl_compositor_create_region(compositor);
    int count = 0;
    while (wl_display_flush(link.display()) >= 0) {
        wl_region_add(region, 0, 0, 1, 1);
        ++count;
    }
    for (int i = 0; i < 20; ++i)
        wl_region_add(region, 0, 0, 1, 1);
    return count + 20;
}

TEST(WaylandLinkTest, whatAHandlerAsksForGoesOutThoughTheAnswerWasAwaitedOnly) {
    const PlayedCompositor compositor({&wl_seat_interface}, answerSeat);
    WaylandLink link;
    const Seat seat(link, [](wl_seat *told) { (void)wl_seat_get_keyboard(told); });
    ASSERT_TRUE(link.finish());
    EXPECT_TRUE(eventually([&] { return compositor.count("wl_seat.get_keyboard") == 1; }));
}

TEST(WaylandLinkTest, whatTheCompositorDidNotTakeAtOnceGoesOutWhenItReadsOn) {
    PlayedCompositor compositor({&wl_compositor_interface});
    WaylandLink link;
    compositor.stop();
    const int count = fill(link);
    std::thread later([&] {
        std::this_thread::sleep_for(50ms);
        compositor.goOn();
    });
    EXPECT_TRUE(link.finish());
    later.join();
    EXPECT_EQ(compositor.count("wl_region.add"), count);
}

TEST(WaylandClientTest, whatTheCompositorDidNotTakeAtOnceGoesOutThoughNobodyFlushesAgain) {
    PlayedCompositor compositor({&wl_compositor_interface});
    WaylandClient client;
    compositor.stop();
    const int count = fill(client.link());
    client.flush();
    compositor.goOn();
    EXPECT_TRUE(eventually([&] { return compositor.count("wl_region.add") == count; }));
}

/// Two clients of one connection. Whoever asks for a pointer has the compositor tell all seats what they have.
class WaylandReaderTest : public ::testing::Test {
protected:
    struct Part {
        explicit Part(const std::shared_ptr<WaylandReader> &reader) : client(reader) {
            static constexpr wl_seat_listener listener{
                .capabilities = [](void *self, wl_seat *, std::uint32_t) { static_cast<Part *>(self)->hear(); },
                .name = [](void *, wl_seat *, const char *) {}};
            wl_seat_add_listener(seat, &listener, this);
        }
        ~Part() { wl_seat_destroy(seat); }
        Part(const Part &) = delete;
        Part &operator=(const Part &) = delete;

        void hear() {
            ++heard;
            if (onHeard)
                onHeard();
        }
        void ask() { wl_pointer_destroy(wl_seat_get_pointer(seat)); }

        WaylandClient client;
        wl_seat *seat = client.link().bind<wl_seat>(wl_seat_interface, 1);
        int heard = 0;
        std::function<void()> onHeard;
    };

    [[nodiscard]] std::size_t connections() {
        std::size_t count = 0;
        compositor.doThere([&] { count = m_connections.size(); });
        return count;
    }
    void endConnections() {
        compositor.doThere([this] {
            for (wl_client *const each : m_connections)
                wl_client_destroy(each);
        });
    }

private:
    std::vector<wl_resource *> m_seats;
    std::set<wl_client *> m_connections;

protected:
    PlayedCompositor compositor{{&wl_compositor_interface, &wl_seat_interface},
                                [this](const PlayedCompositor::Request &request) {
                                    if (request.name == "wl_display.get_registry")
                                        m_connections.insert(wl_resource_get_client(request.resource));
                                    if (request.name == "wl_seat.bind")
                                        m_seats.push_back(request.resource);
                                    if (request.name == "wl_seat.get_pointer")
                                        for (wl_resource *const seat : m_seats)
                                            wl_seat_send_capabilities(seat, WL_SEAT_CAPABILITY_KEYBOARD);
                                }};
    std::shared_ptr<WaylandReader> reader = std::make_shared<WaylandReader>();
    std::optional<Part> first{reader};
    std::optional<Part> second{reader};
};

TEST_F(WaylandReaderTest, itsClientsAreOneConnection) {
    EXPECT_EQ(connections(), 1);
    const WaylandClient alone;
    EXPECT_EQ(connections(), 2);
}

TEST_F(WaylandReaderTest, whatComesWhileOneWaitsTheOtherHearsOfInATurnOfItsOwn) {
    first->ask();
    ASSERT_TRUE(first->client.link().finish());
    EXPECT_EQ(first->heard, 1);
    EXPECT_EQ(second->heard, 0) << "nobody may be called within another's wait";
    EXPECT_TRUE(eventually([&] { return second->heard == 1; }));
}

TEST_F(WaylandReaderTest, whatALinkBesideThemReadsTheyHearOf) {
    first->ask(); // goes out before what the new link asks
    const WaylandLink beside(reader->connection());
    ASSERT_TRUE(beside.isOpen());
    EXPECT_EQ(first->heard, 0);
    EXPECT_TRUE(eventually([&] { return first->heard == 1 && second->heard == 1; }));
}

TEST_F(WaylandReaderTest, aHandlerMayEndAnotherClient) {
    first->onHeard = [this] { second.reset(); };
    first->ask();
    first->client.flush();
    EXPECT_TRUE(eventually([&] { return first->heard == 1; }));
    first->onHeard = nullptr;
    first->ask();
    first->client.flush();
    EXPECT_TRUE(eventually([&] { return first->heard == 2; }));
}

TEST_F(WaylandReaderTest, aWaitThatIsOverEndsNobodysConnection) {
    compositor.stop();
    EXPECT_FALSE(first->client.link().finish(50ms));
    const WaylandLink late(reader->connection(), 50ms);
    EXPECT_FALSE(late.isOpen());
    compositor.goOn();
    second->ask();
    second->client.flush();
    EXPECT_TRUE(eventually([&] { return first->heard == 1 && second->heard == 1; }));
}

TEST_F(WaylandReaderTest, whatTheCompositorDidNotTakeOfOneGoesOutThoughNobodyFlushesAgain) {
    compositor.stop();
    const int count = fill(first->client.link());
    second->client.flush();
    compositor.goOn();
    EXPECT_TRUE(eventually([&] { return compositor.count("wl_region.add") == count; }));
}

TEST_F(WaylandReaderTest, theEndOfTheConnectionIsToldToEachOnce) {
    int told = 0;
    for (Part *const part : {&*first, &*second})
        part->client.setOnLost([&told] { ++told; });
    endConnections();
    EXPECT_TRUE(eventually([&] { return told == 2; }));
    EXPECT_FALSE(first->client.isConnected());
    EXPECT_FALSE(second->client.link().finish());
    test::letPass(50ms);
    EXPECT_EQ(told, 2);
}

TEST(TypistTest, aChordThatTheCompositorDidNotTakeAtOnceGoesOutThoughNobodyFlushesAgain) {
    PlayedCompositor compositor(
        {&wl_compositor_interface, &wl_seat_interface, &zwp_virtual_keyboard_manager_v1_interface});
    WaylandClient client;
    const auto typist = Typist::virtualKeyboard(client);
    ASSERT_TRUE(typist);
    compositor.stop();
    (void)fill(client.link());
    EXPECT_TRUE(typist->press({.letter = 'v', .hasControl = true}));
    compositor.goOn();
    EXPECT_TRUE(eventually([&] { return compositor.count("zwp_virtual_keyboard_v1.key") == 1; }));
}

TEST(ScreenQuestionsTest, aCompositorThatIsLateWithEachAnswerIsWaitedForOnlyAsLongAsWithOne) {
    constexpr auto late = 60ms; // of the tenth of a second that all answers have
    const PlayedCompositor compositor({&wl_compositor_interface, &wl_shm_interface, &wl_seat_interface,
                                       &wp_viewporter_interface, &zwlr_layer_shell_v1_interface,
                                       &zxdg_output_manager_v1_interface},
                                      [late](const PlayedCompositor::Request &request) {
                                          if (request.name == "wl_display.sync")
                                              std::this_thread::sleep_for(late);
                                      });
    EXPECT_FALSE(ScreenQuestions().pointer());
    EXPECT_EQ(compositor.count("wl_seat.get_pointer"), 0) << "that is asked with what is left of the time";
}

/// Over the connection that the program has for as long as it runs.
TEST(ScreenQuestionsTest, leaveNothingWithTheCompositorAndOpenNoConnection) {
    std::atomic<int> taken = 0;
    PlayedCompositor compositor(
        {&wl_compositor_interface, &wl_shm_interface, &wl_seat_interface, &wl_output_interface,
         &wp_viewporter_interface, &zwlr_layer_shell_v1_interface, &zxdg_output_manager_v1_interface},
        [&taken](const PlayedCompositor::Request &request) {
            if (request.name == "wl_compositor.bind")
                ++taken;
            if (request.name == "wl_seat.bind")
                wl_seat_send_capabilities(request.resource, WL_SEAT_CAPABILITY_POINTER | WL_SEAT_CAPABILITY_KEYBOARD);
        });
    const auto connection = std::make_shared<WaylandConnection>();
    ScreenQuestions questions(connection);
    for (int times = 0; times < 2; ++times) {
        EXPECT_FALSE(questions.pointer());
        EXPECT_EQ(questions.output(), QString());
    }
    EXPECT_EQ(questions.modifiers(), Qt::KeyboardModifiers());
    const std::pair<const char *, const char *> pairs[] = {
        {"wl_compositor.create_surface", "wl_surface.destroy"},
        {"zwlr_layer_shell_v1.get_layer_surface", "zwlr_layer_surface_v1.destroy"},
        {"zxdg_output_manager_v1.get_xdg_output", "zxdg_output_v1.destroy"},
        {"wl_output.bind", "wl_output.release"},
        {"wl_seat.get_pointer", "wl_pointer.release"},
        {"wl_seat.get_keyboard", "wl_keyboard.release"},
    };
    for (const auto &[made, ended] : pairs) {
        EXPECT_GT(compositor.count(made), 0) << made;
        EXPECT_TRUE(eventually([&, made = made, ended = ended] {
            return compositor.count(ended) == compositor.count(made);
        })) << ended;
    }
    EXPECT_EQ(compositor.count("wl_display.get_registry"), 1);
    EXPECT_EQ(taken, 1) << "what cannot be given back is taken once";
}

TEST(WaylandLinkTest, aHandlerMayWaitForAnAnswerItself) {
    const PlayedCompositor compositor({&wl_seat_interface}, answerSeat);
    WaylandLink link;
    int told = 0;
    const Seat seat(link, [&](wl_seat *) {
        if (++told == 1) {
            EXPECT_TRUE(link.finish());
        }
    });
    (void)wl_seat_get_pointer(seat.seat());
    (void)wl_seat_get_pointer(seat.seat());
    EXPECT_TRUE(link.finish());
    EXPECT_EQ(told, 3);
}

TEST(WaylandAccessTest, aCompositorThatDidNotAnswerIsAskedAgain) {
    WaylandAccess access;
    const QByteArray before = qgetenv("WAYLAND_DISPLAY");
    qputenv("WAYLAND_DISPLAY", "nobody");
    EXPECT_FALSE(access.isAccessibilityTrusted());
    qputenv("WAYLAND_DISPLAY", before);
    static const wl_interface keyboards{"zwp_virtual_keyboard_manager_v1", 1, 0, nullptr, 0, nullptr};
    const PlayedCompositor compositor({&keyboards});
    EXPECT_TRUE(access.isAccessibilityTrusted());
}

/// Who is told that it may not paste tells the person to do something about it.
TEST(WaylandAccessTest, aCompositorThatAnswersLateGrantsNoLessForThat) {
    static const wl_interface keyboards{"zwp_virtual_keyboard_manager_v1", 1, 0, nullptr, 0, nullptr};
    PlayedCompositor compositor({&keyboards});
    compositor.stop();
    std::thread later([&] {
        std::this_thread::sleep_for(800ms);
        compositor.goOn();
    });
    const WaylandAccess access;
    EXPECT_TRUE(access.isAccessibilityTrusted());
    later.join();
}

/// One press asks several times.
TEST(WaylandAccessTest, aCompositorThatWasSilentIsWaitedForOnceAndAskedAgainASecondLater) {
    constexpr auto longest = 1'200ms;
    static const wl_interface keyboards{"zwp_virtual_keyboard_manager_v1", 1, 0, nullptr, 0, nullptr};
    PlayedCompositor compositor({&keyboards});
    compositor.stop();
    const WaylandAccess access([] { return false; }, longest);
    QElapsedTimer asked;
    asked.start();
    for (int times = 0; times < 4; ++times)
        EXPECT_FALSE(access.isAccessibilityTrusted());
    EXPECT_GE(asked.elapsed(), longest.count());
    EXPECT_LT(asked.elapsed(), 3 * longest.count()); // each would wait as long
    compositor.goOn();
    EXPECT_TRUE(eventually([&] { return access.isAccessibilityTrusted(); }));
    EXPECT_GE(asked.elapsed(), (longest + 1s).count());
}

class WaylandSessionTest : public ::testing::Test {
protected:
    /// And what is said meanwhile.
    [[nodiscard]] WaylandSession ask(WaylandLink::Wait longest = longestSessionWait) {
        ::testing::internal::CaptureStdout();
        const WaylandSession session = waylandSession(connection, longest);
        said = ::testing::internal::GetCapturedStdout();
        return session;
    }

    PlayedCompositor compositor{{&shell, &copies}};
    std::shared_ptr<WaylandConnection> connection;
    std::string said;

private:
    static constexpr wl_interface shell{"zwlr_layer_shell_v1", 1, 0, nullptr, 0, nullptr};
    static constexpr wl_interface copies{"zwlr_data_control_manager_v1", 1, 0, nullptr, 0, nullptr};
};

TEST_F(WaylandSessionTest, isKnownWithoutAWordAndLeavesTheConnectionToWhoComesNext) {
    EXPECT_EQ(ask(), WaylandSession::native);
    EXPECT_EQ(said, "");
    ASSERT_TRUE(connection);
    const WaylandLink next(connection);
    EXPECT_TRUE(next.find("zwlr_layer_shell_v1"));
}

/// What is chosen without its answer holds as long as the program runs.
TEST_F(WaylandSessionTest, ofACompositorThatStandsStillIsWaitedForAndToldOf) {
    compositor.stop();
    std::thread later([this] {
        std::this_thread::sleep_for(1'500ms);
        compositor.goOn();
    });
    EXPECT_EQ(ask(), WaylandSession::native);
    EXPECT_EQ(said, "DEBUG: The Wayland compositor does not answer yet\n");
    later.join();
}

TEST_F(WaylandSessionTest, isNoneOfACompositorThatNeverAnswers) {
    compositor.stop();
    EXPECT_EQ(ask(100ms), WaylandSession::none);
    EXPECT_EQ(said, "DEBUG: The Wayland compositor does not answer yet\n"
                    "DEBUG: The Wayland compositor does not answer\n");
    EXPECT_FALSE(connection);
}

} // namespace
} // namespace tavrine
