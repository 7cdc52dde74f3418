// Streams of servers that lack something, change their monitors, hang and end.
#include "adapters/x11/ScreenStreamFixture.h"
#include "adapters/x11/stream/PixelReader.h"
#include "adapters/x11/stream/StreamLoop.h"
#include "support/PrivateScreen.h"

#include <QElapsedTimer>

#include <future>

namespace tavrine::test {
namespace {

using testing::PrivateScreen;

struct ServerInTrouble {
    explicit ServerInTrouble(const QStringList &options) : screen(options) {}
    PrivateScreen screen;
};

class ScreenStreamTrouble : public ServerInTrouble, public ScreenStreamTest {
protected:
    explicit ScreenStreamTrouble(const QStringList &options = {}) : ServerInTrouble(options) {}

    /// A stop is answered after a second. The server hangs for longer than the machine may stall.
    static constexpr auto longestAnswer = ThreadedScreenStream::longestStop + 4s;

    /// How long the answer took. The main thread does not wait for it.
    std::chrono::milliseconds stop(ScreenStream &stream) {
        QElapsedTimer timer;
        timer.start();
        bool isStopped = false;
        stream.stopCapture([&](std::optional<QString>) { isStopped = true; });
        EXPECT_LT(timer.elapsed(), 50);
        EXPECT_TRUE(eventually([&] { return isStopped; }));
        return std::chrono::milliseconds(timer.elapsed());
    }
};

class WithoutSharedMemory : public ScreenStreamTrouble {
protected:
    WithoutSharedMemory() : ScreenStreamTrouble({QStringLiteral("-extension"), QStringLiteral("MIT-SHM")}) {}
};

TEST_F(WithoutSharedMemory, thePicturesAreTheSame) {
    const auto below = client.add(area.adjusted(20, 20, -20, -20), 0x4080c0);
    const QImage without = client.screen(area);
    const auto bar = client.add(QRect(area.center() - QPoint(60, 20), QSize(120, 40)), 0xff0000);
    client.setPointer(board, QSize(8, 8), QPoint(), 0xff00ffff);
    const auto stream = start({bar});
    EXPECT_TRUE(comesToBe(without)) << describe(picture(), without);
    client.paint(below, {100, 90, 40, 20}, 0xabcdef);
    EXPECT_TRUE(eventually([&] { return seenAt(125, 115) == 0xabcdefU; }));
    EXPECT_TRUE(isAllTold());
}

TEST_F(ScreenStreamTrouble, aMonitorThatGoesLeavesBlackBehind) {
    const auto stream = start({});
    ASSERT_TRUE(xrandr({QStringLiteral("--setmonitor"), QStringLiteral("half"), QStringLiteral("200/50x800/200+0+0"),
                        QStringLiteral("screen")}));
    EXPECT_TRUE(eventually([&] { return seenAt(150, 20) == 0; }));
    EXPECT_EQ(seenAt(99, 20), 0x303030U);
    EXPECT_EQ(seenAt(100, 20), 0U);
    client.paint(board, client.wholeScreen(), 0x515151);
    EXPECT_TRUE(eventually([&] { return seenAt(99, 20) == 0x515151U; }));
    EXPECT_EQ(seenAt(100, 20), 0U);
    ASSERT_TRUE(xrandr({QStringLiteral("--delmonitor"), QStringLiteral("half")}));
    EXPECT_TRUE(eventually([&] { return seenAt(150, 20) == 0x515151U; }));
    EXPECT_EQ(ended, std::nullopt);
    EXPECT_TRUE(isAllTold());
}

TEST_F(ScreenStreamTrouble, aServerThatEndsEndsTheStreamWithWords) {
    const auto stream = start({});
    screen.end();
    ASSERT_TRUE(eventually([&] { return ended.has_value(); }));
    EXPECT_FALSE(ended->isEmpty());
    bool isAnswered = false;
    stream->stopCapture([&](std::optional<QString> error) { isAnswered = error.has_value(); });
    EXPECT_TRUE(eventually([&] { return isAnswered; }));
}

TEST_F(ScreenStreamTrouble, aServerThatHangsForAWhileIsSeenAgain) {
    const auto bar = client.add(QRect(area.center(), QSize(50, 30)), 0xff0000);
    const auto stream = start({bar}, area, true);
    client.paintOften(board, area, 0x717171);
    screen.hang();
    letPass(1300ms);
    screen.goOn();
    client.paint(board, area, 0x626262);
    EXPECT_TRUE(eventually([&] { return seenAt(5, 5) == 0x626262U && seenAt(170, 130) == 0x626262U; }));
    EXPECT_EQ(ended, std::nullopt);
    EXPECT_TRUE(isAllTold());
}

TEST_F(ScreenStreamTrouble, aServerThatHangsWhileAStreamBeginsIsWaitedFor) {
    const auto bar = client.add(QRect(area.center(), QSize(50, 30)), 0xff0000);
    const StreamPlan plan{.area = area, .keptOut = {bar}, .showsPointer = true, .interval = 16ms, .queueDepth = 6};
    SampleGate<ScreenSample> session([this](const ScreenSample &sample) { take(sample); });
    StreamLoop loop(plan, session);
    screen.hang();
    auto opening = std::async(std::launch::async, [&] { return loop.open(); });
    letPass(StreamLoop::longestWait + 200ms);
    screen.goOn();
    EXPECT_EQ(opening.get().value_or(QString()).toStdString(), "");
    auto running = std::async(std::launch::async, [&] { return loop.run(); });
    EXPECT_TRUE(eventually([&] { return frames() > 0; }));
    EXPECT_EQ(seenAt(165, 125), 0x303030U);
    const int before = frames();
    client.warpPointer(area.topLeft() + QPoint(20, 20)); // over a screen on which nothing else changes
    EXPECT_TRUE(eventually([&] { return frames() > before; }));
    session.end();
    EXPECT_EQ(running.get(), std::nullopt);
}

TEST_F(ScreenStreamTrouble, memoryThatTheServerWasTooLateToTakeIsGivenToItAnew) {
    XcbLink link(100ms);
    const auto layout =
        PixelLayout::forVisual(*xcb_get_setup(link.connection()), link.screen(), link.screen().root_visual);
    ASSERT_TRUE(layout);
    PixelReader reader(link, *layout);
    FrameBuffers buffers(area.size(), 1, std::make_shared<Waker>());
    FrameBuffers::Buffer &buffer = *buffers.free();
    const QRect narrow(area.topLeft(), QSize(area.width() / 2, area.height()));
    const auto readBoth = [&] {
        reader.read(link.root(), area, buffer, {});
        reader.read(link.root(), narrow, buffer, {});
        return reader.finish();
    };
    screen.hang();
    EXPECT_FALSE(readBoth());
    screen.goOn();
    ASSERT_TRUE(eventually([&] { return readBoth(); }));
    const auto before = xcb_total_read(link.connection());
    EXPECT_TRUE(readBoth());
    EXPECT_LT(xcb_total_read(link.connection()) - before, 1000U) << "the pixels do not come over the connection";
}

/// What a stream does with the windows that are kept out, step by step.
struct HiddenPlace {
    HiddenPlace(XcbLink::Wait longestWait, quint32 bar) : link(longestWait), keptOut(link, area, {bar}) {}
    void open() {
        ASSERT_TRUE(link.extension(xcb_damage_id));
        ASSERT_TRUE(link.reply<xcb_damage_query_version_reply_t>(xcb_damage_query_version(link.connection(), 1, 1)));
        ASSERT_TRUE(link.extension(xcb_xfixes_id));
        ASSERT_TRUE(link.reply<xcb_xfixes_query_version_reply_t>(xcb_xfixes_query_version(link.connection(), 5, 0)));
        ASSERT_TRUE(keptOut.open());
        ASSERT_TRUE(link.finish());
    }
    bool look(std::chrono::steady_clock::time_point moment) {
        keptOut.ask();
        static_cast<void>(keptOut.take());
        return keptOut.isSettled(moment);
    }
    void hear() {
        ASSERT_TRUE(link.finish());
        while (const XcbEvent event = link.nextEvent())
            static_cast<void>(keptOut.handle(*event));
    }

