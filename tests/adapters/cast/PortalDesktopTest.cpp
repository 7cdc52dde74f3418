// The desktops on which the portal, which is played, shows the screen because nothing else does.
#include "adapters/desktops/GnomeDesktop.h"
#include "adapters/desktops/WaylandDesktop.h"
#include "adapters/linux/CastTokens.h"
#include "adapters/wayland/PlayedCompositor.h"
#include "ports/Access.h"
#include "ports/DesktopAbilities.h"
#include "ports/ScreenStream.h"
#include "support/Eventually.h"
#include "support/PlayedGnome.h"
#include "support/ScreenCastPortal.h"

#include <gtest/gtest.h>
#include <wayland-server-core.h>

namespace tavrine::test {
namespace {

AbilityReport recordingOn(Desktop &desktop) {
    const auto reports = desktop.desktopAbilities().reports();
    return *std::ranges::find(reports, Ability::recording, &AbilityReport::ability);
}

/// A stream of the toolkit's first screen that begins.
std::unique_ptr<ScreenStream> begin(ScreenStreams &streams) {
    std::optional<ShareableContent> content;
    streams.getShareableContent([&](const auto &given) {
        content =
            std::holds_alternative<ShareableContent>(given) ? std::get<ShareableContent>(given) : ShareableContent();
    });
    if (!eventually([&] { return content.has_value(); }) || content->displays.isEmpty())
        return nullptr;
    ScreenStreamConfiguration configuration;
    configuration.sourceRect = QRectF(0, 0, 20, 10);
    configuration.width = 20;
    configuration.height = 10;
    auto stream = streams.makeStream({.displayID = content->displays.first().displayID, .excludingWindows = {}},
                                     configuration, {});
    stream->startCapture([](const auto &) {});
    return stream;
}

class PortalDesktop : public ::testing::Test {
protected:
    void SetUp() override { portal.call("Answer", {QStringLiteral("never")}); }
    void expectPortalAsked(Desktop &desktop) {
        EXPECT_TRUE(eventually([&] { return recordingOn(desktop).reason.startsWith(asks); }));
        EXPECT_TRUE(desktop.access().isScreenRecordingGranted());
        EXPECT_FALSE(desktop.access().isScreenCaptureGranted());
        EXPECT_FALSE(desktop.screenStreams().tellsWindows());
        const auto stream = begin(desktop.screenStreams());
        ASSERT_TRUE(stream);
        EXPECT_TRUE(eventually([this] { return portal.state().questions == 1; }));
    }

    const QString asks = QStringLiteral("This desktop asks you");
    ScreenCastPortal portal;
};

TEST_F(PortalDesktop, isOfWaylandWhereTheCompositorShowsItsScreenToNobody) {
    static const wl_interface layers{"zwlr_layer_shell_v1", 1, 0, nullptr, 0, nullptr};
    const PlayedCompositor compositor({&layers});
    WaylandDesktop desktop;
    expectPortalAsked(desktop);
}

TEST_F(PortalDesktop, isGnomeWithoutTheExtension) {
    GnomeDesktop desktop;
    expectPortalAsked(desktop);
}

TEST_F(PortalDesktop, isNotGnomeWithTheExtensionAndBecomesItWhenThatIsSwitchedOff) {
    PlayedGnome played;
    played.kept = {QStringLiteral("RecordArea")};
    played.appear();
    GnomeDesktop desktop;
    ASSERT_TRUE(eventually([&] { return recordingOn(desktop).state == AbilityState::there; }));
    ScreenStreams &streams = desktop.screenStreams(); // as who records has them once for all
    {
        const auto stream = begin(streams);
        EXPECT_TRUE(eventually([&] { return played.asked(QStringLiteral("RecordArea")) == 1; }));
        EXPECT_EQ(portal.state().questions, 0U);
    }
    played.tell(QStringLiteral("/com/veltrane/Tavrine/Shell"), QStringLiteral("com.veltrane.Tavrine.Shell"),
                QStringLiteral("Gone"), {});
    EXPECT_TRUE(eventually([&] { return recordingOn(desktop).reason.startsWith(asks); }));
    const auto stream = begin(streams);
    EXPECT_TRUE(eventually([this] { return portal.state().questions == 1; }));
}

TEST(DesktopWithoutAPortal, isToldThatGnomeShowsItsScreensToTheExtensionAlone) {
    GnomeDesktop desktop;
    EXPECT_TRUE(eventually([&] { return recordingOn(desktop).state == AbilityState::missing; }));
    EXPECT_EQ(recordingOn(desktop).reason, QStringLiteral("GNOME shows its screens to an extension alone."));
    EXPECT_FALSE(desktop.access().isScreenRecordingGranted());
}

} // namespace
} // namespace tavrine::test
