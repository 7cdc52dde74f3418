// The desktops of Wayland as they are put together: what they lack, and the portal, which is played, where it shows the
// screen because nothing else does.
#include "adapters/desktops/GnomeDesktop.h"
#include "adapters/desktops/WaylandDesktop.h"
#include "adapters/linux/CastTokens.h"
#include "adapters/wayland/PlayedCompositor.h"
#include "adapters/wayland/WaylandConnection.h"
#include "ports/Access.h"
#include "ports/DesktopAbilities.h"
#include "ports/EventTap.h"
#include "ports/ScreenStream.h"
#include "support/CastNode.h"
#include "support/Eventually.h"
#include "support/PlayedGnome.h"
#include "support/PrivatePipeWire.h"
#include "support/SampleLog.h"
#include "support/ScreenCastPortal.h"

#include <QGuiApplication>
#include <QScreen>

#include <gtest/gtest.h>
#include <private/qhighdpiscaling_p.h>
#include <wayland-server-core.h>

namespace tavrine::test {
namespace {

AbilityReport recordingOn(Desktop &desktop) {
    const auto reports = desktop.desktopAbilities().reports();
    return *std::ranges::find(reports, Ability::recording, &AbilityReport::ability);
}

/// Of which the compositor shows all but its screen.
const wl_interface layers{"zwlr_layer_shell_v1", 1, 0, nullptr, 0, nullptr};

/// A stream of that part of the toolkit's first screen, which has as many pixels a point, that begins.
std::unique_ptr<ScreenStream> begin(ScreenStreams &streams, const QRect &part = {0, 0, 20, 10}, int scale = 1,
                                    const ScreenStreams::Handlers &handlers = {}) {
    std::optional<ShareableContent> content;
    streams.getShareableContent([&](const auto &given) {
        content =
            std::holds_alternative<ShareableContent>(given) ? std::get<ShareableContent>(given) : ShareableContent();
    });
    if (!eventually([&] { return content.has_value(); }) || content->displays.isEmpty())
        return nullptr;
    ScreenStreamConfiguration configuration;
    configuration.sourceRect = part;
    configuration.width = part.width() * scale;
    configuration.height = part.height() * scale;
    auto stream = streams.makeStream({.displayID = content->displays.first().displayID, .excludingWindows = {}},
                                     configuration, handlers);
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
    const PlayedCompositor compositor({&layers});
    WaylandDesktop desktop{std::make_shared<WaylandConnection>()};
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

/// The toolkit's points as large as where text is wanted at three times its size: no screen has a whole number of them.
class PortalDesktopWithLargeText : public ::testing::Test {
protected:
    static constexpr int factor = 3;

    void SetUp() override {
        QHighDpiScaling::setGlobalFactor(factor);
        portal.call("Show", {node.number(), 0, 0});
    }
    void TearDown() override { QHighDpiScaling::setGlobalFactor(1); }

    PrivatePipeWire pipeWire;
    const QSize pixels = QGuiApplication::primaryScreen()->size();
    CastNode node{{.size = pixels, .repeatsFirst = true}};
    ScreenCastPortal portal;
};

TEST_F(PortalDesktopWithLargeText, theStreamHasThePixelsOfItsAreaAlsoAtTheFarEdge) {
    const QSize points = QGuiApplication::primaryScreen()->size();
    ASSERT_NE(points * factor, pixels);
    const QRect part({pixels.width() / factor - 20, pixels.height() / factor - 10}, QSize(20, 10));
    const QRect shown(part.topLeft() * factor, part.size() * factor);
    node.hide(0xff000000);
    node.paint(shown, 0xff00ff00);
    const PlayedCompositor compositor({&layers});
    WaylandDesktop desktop{std::make_shared<WaylandConnection>()};
    SampleLog log;
    const auto stream = begin(desktop.screenStreams(), part, factor,
                              {[&log](const ScreenSample &sample) { log.take(sample); }, [](const QString &) {}});
    ASSERT_TRUE(stream);
    ASSERT_TRUE(eventually([&log] { return log.count() > 0; }, std::chrono::seconds(20)));
    QImage expected(shown.size(), QImage::Format_RGB32);
    expected.fill(QColor(0, 255, 0));
    EXPECT_TRUE(log.last().picture == expected);
}

TEST_F(PortalDesktopWithLargeText, gnomeIsAskedForNoMoreOfAScreenThanThereIs) {
    const QSize points = QGuiApplication::primaryScreen()->size();
    ASSERT_GT(points.width() * factor, pixels.width());
    PlayedGnome played;
    played.kept = {QStringLiteral("RecordArea")};
    played.appear();
    GnomeDesktop desktop;
    ASSERT_TRUE(eventually([&] { return desktop.access().isScreenCaptureGranted(); })); // by the extension
    const auto stream = begin(desktop.screenStreams(), QRect(QPoint(), points), factor);
    ASSERT_TRUE(eventually([&] { return played.asked(QStringLiteral("RecordArea")) == 1; }));
    const QVariantList area = played.last(QStringLiteral("RecordArea")).arguments().first(4);
    EXPECT_EQ(area, QVariantList({0, 0, pixels.width(), pixels.height()}));
}

TEST(DesktopWithoutAPortal, isToldThatGnomeShowsItsScreensToTheExtensionAlone) {
    GnomeDesktop desktop;
    EXPECT_TRUE(eventually([&] { return recordingOn(desktop).state == AbilityState::missing; }));
    EXPECT_EQ(recordingOn(desktop).reason, QStringLiteral("GNOME shows its screens to an extension alone."));
    EXPECT_FALSE(desktop.access().isScreenRecordingGranted());
}

void expectNoProgramMayBlockTheKeyboard(Desktop &desktop) {
    EXPECT_FALSE(desktop.eventTaps().areThere());
    EXPECT_FALSE(desktop.eventTaps().create([] {}));
}

TEST(DesktopOfWayland, letsNoProgramBlockTheKeyboard) {
    const PlayedCompositor compositor({&layers});
    WaylandDesktop desktop{std::make_shared<WaylandConnection>()};
    expectNoProgramMayBlockTheKeyboard(desktop);
}

TEST(DesktopOfGnome, letsNoProgramBlockTheKeyboard) {
    GnomeDesktop desktop;
    expectNoProgramMayBlockTheKeyboard(desktop);
}

} // namespace
} // namespace tavrine::test