    quint32 pixelAt(QPoint place) {
        keptOut.draw(keptOut.hidden());
        const QPoint inner = place - keptOut.origin();
        const auto image = link.reply<xcb_get_image_reply_t>(
            xcb_get_image(link.connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, keptOut.drawable(),
                          static_cast<std::int16_t>(inner.x()), static_cast<std::int16_t>(inner.y()), 1, 1, ~0U));
        return image ? *reinterpret_cast<const quint32 *>(xcb_get_image_data(image.get())) & 0xffffffU : 0;
    }

    XcbLink link;
    KeptOutWindows keptOut;
};

TEST_F(ScreenStreamTrouble, whatWasDrawnWhileEverybodyStoodStillIsHeardOfBeforeItIsGivenUp) {
    const auto below = client.addBare(area); // shows what it paints, and nothing else
    const auto bar = client.add(area.adjusted(80, 80, -80, -80), 0xff0000);
    HiddenPlace place(StreamLoop::longestWait, bar);
    place.open();
    const auto now = std::chrono::steady_clock::now();
    const auto later = now + 1h; // it stands still, and then the time is over
    EXPECT_FALSE(place.look(now));
    ASSERT_TRUE(place.link.finish());
    client.paint(below, QRect(QPoint(), area.size()), 0x00bb00);
    EXPECT_FALSE(place.look(later)) << "what has arrived is not heard yet";
    place.hear();
    EXPECT_TRUE(place.look(now)) << "all was drawn";

    const auto hung = client.addBare(area);
    client.raise(bar);
    place.hear();
    EXPECT_FALSE(place.look(now));
    place.hear();
    EXPECT_FALSE(place.look(later));
    place.hear();
    EXPECT_TRUE(place.look(later)) << "a program that draws nothing is waited for no longer";
    client.destroy(hung);
}

TEST_F(ScreenStreamTrouble, whatAWindowHasDrawnIsHeardOfThoughTheServerWasLateToTell) {
    const auto below = client.addBare(area);
    const auto bar = client.add(area.adjusted(80, 80, -80, -80), 0xff0000);
    HiddenPlace place(StreamLoop::longestWait, bar);
    place.open();
    const auto now = std::chrono::steady_clock::now();
    EXPECT_FALSE(place.look(now));
    ASSERT_TRUE(place.link.finish());
    client.paint(below, QRect(QPoint(), area.size()), 0x00bb00);
    place.hear();
    screen.hang();
    EXPECT_FALSE(place.look(now));
    screen.goOn();
    EXPECT_TRUE(place.link.takeIsLate());
    place.keptOut.doubt();
    ASSERT_TRUE(eventually([&] { return place.link.finish(); }));
    place.hear();
    EXPECT_TRUE(place.look(now)) << "the window draws no second time";
}

TEST_F(ScreenStreamTrouble, windowsThatChangeWhileTheyAreCountedKeepTheirOrder) {
    client.add(area, 0x4080c0);
    const auto above = client.add(area.adjusted(100, 40, -100, -40), 0x80c040);
    const auto gone = client.add(QRect(0, 0, 20, 20), 0x202020);
    const auto bar = client.add(area.adjusted(60, 60, -60, -60), 0xff0000);
    HiddenPlace place(StreamLoop::longestWait, bar);
    place.open();
    client.raise(gone);
    client.raise(above); // over the one that goes
    client.raise(bar);
    client.destroy(gone);
    for (int i = 0; i < 3; ++i) { // the notices of what was counted already come behind the first answer
        static_cast<void>(place.look(std::chrono::steady_clock::now()));
        place.hear();
    }
    EXPECT_TRUE(place.look(std::chrono::steady_clock::now()));
    EXPECT_EQ(place.pixelAt(area.center()), 0x80c040U);
}

TEST_F(ScreenStreamTrouble, aStopIsAnsweredByAServerThatHangs) {
    auto stream = start({});
    client.paintOften(board, area, 0x717171);
    screen.hang();
    letPass(50ms);
    EXPECT_LT(stop(*stream), longestAnswer);
    stream.reset();

    ScreenStreamConfiguration configuration;
    configuration.sourceRect = area;
    configuration.width = area.width();
    configuration.height = area.height();
    const auto display = static_cast<quint32>(qHash(QGuiApplication::primaryScreen()->name()));
    stream = plugin.port()->makeStream({display, {}}, configuration, {});
    std::optional<QString> startError;
    stream->startCapture([&](std::optional<QString> error) { startError = error.value_or(QString()); });
    letPass(50ms);
    EXPECT_EQ(startError, std::nullopt);
    EXPECT_LT(stop(*stream), longestAnswer);
    EXPECT_TRUE(startError && !startError->isEmpty());

    std::optional<bool> isError;
    plugin.port()->getShareableContent([&](const std::variant<QString, ShareableContent> &answer) {
        isError = std::holds_alternative<QString>(answer);
    });
    EXPECT_TRUE(eventually([&] { return isError.has_value(); }));
    EXPECT_TRUE(isError.value_or(false));
    screen.goOn();
}

} // namespace
} // namespace tavrine::test
