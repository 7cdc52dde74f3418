// What the recorder is told, and where it puts sound.
#include "adapters/linux/RecorderProtocol.h"

#include "programs/recorder/SoundPlacement.h"

#include <random>

#include <gmock/gmock.h>

namespace tavrine::test {
namespace {

using namespace recorderProtocol;
using namespace std::chrono_literals;

const Start silent{.width = 64, .height = 48, .bitRate = 4'000'000, .frameRate = 60};
const Start sounding{.width = 64,
                     .height = 48,
                     .bitRate = 4'000'000,
                     .frameRate = 60,
                     .channels = 2,
                     .sampleRate = 44'100,
                     .soundBitRate = 128'000};
const Picture picture{
    .time = 5, .number = 9, .buffer = 2, .bytesPerLine = 256, .changed = {{1, 2, 3, 4}, {-5, 6, 7, 8}}};

TEST(RecorderProtocol, everyMessageComesBackAsItWent) {
    EXPECT_EQ(startIn(messageOf(silent)), silent);
    EXPECT_EQ(startIn(messageOf(sounding)), sounding);
    EXPECT_EQ(sessionIn(messageOf(Session{.time = 77})), Session{.time = 77});
    EXPECT_EQ(pictureIn(messageOf(picture)), picture);
    EXPECT_EQ(finishIn(messageOf(Finish{.time = 78})), Finish{.time = 78});
    const std::vector<float> samples{0, 0.5F, -0.5F, 1};
    const auto sound = soundIn(messageOf(3, samples.data(), samples.size()), 2);
    ASSERT_TRUE(sound);
    EXPECT_EQ(sound->samples, samples);
    EXPECT_EQ(sound->time, 3);
    for (const Report &report : {Report{Report::Kind::taken}, Report{Report::Kind::writing},
                                 Report{Report::Kind::finished}, Report{Report::Kind::failed, "Input/output error"},
                                 Report{Report::Kind::diskIsFull, "No space left on device"}})
        EXPECT_EQ(reportIn(messageOf(report)), report);
}

TEST(RecorderProtocol, aPictureWithMorePartsThanAMessageHoldsIsAWholeOne) {
    Picture torn = picture;
    torn.changed.assign(mostParts, {0, 0, 2, 2});
    ASSERT_TRUE(pictureIn(messageOf(torn)));
    EXPECT_FALSE(pictureIn(messageOf(torn))->isWhole);
    torn.changed.push_back({0, 0, 2, 2});
    ASSERT_TRUE(pictureIn(messageOf(torn)));
    EXPECT_TRUE(pictureIn(messageOf(torn))->isWhole);
}

TEST(RecorderProtocol, numbersThatNobodyMeansAreRefused) {
    const auto isTaken = [](Start start) { return startIn(messageOf(start)).has_value(); };
    const auto with = [](auto change) {
        Start start = sounding;
        change(start);
        return start;
    };
    EXPECT_FALSE(isTaken(with([](Start &start) { start.width = 0; })));
    EXPECT_FALSE(isTaken(with([](Start &start) { start.width = 63; })));
    EXPECT_TRUE(isTaken(with([](Start &start) { start.width = mostSide; })));
    EXPECT_FALSE(isTaken(with([](Start &start) { start.width = mostSide + 2; })));
    EXPECT_FALSE(isTaken(with([](Start &start) { start.height = -2; })));
    EXPECT_FALSE(isTaken(with([](Start &start) { start.bitRate = 0; })));
    EXPECT_FALSE(isTaken(with([](Start &start) { start.frameRate = 0; })));
    EXPECT_FALSE(isTaken(with([](Start &start) { start.channels = 3; })));
    EXPECT_FALSE(isTaken(with([](Start &start) { start.channels = 0; })));
    EXPECT_FALSE(isTaken(with([](Start &start) { start.sampleRate = 1; })));
    EXPECT_FALSE(sessionIn(messageOf(Session{.time = -1})));
    EXPECT_FALSE(finishIn(messageOf(Finish{.time = -1})));
    Picture other = picture;
    other.buffer = mostBuffers;
    EXPECT_FALSE(pictureIn(messageOf(other)));
    other = picture;
    other.bytesPerLine = -4;
    EXPECT_FALSE(pictureIn(messageOf(other)));
    const std::vector<float> samples(mostSamples * 2 + 2);
    EXPECT_TRUE(soundIn(messageOf(0, samples.data(), samples.size() - 2), 2));
    EXPECT_FALSE(soundIn(messageOf(0, samples.data(), samples.size()), 2));
    EXPECT_FALSE(soundIn(messageOf(0, samples.data(), 3), 2));
    EXPECT_FALSE(reportIn(messageOf(Report{Report::Kind::failed})));
    EXPECT_FALSE(reportIn(messageOf(Report{Report::Kind::diskIsFull})));
    EXPECT_FALSE(reportIn(messageOf(Report{Report::Kind(6), "words"})));
    EXPECT_FALSE(reportIn(messageOf(Report{Report::Kind::taken, "words"})));
}

TEST(RecorderProtocol, everyCutMessageIsRefused) {
    for (const std::string &message :
         {messageOf(sounding), messageOf(Session{.time = 1}), messageOf(Finish{.time = 1})})
        for (std::size_t length = 0; length < message.size(); ++length) {
            const std::string cut = message.substr(0, length);
            EXPECT_FALSE(startIn(cut) || sessionIn(cut) || finishIn(cut));
        }
    EXPECT_FALSE(sessionIn(messageOf(Session{.time = 1}) + "x"));
    EXPECT_FALSE(pictureIn(messageOf(picture) + "x"));
}

TEST(RecorderProtocol, rubbishIsReadWithinItsBounds) {
    std::mt19937 random(5);
    for (int round = 0; round < 20'000; ++round) {
        std::string message(random() % 200, '\0');
        for (char &byte : message)
            byte = static_cast<char>(random());
        if (message.size() >= 4 && round % 2 == 0)
            message.replace(0, 4, std::string{static_cast<char>(random() % 6), 0, 0, 0});
        if (const auto found = pictureIn(message)) {
            EXPECT_LE(found->changed.size(), mostParts);
            EXPECT_LT(found->buffer, mostBuffers);
        }
        static_cast<void>(kindOf(message));
        static_cast<void>(startIn(message));
        static_cast<void>(soundIn(message, 2));
        static_cast<void>(reportIn(message));
    }
}

class SoundPlacementTest : public testing::Test {
protected:
    void expect(std::chrono::nanoseconds time, std::int64_t count, std::int64_t silence, std::int64_t skipped) {
        const auto place = placement.place(start + time, count);
        ASSERT_TRUE(place);
        EXPECT_EQ(place->silence, silence);
        EXPECT_EQ(place->skipped, skipped);
    }
    static constexpr auto start = 100s;
    SoundPlacement placement{start, 1000};
};

TEST_F(SoundPlacementTest, soundFromBeforeTheStartIsCutOff) {
    expect(-30ms, 100, 0, 30);
    EXPECT_EQ(placement.length(), 70);
}
TEST_F(SoundPlacementTest, aPieceThatIsWhollyBeforeTheStartIsLeftOut) {
    expect(-200ms, 100, 0, 100);
    EXPECT_EQ(placement.length(), 0);
    expect(5ms, 100, 5, 0);
}
TEST_F(SoundPlacementTest, stampsAreTakenForInexactUpToTwentyMilliseconds) {
    expect(0ms, 100, 0, 0);
    expect(120ms, 100, 0, 0);
    expect(180ms, 100, 0, 0);
    expect(321ms, 100, 21, 0);
}
TEST_F(SoundPlacementTest, whatCameTwiceIsHeardOnce) {
    expect(0ms, 100, 0, 0);
    expect(79ms, 100, 0, 21);
    EXPECT_EQ(placement.length(), 179);
}
TEST_F(SoundPlacementTest, aHoleIsSilenceUpToADay) {
    expect(0ms, 100, 0, 0);
    expect(1h, 100, 3'599'900, 0);
    EXPECT_FALSE(placement.place(start + 48h, 100));
    EXPECT_EQ(placement.length(), 3'600'100);
}

} // namespace
} // namespace tavrine::test
