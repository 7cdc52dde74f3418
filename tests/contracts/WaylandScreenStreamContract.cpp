// The streams of a Wayland compositor's outputs, under their contract, in a session of sway.
#include "adapters/linux/PluginLoader.h"
#include "contracts/ScreenStreamContract.h"
#include "support/Eventually.h"
#include "support/WaylandHand.h"
#include "support/WaylandPattern.h"

#include <QGuiApplication>
#include <QScreen>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;
using tavrine::testing::WaylandPattern;

quint32 numberOf(const std::string &output) {
    return static_cast<quint32>(qHash(QString::fromStdString(output)));
}

struct WaylandScreen {
    ScreenStreams &streams() { return *plugin.port(); }
    [[nodiscard]] quint32 display() const { return numberOf(pattern.outputs()[0].name); }
    void paint(const QRect &area, quint32 colour) { pattern.paint(0, area, colour); }
    WindowNumber addWindow() { return 1; } // which no stream can tell
    void removeWindow(WindowNumber /*window*/) {}
    template <class Condition>
    bool eventually(Condition condition) {
        return test::eventually(condition, 10s);
    }
    bool passTime(std::chrono::milliseconds length) {
        letPass(length);
        return true;
    }
    void settle() { letPass(120ms); }

    WaylandPattern pattern;
    PluginLoader<ScreenStreams> plugin{QStringLiteral("wayland_screen_stream")};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Wayland, ScreenStreamContract, WaylandScreen);

/// On one of several outputs, of whatever scale: the first three of the session have 1, 1.5 and 2.
class WaylandScreenStream : public ::testing::Test {
protected:
    /// `points` of the output, as the recorder asks for them.
    void start(size_t output, const QRectF &points) {
        const WaylandOutput on = screen.pattern.outputs().at(output);
        ScreenStreamConfiguration configuration;
        configuration.sourceRect = points;
        configuration.width = static_cast<int>(std::ceil(points.width() * on.scale()));
        configuration.height = static_cast<int>(std::ceil(points.height() * on.scale()));
        configuration.showsCursor = false;
        stream = screen.streams().makeStream({numberOf(on.name), {}}, configuration,
                                             {[this](const ScreenSample &sample) { log.take(sample); },
                                              [this](const QString &reason) { end = reason; }});
        stream->startCapture([this](std::optional<QString> error) { startError = std::move(error); });
        const size_t before = log.count();
        ASSERT_TRUE(eventually([&] { return log.count() > before; })) << startError.value_or(QString()).toStdString();
    }

    WaylandScreen screen;
    SampleLog log;
    std::unique_ptr<ScreenStream> stream;
    std::optional<QString> startError;
    QString end;
};

TEST_F(WaylandScreenStream, eachOutputIsSeenPixelForPixelAtItsScale) {
    const QRectF points(20, 30, 101, 60);
    for (size_t output = 0; output < 3; ++output) {
        const double scale = screen.pattern.outputs()[output].scale();
        start(output, points);
        const QImage picture = log.last().picture;
        const QRect area(static_cast<int>(std::lround(20 * scale)), static_cast<int>(std::lround(30 * scale)),
                         picture.width(), picture.height());
        EXPECT_EQ(picture.size(), QSize(static_cast<int>(std::ceil(101 * scale)), static_cast<int>(60 * scale)));
        EXPECT_TRUE(picture.convertToFormat(QImage::Format_RGB32) ==
                    WaylandPattern::expected(static_cast<int>(output), area))
            << scale;
        const size_t before = log.count();
        screen.pattern.paint(static_cast<int>(output), QRect(area.topLeft() + QPoint(5, 6), QSize(7, 8)), 0xff010203);
        ASSERT_TRUE(eventually([&] { return log.count() > before; })) << scale;
        EXPECT_EQ(log.last().picture.pixel(5, 6) & 0xffffffU, 0x010203U);
        EXPECT_NE(log.last().picture.pixel(4, 6) & 0xffffffU, 0x010203U);
        stream.reset();
    }
}

} // namespace
} // namespace tavrine::test
