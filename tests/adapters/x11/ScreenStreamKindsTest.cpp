// Streams of screens of other kinds: turned ones, several, with other pixels, and of the smallest and the largest area.
#include "adapters/x11/ScreenStreamFixture.h"
#include "support/PrivateScreen.h"
#include "support/ShadowMemory.h"

#include <QDir>
#include <QFile>

#include <atomic>
#include <thread>

namespace tavrine::test {
namespace {

using testing::PrivateScreen;

struct Server {
    explicit Server(const QString &size, PrivateScreen::Kind kind = PrivateScreen::Kind::onItsOwn)
        : screen({}, size, kind) {}
    PrivateScreen screen;
};

/// A colour is what the server's pixels are there: the test says it in their own bits.
class ScreenOfSixteenBits : public Server, public ScreenStreamTest {
protected:
    ScreenOfSixteenBits() : Server(QStringLiteral("1280x800x16")) {}
};

TEST_F(ScreenOfSixteenBits, itsColoursAreThoseThatAreSeen) {
    const auto below = client.add(area, 0xf800);
    const auto bar = client.add(QRect(area.center() - QPoint(60, 20), QSize(120, 40)), 0x07e0);
    const auto stream = start({bar});
    EXPECT_EQ(seenAt(2, 2), 0xff0000U);
    EXPECT_TRUE(eventually([&] { return seenAt(160, 120) == 0xff0000U; })) << std::hex << seenAt(160, 120);
    client.paint(below, {101, 91, 41, 21}, 0x001f); // neither its place nor its width is even
    EXPECT_TRUE(eventually([&] { return seenAt(101, 91) == 0x0000ffU && seenAt(141, 111) == 0x0000ffU; }));
    EXPECT_EQ(seenAt(100, 91), 0xff0000U);
    EXPECT_EQ(seenAt(142, 111), 0xff0000U);
    client.paint(below, {101, 91, 41, 21}, 0x8410); // half of each
    EXPECT_TRUE(eventually([&] { return seenAt(130, 105) == 0x848284U; })) << std::hex << seenAt(130, 105);
    EXPECT_TRUE(isAllTold());
}

class ScreenOfThirtyBits : public Server, public ScreenStreamTest {
protected:
    ScreenOfThirtyBits() : Server(QStringLiteral("1280x800x30")) {}
};

TEST_F(ScreenOfThirtyBits, itsColoursAreThoseThatAreSeen) {
    const auto below = client.add(area, 1023U << 20);
    const auto bar = client.add(QRect(area.center() - QPoint(60, 20), QSize(120, 40)), 1023U << 10);
    const auto stream = start({bar});
    EXPECT_EQ(seenAt(2, 2), 0xff0000U);
    EXPECT_TRUE(eventually([&] { return seenAt(160, 120) == 0xff0000U; })) << std::hex << seenAt(160, 120);
    client.paint(below, {101, 91, 41, 21}, 1023);
    EXPECT_TRUE(eventually([&] { return seenAt(101, 91) == 0x0000ffU && seenAt(141, 111) == 0x0000ffU; }));
    EXPECT_EQ(seenAt(142, 111), 0xff0000U);
    client.paint(below, {101, 91, 41, 21}, 512U << 20 | 256U << 10 | 128);
    EXPECT_TRUE(eventually([&] { return seenAt(130, 105) == 0x804020U; })) << std::hex << seenAt(130, 105);
    EXPECT_TRUE(isAllTold());
}

/// The server itself is a window.
class ScreenThatTurns : public Server, public ScreenStreamTest {
protected:
    ScreenThatTurns() : Server(QStringLiteral("1280x800"), PrivateScreen::Kind::inAWindow) {}
    void turn(const char *direction) { ASSERT_TRUE(xrandr({QStringLiteral("-o"), QLatin1String(direction)})); }
};

TEST_F(ScreenThatTurns, itsPictureIsRightAgainWhenItHasTurned) {
    const auto below = client.add(area.adjusted(20, 20, -20, -20), 0x4080c0);
    const auto bar = client.add(QRect(area.center() - QPoint(60, 20), QSize(120, 40)), 0xff0000);
    const auto stream = start({bar});
    const QImage before = picture();
    EXPECT_EQ(before.pixel(160, 120) & 0xffffffU, 0x4080c0U);
    turn("left");
    ASSERT_EQ(client.wholeScreen().size(), QSize(800, 1280));
    EXPECT_TRUE(comesToBe(before)) << describe(picture(), before);
    client.paint(below, {0, 0, 280, 200}, 0xabcdef);
    EXPECT_TRUE(eventually([&] { return seenAt(160, 120) == 0xabcdefU && seenAt(21, 21) == 0xabcdefU; }));
    client.move(bar, QRect(area.topLeft() + QPoint(30, 30), QSize(120, 40)));
    EXPECT_TRUE(eventually([&] { return seenAt(60, 50) == 0xabcdefU; }));
    turn("normal");
    client.paint(below, {0, 0, 280, 200}, 0x224466);
    EXPECT_TRUE(eventually([&] { return seenAt(60, 50) == 0x224466U && seenAt(5, 5) == 0x303030U; }));
    EXPECT_EQ(ended, std::nullopt);
    EXPECT_TRUE(isAllTold());
}

TEST_F(ScreenThatTurns, whatHasNoPlaceOnTheTurnedScreenIsBlackUntilItTurnsBack) {
    const QRect wide(700, 100, 300, 200); // the turned screen has 100 of its columns
    const auto stream = start({}, wide);
    EXPECT_EQ(seenAt(299, 50), 0x303030U);
    turn("right");
    EXPECT_TRUE(eventually([&] { return seenAt(100, 50) == 0 && seenAt(299, 199) == 0; }));
    EXPECT_EQ(seenAt(99, 50), 0x303030U);
    turn("normal");
    client.paint(board, client.wholeScreen(), 0x515151);
    EXPECT_TRUE(eventually([&] { return seenAt(0, 0) == 0x515151U && seenAt(299, 199) == 0x515151U; }));
    EXPECT_EQ(ended, std::nullopt);
    EXPECT_TRUE(isAllTold());
}

/// The halves of the test's own screen, as the toolkit knows them.
class TwoMonitors : public ScreenStreamTest {
protected:
    TwoMonitors() {
        for (const auto &[name, x, output] : {std::tuple("left", 0, "screen"), {"right", 640, "none"}})
            EXPECT_TRUE(xrandr({QStringLiteral("--setmonitor"), QLatin1String(name),
                                QStringLiteral("640/100x800/100+%1+0").arg(x), QLatin1String(output)}));
        EXPECT_TRUE(eventually([] { return QGuiApplication::screens().size() == 2; }));
    }
    ~TwoMonitors() override {
        for (const char *name : {"left", "right"})
            EXPECT_TRUE(xrandr({QStringLiteral("--delmonitor"), QLatin1String(name)}));
        EXPECT_TRUE(eventually([] { return QGuiApplication::screens().size() == 1; }));
    }
    static const QScreen &at(int x) {
        const auto screens = QGuiApplication::screens();
        for (const QScreen *screen : screens)
            if (screen->geometry().x() == x)
                return *screen;
        return *screens.front();
    }
};

TEST_F(TwoMonitors, anAreaOfEitherIsCountedFromItsOwnCorner) {
    client.add(QRect(640 + 100, 80, 50, 50), 0x4080c0);
    client.add(QRect(100, 80, 50, 50), 0x80c040);
    const auto right = start({}, area, false, at(640));
    EXPECT_TRUE(eventually([&] { return seenAt(0, 0) == 0x4080c0U; })); // a compositor draws later
    EXPECT_EQ(seenAt(50, 0), 0x303030U);
    followed = {};
    count = 0;
    const auto left = start({}, area, false, at(0));
    EXPECT_TRUE(eventually([&] { return seenAt(0, 0) == 0x80c040U; }));
}

TEST_F(TwoMonitors, anAreaOverBothIsOnePicture) {
    const auto over = client.add(QRect(600, 80, 80, 50), 0x4080c0);
    const QRect whole = client.wholeScreen();
    const auto bar = client.add(QRect(620, 90, 40, 20), 0xff0000);
    const auto stream = start({bar}, whole, false, at(0));
    EXPECT_EQ(picture().size(), whole.size());
    EXPECT_TRUE(eventually([&] { return seenAt(600, 80) == 0x4080c0U && seenAt(679, 129) == 0x4080c0U; }));
    EXPECT_TRUE(eventually([&] { return seenAt(640, 100) == 0x4080c0U; }));
    EXPECT_EQ(seenAt(1279, 799), 0x303030U);
    client.paint(over, {0, 0, 80, 50}, 0xabcdef);
    EXPECT_TRUE(eventually([&] { return seenAt(600, 80) == 0xabcdefU && seenAt(679, 129) == 0xabcdefU; }));
    EXPECT_TRUE(isAllTold());
}

class ScreenStreamExtremes : public ScreenStreamTest {};

TEST_F(ScreenStreamExtremes, theSmallestAreaIsFollowedEvenInTheScreensCorner) {
    const QRect corner(client.wholeScreen().bottomRight() - QPoint(1, 1), QSize(2, 2));
    const auto bar = client.add(QRect(corner.bottomRight(), QSize(1, 1)), 0xff0000);
    const auto stream = start({bar}, corner, true);
    EXPECT_EQ(picture().size(), QSize(2, 2));
    EXPECT_TRUE(eventually([&] { return seenAt(1, 1) == 0x303030U; })) << std::hex << seenAt(1, 1);
    client.paint(board, QRect(corner.topLeft(), QSize(1, 1)), 0xabcdef);
    EXPECT_TRUE(eventually([&] { return seenAt(0, 0) == 0xabcdefU; }));
    client.warpPointer(corner.topLeft());
    letPass(60ms);
    client.warpPointer({10, 10});
    EXPECT_TRUE(eventually([&] { return seenAt(0, 0) == 0xabcdefU && seenAt(1, 0) == 0x303030U; }));
    EXPECT_TRUE(isAllTold());
}

TEST_F(ScreenStreamExtremes, aStreamThatIsStoppedAtOnceAnswersBothAndGivesNothingAfterwards) {
    const auto display = static_cast<quint32>(qHash(QGuiApplication::primaryScreen()->name()));
    ScreenStreamConfiguration configuration;
    configuration.sourceRect = area;
    configuration.width = area.width();
    configuration.height = area.height();
    for (int i = 0; i < 30; ++i) {
        const auto stream = plugin.port()->makeStream({display, {}}, configuration,
                                                      {[this](const ScreenSample &sample) { take(sample); }, {}});
        int starts = 0;
        int stops = 0;
        stream->startCapture([&](const std::optional<QString> &) { ++starts; });
        std::this_thread::sleep_for(i * 500us); // before, while and after it looks for the first time
        stream->stopCapture([&](const std::optional<QString> &) { ++stops; });
        ASSERT_TRUE(eventually([&] { return starts == 1 && stops == 1; })) << i;
        const int before = frames();
        client.paint(board, area, static_cast<quint32>(i) * 7919 & 0xffffff);
        if (i % 10 == 0)
            letPass(50ms);
        EXPECT_EQ(frames(), before) << i;
    }
}

TEST_F(ScreenStreamExtremes, windowsThatGoWhileTheyAreReadLeaveTheRestAsItIs) {
    const auto bar = client.add(QRect(area.center() - QPoint(60, 40), QSize(120, 80)), 0xff0000);
    const auto stream = start({bar});
    std::atomic<bool> isOver = false;
    std::thread others([&] { // without waiting for the server: they go between any two of the stream's questions
        ScreenClient other;
        for (int i = 0; !isOver; ++i) {
            const auto window = other.add(QRect(area.center() - QPoint(i % 90, i % 60), QSize(100, 80)),
                                          static_cast<quint32>(i) * 7919 & 0xffffff);
            other.lower(window);
            other.raise(window);
            if (i % 3 == 0)
                other.move(window, QRect(area.center() - QPoint(i % 50, 20), QSize(60 + i % 40, 50)));
            other.destroy(window);
        }
    });
    letPass(700ms);
    isOver = true;
    others.join();
    QImage ground(area.size(), QImage::Format_RGB32);
    ground.fill(0xff303030);
    client.raise(bar);
    EXPECT_TRUE(comesToBe(ground, 10s)) << describe(picture(), ground);
    EXPECT_EQ(ended, std::nullopt);
    EXPECT_TRUE(isAllTold());
}

TEST_F(ScreenStreamExtremes, twoHundredStartsLeaveNothingBehind) {
    const auto bar = client.add(QRect(area.center(), QSize(50, 30)), 0xff0000);
    const auto descriptors = [] { return QDir(QStringLiteral("/proc/self/fd")).entryList().size(); };
    const auto threads = [] { return QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs).size(); };
    const auto residentPages = [] {
        QFile file(QStringLiteral("/proc/self/statm"));
        return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toLongLong() : 0;
    };
    const auto startAndStop = [&](int times) {
        for (int i = 0; i < times; ++i) {
            const auto stream = start({bar});
            bool isStopped = false;
            stream->stopCapture([&](const std::optional<QString> &) { isStopped = true; });
            ASSERT_TRUE(eventually([&] { return isStopped; }));
        }
    };
    startAndStop(20);
    EXPECT_TRUE(eventually([&] { return threads() <= 4 + test::watchers; }));
    const int resources = client.resourcesOfOthers();
    const auto before = std::pair(descriptors(), threads());
    const qint64 pages = residentPages();
    startAndStop(200);
    EXPECT_TRUE(eventually([&] { return std::pair(descriptors(), threads()) == before; })) << descriptors();
    EXPECT_TRUE(eventually([&] { return client.resourcesOfOthers() == resources; })) << client.resourcesOfOthers();
    EXPECT_LT(residentPages() - pages, 512) << "2 MB; a picture alone has 0.3";
}

} // namespace
} // namespace tavrine::test
