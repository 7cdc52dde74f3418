#include "adapters/pasteboard/ShortLimits.h"
#include "adapters/wayland/PlayedCompositor.h"
#include "adapters/wayland/WaylandPasteboard.h"
#include "support/Eventually.h"

#include <QElapsedTimer>

#include <algorithm>

#include <gtest/gtest.h>
#include <unistd.h>
#include <wayland-server-core.h>
#include <wayland/wlr-data-control-unstable-v1.h>

extern "C" const wl_interface wl_seat_interface;

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using test::eventually;

enum OfDevice { dataOffer, selection }; ///< the numbers of its events

/// A compositor on whose clipboard a text stands from the beginning.
class DataControlThreadTest : public testing::Test {
protected:
    void answer(const PlayedCompositor::Request &request) {
        if (request.name == "zwlr_data_control_manager_v1.get_data_device") {
            m_device = request.made;
            tellOfText();
        }
        if (request.name == "zwlr_data_control_offer_v1.receive") {
            EXPECT_EQ(::write(request.arguments[1].h, "text", 4), 4);
            ::close(request.arguments[1].h);
        }
        if (!m_hasEnded)
            return;
        if (m_sinceTheEnd.empty() && request.name == "wl_display.sync")
            std::this_thread::sleep_for(5 * m_limits.calm);
        m_sinceTheEnd.push_back(request.name);
    }
    void tellOfText() {
        wl_resource *const offer = m_compositor.make(m_device, zwlr_data_control_offer_v1_interface);
        wl_resource_post_event(m_device, dataOffer, offer);
        wl_resource_post_event(offer, 0, "text/plain;charset=utf-8");
        wl_resource_post_event(m_device, selection, offer);
    }
    void tellOfNobody() {
        m_compositor.doThere([this] {
            m_hasEnded = true;
            wl_resource_post_event(m_device, selection, nullptr);
        });
    }

    SelectionLimits m_limits = shortLimits();
    wl_resource *m_device = nullptr;
    bool m_hasEnded = false;
    std::vector<std::string> m_sinceTheEnd;
    PlayedCompositor m_compositor{{&wl_seat_interface, &zwlr_data_control_manager_v1_interface},
                                  [this](const auto &request) { answer(request); }};
};

TEST_F(DataControlThreadTest, aCompositorThatAnswersLateIsFollowedAllTheSameAndWhatStoodIsNoChange) {
    m_limits.start = 10ms;
    m_compositor.stop();
    WaylandPasteboard pasteboard([](const std::string &) {}, m_limits);
    std::this_thread::sleep_for(2500ms); // longer than one would wait for a compositor that is well
    m_compositor.goOn();
    EXPECT_TRUE(eventually([&] { return pasteboard.string() == QStringLiteral("text"); }));
    EXPECT_EQ(pasteboard.changeCount(), 0);
}

// The end of the program, which waits for no compositor. That of a healthy link has ten seconds.

TEST_F(DataControlThreadTest, beforeACompositorThatHangsFromTheBeginningTheEndComesAtOnce) {
    m_limits.start = 10ms;
    m_compositor.stop();
    auto pasteboard = std::make_unique<WaylandPasteboard>([](const std::string &) {}, m_limits);
    QElapsedTimer clock;
    clock.start();
    pasteboard.reset();
    EXPECT_LT(clock.elapsed(), 5000);
}

TEST_F(DataControlThreadTest, beforeACompositorThatHangsWithAnOwnWriteOnItsWayTheEndComesAtOnce) {
    auto pasteboard = std::make_unique<WaylandPasteboard>([](const std::string &) {}, m_limits);
    ASSERT_TRUE(eventually([&] { return pasteboard->string() == QStringLiteral("text"); }));
    m_compositor.stop();
    pasteboard->clearContents();
    pasteboard->setString(QStringLiteral("mine"));
    QElapsedTimer clock;
    clock.start();
    pasteboard.reset(); // the write goes out before the end
    EXPECT_LT(clock.elapsed(), 5000);
}

TEST_F(DataControlThreadTest, nothingIsOfferedInAnOwnersPlaceWhileTheCompositorAnswersLate) {
    WaylandPasteboard pasteboard([](const std::string &) {}, m_limits);
    ASSERT_TRUE(eventually([&] { return pasteboard.string() == QStringLiteral("text"); }));
    tellOfNobody();
    ASSERT_TRUE(eventually([&] { return m_compositor.count("zwlr_data_control_device_v1.set_selection") == 1; }));
    std::vector<std::string> asked;
    m_compositor.doThere([&] { asked = m_sinceTheEnd; });
    const auto offered = std::find(asked.begin(), asked.end(), "zwlr_data_control_device_v1.set_selection");
    EXPECT_GE(std::count(asked.begin(), offered, "wl_display.sync"), 2) << "who is about to follow had no time either";
}

} // namespace
} // namespace tavrine
