// What an X server's screen gives a stream: windows that are kept out, the pointer, monitors, and servers in trouble.
#include "adapters/x11/ScreenStreamFixture.h"
#include "support/TestKeyboard.h"

#include <atomic>
#include <random>
#include <thread>

namespace tavrine::test {
namespace {

TEST_F(ScreenStreamTest, aWindowThatIsKeptOutShowsWhatIsBelowFromTheFirstFrameOn) {
    const auto below = client.add(area.adjusted(20, 20, -20, -20), 0x4080c0);
    const QImage without = shown(area.center(), 0x4080c0);
    const auto bar = client.add(QRect(area.center() - QPoint(60, 20), QSize(120, 40)), 0xff0000);
    const auto stream = start({bar});
    EXPECT_EQ(describe(picture(), without), "");
    client.paint(below, {100, 90, 40, 20}, 0xabcdef);
    QImage painted = without;
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 40; ++x)
            painted.setPixel(120 + x, 110 + y, 0xffabcdef);
    EXPECT_TRUE(comesToBe(painted)) << describe(picture(), painted);
    client.paint(bar, {0, 0, 120, 40}, 0x00ff00);
    letPass(60ms);
    EXPECT_EQ(describe(picture(), painted), "");
    EXPECT_TRUE(isAllTold());
}

TEST_F(ScreenStreamTest, whatLiesUnderAKeptOutWindowIsRightAfterAnythingThatWindowsDo) {
    struct Known {
        quint32 id;
        QRect place;
        quint32 colour;
        bool isMapped = true;
    };
    std::mt19937 random(7);
    const auto between = [&](int from, int to) { return std::uniform_int_distribution<int>(from, to)(random); };
    const auto anywhere = [&] {
        return QRect(area.x() + between(-60, 260), area.y() + between(-60, 200), between(20, 200), between(20, 160));
    };
    std::vector<Known> windows; // the lowest first
    const QRect barPlace(area.center() - QPoint(70, 40), QSize(140, 80));
    const auto bar = client.add(barPlace, 0xff0000);
    const auto stream = start({bar});
    const auto expected = [&] {
        QImage image(area.size(), QImage::Format_RGB32);
        image.fill(0xff303030);
        for (const Known &window : windows)
            if (window.isMapped)
                for (int y = 0; y < image.height(); ++y)
                    for (int x = 0; x < image.width(); ++x)
                        if (window.place.contains(QPoint(x, y) + area.topLeft()))
                            image.setPixel(x, y, 0xff000000 | window.colour);
        return image;
    };
    for (int step = 0; step < 80; ++step) {
        const int what = windows.size() < 3 ? 0 : between(0, 7);
        const auto which = windows.empty() ? windows.end() : windows.begin() + between(0, int(windows.size()) - 1);
        if (what == 0 && windows.size() < 8) {
            const QRect place = anywhere();
            const auto colour = static_cast<quint32>(between(1, 0xffffff));
            windows.push_back({client.add(place, colour), place, colour});
            client.raise(bar);
        } else if (what == 1) {
            client.destroy(which->id);
            windows.erase(which);
        } else if (what == 2) {
            client.setMapped(which->id, which->isMapped = !which->isMapped);
        } else if (what == 3 || what == 4) {
            client.move(which->id, which->place = anywhere());
        } else if (what == 5) {
            client.move(which->id, which->place = QRect(anywhere().topLeft(), which->place.size()));
        } else if (what == 6) {
            client.raise(which->id);
            std::rotate(which, which + 1, windows.end());
            client.raise(bar);
        } else {
            client.raise(which->id); // above what is kept out
            std::rotate(which, which + 1, windows.end());
        }
        const QImage wanted = expected();
        ASSERT_TRUE(comesToBe(wanted)) << "step " << step << " " << what << ": " << describe(picture(), wanted);
    }
    EXPECT_TRUE(isAllTold());
}

TEST_F(ScreenStreamTest, aKeptOutWindowMayMoveComeAndGo) {
    const QImage without = shown(area.center(), 0x303030);
    const auto bar = client.add(QRect(area.topLeft() + QPoint(10, 10), QSize(60, 30)), 0xff0000);
    const auto stream = start({bar});
    for (int step = 0; step < 20; ++step)
        client.move(bar, QRect(area.topLeft() + QPoint(10 + step * 9, 10 + step * 5), QSize(60, 30)));
    letPass(60ms);
    EXPECT_TRUE(comesToBe(without)) << describe(picture(), without);
    client.setMapped(bar, false);
    letPass(60ms);
    client.setMapped(bar, true);
    letPass(60ms);
    EXPECT_TRUE(comesToBe(without)) << describe(picture(), without);
    client.destroy(bar);
    letPass(60ms);
    EXPECT_TRUE(comesToBe(without)) << describe(picture(), without);
    client.paint(board, QRect(area.topLeft(), QSize(5, 5)), 0xffffff);
    EXPECT_TRUE(eventually([&] { return seenAt(2, 2) == 0xffffff; }));
}

TEST_F(ScreenStreamTest, aProgramThatDrawsLateIsWaitedForAndOneThatHangsIsNot) {
    const auto bare = client.addBare(area);
    client.paint(bare, QRect(QPoint(), area.size()), 0x00aa00);
    const auto bar = client.add(QRect(area.center(), QSize(50, 30)), 0xff0000);
    std::atomic<bool> isOver = false;
    std::thread program([&] { // as it does when the server asks it to
        while (!isOver) {
            std::this_thread::sleep_for(20ms);
            client.paint(bare, QRect(QPoint(), area.size()), 0x00bb00);
        }
    });
    auto stream = start({bar});
    const quint32 first = seenAt(170, 130);
    isOver = true;
    program.join();
    EXPECT_TRUE(first == 0x00aa00U || first == 0x00bb00U) << first; // with a compositor nothing was ever covered
    stream.reset();

    client.raise(bare);
    client.raise(bar);
    stream = start({bar});
    EXPECT_NE(seenAt(170, 130), 0xff0000U);
}

TEST_F(ScreenStreamTest, aShapedWindowBelowCoversOnlyWhatItIs) {
    const auto below = client.add(area, 0x4080c0);
    client.shape(below, {QRect(0, 0, 150, 240), QRect(200, 100, 60, 60)});
    static_cast<void>(shown(area.topLeft(), 0x4080c0));
    const QImage without = shown(area.topLeft() + QPoint(160, 0), 0x303030);
    const auto bar = client.add(area.adjusted(60, 60, -60, -60), 0xff0000);
    const auto stream = start({bar});
    EXPECT_TRUE(comesToBe(without)) << describe(picture(), without);
    client.setMapped(bar, false);
    client.shape(below, {QRect(90, 90, 100, 20)});
    const QImage after = shown(area.topLeft(), 0x303030);
    client.setMapped(bar, true);
    EXPECT_TRUE(comesToBe(after)) << describe(picture(), after);
}

TEST_F(ScreenStreamTest, aTranslucentWindowBelowLooksAsOnTheScreen) {
    const auto glass = client.addTranslucent(area.adjusted(40, 40, -40, -40), 0x80400000);
    const QImage without = shown(area.center(), client.isComposited() ? 0x581818 : 0x400000);
    const auto bar = client.add(area.adjusted(80, 80, -80, -80), 0xff0000);
    const auto stream = start({bar});
    EXPECT_TRUE(comesToBe(without)) << describe(picture(), without);
    static_cast<void>(glass);
}

TEST_F(ScreenStreamTest, theRootWindowsOwnPictureIsSeenAndFollowed) {
    client.setBackground(0x225588);
    client.setMapped(board, false);
    const auto bar = client.add(area.adjusted(80, 80, -80, -80), 0xff0000);
    const auto stream = start({bar});
    // As beside it: a compositor may show something of its own there.
    EXPECT_EQ(seenAt(160, 120), seenAt(2, 2));
    client.setBackground(0x885522);
    letPass(100ms);
    EXPECT_TRUE(eventually([&] { return seenAt(160, 120) == seenAt(2, 2); }));
    EXPECT_NE(seenAt(160, 120), 0xff0000U);
}

TEST_F(ScreenStreamTest, underAKeptOutWindowOverNoOtherIsWhatIsSeenBesideIt) {
    client.destroy(board);
    letPass(100ms); // a compositor draws its own
    const auto bar = client.add(QRect(area.center() - QPoint(60, 20), QSize(120, 40)), 0xff0000);
    const auto stream = start({bar});
    const quint32 beside = seenAt(2, 2);
    EXPECT_NE(beside, 0xff0000U);
    EXPECT_EQ(seenAt(160, 120), beside);
    client.move(bar, QRect(area.center() - QPoint(80, 30), QSize(120, 40)));
    letPass(60ms);
    EXPECT_TRUE(eventually([&] { return seenAt(160, 120) == beside && seenAt(100, 100) == beside; }));
}

/// Every pixel of it differs from its neighbours.
QImage wallpaper(quint32 seed) {
    QImage tile(190, 70, QImage::Format_RGB32);
    for (int y = 0; y < tile.height(); ++y)
        for (int x = 0; x < tile.width(); ++x)
            tile.setPixel(x, y, 0xff000000 | ((seed + quint32(x)) * 0x010305U + quint32(y) * 0x050301U) % 0xffffffU);
    return tile;
}

/// As it is seen, wherever it begins.
QImage wallpaperOver(const QRect &place, const QImage &tile) {
    QImage image(place.size(), QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, tile.pixel((place.x() + x) % tile.width(), (place.y() + y) % tile.height()));
    return image;
}

TEST_F(ScreenStreamTest, aWallpaperUnderAKeptOutWindowIsAsBesideItAndFollowedWhenItChanges) {
    client.setWallpaper(wallpaper(1));
    client.setMapped(board, false);
    const QImage first = wallpaperOver(area, wallpaper(1));
    static_cast<void>(shown(area.topLeft(), first.pixel(0, 0) & 0xffffffU));
    const auto bar = client.add(area.adjusted(81, 83, -79, -85), 0xff0000);
    const auto stream = start({bar});
    EXPECT_TRUE(comesToBe(first)) << describe(picture(), first);
    const auto above = client.add(QRect(area.center(), QSize(300, 20)), 0x4080c0); // half under the bar, half beside it
    client.raise(bar);
    EXPECT_TRUE(eventually([&] { return seenAt(162, 122) == 0x4080c0U && seenAt(310, 122) == 0x4080c0U; }));
    client.destroy(above);
    client.setWallpaper(wallpaper(99));
    const QImage second = wallpaperOver(area, wallpaper(99));
    EXPECT_TRUE(comesToBe(second)) << describe(picture(), second);
    EXPECT_TRUE(isAllTold());
}

TEST_F(ScreenStreamTest, aRootWindowsOwnPictureThatIsToldOfTooEarlyOrNotAtAllIsFollowed) {
    client.setBackground(0x225588);
    client.setMapped(board, false);
    static_cast<void>(shown(area.topLeft(), 0x225588));
    const auto bar = client.add(area.adjusted(80, 80, -80, -80), 0xff0000);
    const auto stream = start({bar});
    EXPECT_TRUE(eventually([&] { return seenAt(160, 120) == seenAt(2, 2); }));
    const int before = frames();
    client.tellOfBackground(0x225588);
    client.paint(bar, QRect(0, 0, 5, 5), 0xff0000);
    EXPECT_TRUE(eventually([&] { return frames() > before; }));
    client.paintBackground(0x558822);
    EXPECT_TRUE(eventually([&] { return seenAt(2, 2) == 0x558822U && seenAt(160, 120) == 0x558822U; }))
        << std::hex << seenAt(2, 2) << " and " << seenAt(160, 120);
    client.paintBackground(0x882255);
    EXPECT_TRUE(eventually([&] { return seenAt(2, 2) == 0x882255U && seenAt(160, 120) == 0x882255U; }))
        << std::hex << seenAt(2, 2) << " and " << seenAt(160, 120);
    EXPECT_TRUE(isAllTold());
}

/// Where the window begins in a line of the picture; -1 where it is not.
int firstIn(const QImage &picture, int line, quint32 colour) {
    for (int x = 0; x < picture.width(); ++x)
        if ((picture.pixel(x, line) & 0xffffffU) == colour)
            return x;
    return -1;
}

TEST_F(ScreenStreamTest, aWindowThatMovesUnderAKeptOutOneStaysInOnePiece) {
    const auto below = client.add(QRect(area.x() + 120, area.y() + 20, 50, 200), 0x4080c0);
    const auto bar = client.add(area.adjusted(0, 90, 0, -90), 0xff0000);
    const auto stream = start({bar});
    std::atomic<bool> isOver = false;
    std::chrono::duration<double> late{};
    std::thread mover([&] {
        ScreenClient other;
        for (int i = 0; !isOver; ++i) {
            const auto next = std::chrono::steady_clock::now() + 4ms;
            other.move(below, QRect(area.x() + 20 + i * 7 % 230, area.y() + 20, 50, 200));
            std::this_thread::sleep_until(next);
            late += std::chrono::steady_clock::now() - next;
        }
    });
    const auto begun = std::chrono::steady_clock::now();
    int seen = 0;
    int torn = 0;
    for (int last = frames(); seen < 60; last = frames()) {
        ASSERT_TRUE(eventually([&] { return frames() > last; }));
        const QImage one = picture();
        ++seen;
        torn += firstIn(one, 30, 0x4080c0) != firstIn(one, 120, 0x4080c0) ? 1 : 0;
    }
    const std::chrono::duration<double> length = std::chrono::steady_clock::now() - begun;
    isOver = true;
    mover.join();
    // A busy machine keeps the stream waiting between its questions, as it does the mover; and then frames are overdue.
    const double overdue = std::max(length / (seen * 1s / 60.0) - 1, 0.0);
    EXPECT_LE(torn, seen * (0.1 + late / length + overdue));
    EXPECT_TRUE(isAllTold());
}

TEST_F(ScreenStreamTest, windowsThatAreKeptOutCostNothingOutsideTheArea) {
    client.add(area, 0x4080c0);
    const auto bar = client.add(QRect(area.bottomLeft() + QPoint(0, 20), QSize(100, 40)), 0xff0000);
    const auto frame = client.add(area.adjusted(-4, -4, 4, 4), 0xff0000);
    client.shape(frame, {QRect(0, 0, 328, 4), QRect(0, 244, 328, 4), QRect(0, 4, 4, 240), QRect(324, 4, 4, 240)});
    static_cast<void>(shown(area.center(), 0x4080c0));
    letPass(100ms); // a compositor has what it needs for new windows
    const int before = client.resourcesOfOthers();
    auto plain = start({});
    const int alone = client.resourcesOfOthers() - before;
    plain.reset();
    ASSERT_TRUE(eventually([&] { return client.resourcesOfOthers() == before; }));
    const auto stream = start({bar, frame});
    letPass(50ms);
    EXPECT_LE(client.resourcesOfOthers() - before, alone + 3); // its ears: for the root window, and for both shapes
    EXPECT_EQ(seenAt(0, 0), 0x4080c0U);
}

TEST_F(ScreenStreamTest, thePointerIsDrawnWhereItPointsAndTakenAwayAgain) {
    client.setPointer(board, QSize(16, 12), QPoint(4, 2), 0xff00ffff);
    client.warpPointer(area.topLeft() + QPoint(50, 60));
    const auto stream = start({}, area, true);
    EXPECT_EQ(seenAt(46, 58), 0x00ffffU);
    EXPECT_EQ(seenAt(61, 69), 0x00ffffU);
    EXPECT_EQ(seenAt(45, 58), 0x303030U);
    EXPECT_EQ(seenAt(62, 69), 0x303030U);
    for (int i = 0; i < 20; ++i) { // over a screen on which nothing else changes
        const QPoint place(30 + i * 12, 40 + i * 7);
        client.warpPointer(area.topLeft() + place);
        ASSERT_TRUE(eventually([&] { return seenAt(place.x(), place.y()) == 0x00ffffU; })) << i;
        letPass(i % 3 == 0 ? 40ms : 0ms);
    }
    EXPECT_EQ(seenAt(50, 60), 0x303030U);
    client.setPointer(board, QSize(10, 10), QPoint(5, 5), 0x80800000); // half of a red
    EXPECT_TRUE(eventually([&] { return seenAt(30 + 19 * 12, 40 + 19 * 7) == 0x981818U; }));
    client.warpPointer({5, 5});
    EXPECT_TRUE(eventually([&] { return seenAt(30 + 19 * 12, 40 + 19 * 7) == 0x303030U; }));
    EXPECT_TRUE(isAllTold());
}

TEST_F(ScreenStreamTest, theMouseIsSeenToMoveToo) {
    client.setPointer(board, QSize(8, 8), QPoint(0, 0), 0xff00ffff);
    testing::TestKeyboard person;
    person.movePointer(area.x() + 10, area.y() + 10);
    const auto stream = start({}, area, true);
    for (int i = 0; i < 200; ++i)
        person.movePointer(area.x() + 10 + i, area.y() + 10 + i / 2);
    EXPECT_TRUE(eventually([&] { return seenAt(209, 109) == 0x00ffffU; }));
    EXPECT_EQ(seenAt(12, 12), 0x303030U);
    EXPECT_TRUE(isAllTold());
}

TEST_F(ScreenStreamTest, outsideOfTheScreenThePictureIsBlack) {
    const QRect whole = client.wholeScreen();
    const QRect over(whole.right() - 99, whole.bottom() - 49, 200, 100);
    const auto stream = start({}, over);
    EXPECT_EQ(seenAt(0, 0), 0x303030U);
    EXPECT_EQ(seenAt(99, 49), 0x303030U);
    EXPECT_EQ(seenAt(100, 49), 0U);
    EXPECT_EQ(seenAt(99, 50), 0U);
    client.paint(board, whole, 0x515151);
    EXPECT_TRUE(eventually([&] { return seenAt(99, 49) == 0x515151U; }));
    EXPECT_EQ(seenAt(199, 99), 0U);
}

TEST_F(ScreenStreamTest, aStormOfChangesGivesSixtyFramesASecondAndNoMore) {
    const auto stream = start({}, client.wholeScreen());
    std::atomic<bool> isOver = false;
    std::thread storm([&] {
        ScreenClient other;
        for (quint32 i = 0; !isOver; ++i) {
            for (int j = 0; j < 40; ++j)
                other.paintOften(board, QRect((j * 37 + int(i) * 11) % 1200, (j * 53) % 700, 30, 20),
                                 i * 7919 & 0xffffff);
            std::this_thread::sleep_for(4ms);
        }
    });
    letPass(200ms);
    const auto begun = std::chrono::steady_clock::now();
    const int before = frames();
    letPass(1s);
    const int seen = frames() - before;
    const std::chrono::duration<double> length = std::chrono::steady_clock::now() - begun;
    EXPECT_LE(seen, length * 60.0 / 1s + 2);
    EXPECT_TRUE(eventually([&] { return frames() >= before + 2; })); // however busy the machine is
    isOver = true;
    storm.join();
    EXPECT_TRUE(eventually([&] { return describe(picture(), client.screen(client.wholeScreen())).empty(); }));
    EXPECT_TRUE(isAllTold());
}

} // namespace
} // namespace tavrine::test
