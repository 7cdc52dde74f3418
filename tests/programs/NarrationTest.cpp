#include "programs/screencapture/Narration.h"

#include "adapters/linux/NarratedWords.h"
#include "adapters/linux/NarrationProtocol.h"

#include <array>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tavrine {
namespace {

using Kind = OverlayEvent::Kind;

class NarrationOfACapture : public testing::Test {
protected:
    void SetUp() override {
        std::array<int, 2> ends{};
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends.data()), 0);
        listener = Descriptor(ends[1]);
        narration.beginWith(Descriptor(ends[0]));
        EXPECT_EQ(told(), "screen 0 0 1000 800 1000 800\n");
    }
    void key(OverlayKey which) {
        model.keyPressed(which, false, false, false);
        narration.follow(Kind::keyPressed, model);
    }
    /// Since the last time.
    [[nodiscard]] std::string told() const {
        std::array<char, 8192> bytes{};
        const ssize_t count = ::read(listener.number(), bytes.data(), bytes.size());
        return {bytes.data(), size_t(std::max<ssize_t>(count, 0))};
    }

    Descriptor listener;
    SelectionModel model{QRect(0, 0, 1000, 800), {500, 400}};
    Narration narration{QRect(0, 0, 1000, 800), [](const QRect &area) { return area.size() * 2; }};
};

TEST_F(NarrationOfACapture, saysWhereEachKeyHasCome) {
    key(OverlayKey::left);
    EXPECT_EQ(told(), "cross 499 400 1 1 1 1\n");
    key(OverlayKey::enter);
    key(OverlayKey::down);
    EXPECT_EQ(told(), "area 499 400 1 1 2 2\narea 499 400 1 2 2 4\n");
}

TEST_F(NarrationOfACapture, saysAWindowThatWouldBeTaken) {
    model.setTargets({QRect(400, 300, 200, 200)});
    key(OverlayKey::space);
    EXPECT_EQ(told(), "window 400 300 200 200 400 400\n");
    key(OverlayKey::space);
    EXPECT_EQ(told(), "cross 500 400 1 1 1 1\n");
}

TEST_F(NarrationOfACapture, saysACrossWhereNoWindowWouldBeTaken) {
    key(OverlayKey::space);
    EXPECT_EQ(told(), "cross 500 400 1 1 1 1\n");
}

TEST_F(NarrationOfACapture, isSilentWhileThePointerMovesAndSpeaksOfItsClick) {
    model.pointerMoved({100, 100});
    narration.follow(Kind::pointerMoved, model);
    EXPECT_EQ(told(), "");
    model.buttonPressed(1, {100, 100});
    narration.follow(Kind::buttonPressed, model);
    EXPECT_EQ(told(), "area 100 100 1 1 2 2\n");
}

TEST_F(NarrationOfACapture, saysNothingTwice) {
    key(OverlayKey::left);
    EXPECT_NE(told(), "");
    key(OverlayKey::other);
    EXPECT_EQ(told(), "");
}

TEST_F(NarrationOfACapture, saysNothingMoreWhenItIsOver) {
    key(OverlayKey::escape);
    EXPECT_EQ(told(), "");
}

TEST_F(NarrationOfACapture, waitsForNobodyWhoDoesNotListen) {
    for (int step = 0; step < 100'000; ++step)
        key(step % 2 ? OverlayKey::left : OverlayKey::right);
    EXPECT_EQ(model.pointer(), QPoint(500, 400));
    listener.close();
    key(OverlayKey::left); // and is not ended by who has gone
}

TEST(NarratedPlace, comesThroughALineAsItWas) {
    const NarratedPlace place{NarratedPlace::Kind::window, {-5, 0, 20, 30}, {40, 60}};
    EXPECT_EQ(place.line(), "window -5 0 20 30 40 60\n");
    EXPECT_EQ(NarratedPlace::parse("window -5 0 20 30 40 60"), place);
}

TEST(NarratedPlace, isNoneOfAnotherLine) {
    for (const char *line : {"", "window", "cross 1 2 3 4 5", "cross 1 2 3 4 5 6 7", "cross 1 2 3 4 5 6 ",
                             "cross  1 2 3 4 5 6", "door 1 2 3 4 5 6", "cross 1 2 3 4 5 x", "cross 1 2 0 4 5 6",
                             "cross 1 2 3 4 5 0", "cross 1 2 3 4 -5 6", "cross 1 2 3 4 5 99999999999"})
        EXPECT_EQ(NarratedPlace::parse(line), std::nullopt) << line;
    EXPECT_NE(NarratedPlace::parse("cross 1048576 2 3 4 5 6"), std::nullopt);
    EXPECT_EQ(NarratedPlace::parse("cross 1048577 2 3 4 5 6"), std::nullopt);
}

TEST(NarratedWords, tellOfThePictureAndItsPlace) {
    const auto words = [](NarratedPlace::Kind kind) {
        return narratedWords({kind, {10, 20, 30, 40}, {60, 80}}).toStdString();
    };
    EXPECT_EQ(words(NarratedPlace::Kind::screen), "");
    EXPECT_EQ(words(NarratedPlace::Kind::cross), "Cross at 10, 20");
    EXPECT_EQ(words(NarratedPlace::Kind::area), "Area of 60 × 80 at 10, 20");
    EXPECT_EQ(words(NarratedPlace::Kind::window), "Window of 60 × 80 at 10, 20");
}

} // namespace
} // namespace tavrine
