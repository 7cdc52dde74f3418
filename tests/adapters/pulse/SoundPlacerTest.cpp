// A microphone's sound on the clock of the pictures, in simulated time.
#include "adapters/pulse/SoundPlacer.h"

#include <cmath>
#include <numbers>
#include <random>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr int rate = microphoneSampleRate;

MediaTime mediaTime(double seconds) {
    return MediaTime(std::llround(seconds * 1e9));
}
qsizetype framesIn(const AudioSample &sample) {
    return sample.data.size() / qsizetype{sizeof(float)} / microphoneChannels;
}
const float *soundIn(const AudioSample &sample) {
    return reinterpret_cast<const float *>(sample.data.constData());
}

/// A sound card whose clock runs beside the machine's. What it hears is a value that only the true time decides.
class Card {
public:
    explicit Card(double partsPerMillion, double heard = 0)
        : m_rate(rate * (1 + partsPerMillion / 1e6)), m_heard(heard) {}

    [[nodiscard]] double time() const { return static_cast<double>(m_frames) / m_rate; }
    std::vector<float> piece(int frames) {
        std::vector<float> sound;
        for (int i = 0; i < frames; ++i, ++m_frames) {
            const auto value =
                m_heard > 0 ? static_cast<float>(std::sin(2 * std::numbers::pi * m_heard * time())) : 0.25F;
            sound.insert(sound.end(), {value, -value});
        }
        return sound;
    }

private:
    double m_rate;
    double m_heard;
    qint64 m_frames = 0;
};

/// Places sound, and remembers what came of it.
class Listener {
public:
    std::optional<AudioSample> place(double time, const std::vector<float> &sound) {
        auto sample = placer.place(mediaTime(time), sound);
        if (sample) {
            if (end)
                largestStep = std::max(
                    largestStep, std::abs(std::chrono::duration<double>(sample->presentationTime - *end).count()));
            end = sample->presentationTime + mediaTime(static_cast<double>(framesIn(*sample)) / rate);
            frames += framesIn(*sample);
        }
        return sample;
    }
    SoundPlacer placer;
    std::optional<MediaTime> end; ///< of the last sample
    double largestStep = 0;       ///< between the end of one and the beginning of the next
    qint64 frames = 0;
};

class DriftingClock : public testing::TestWithParam<double> {};

TEST_P(DriftingClock, staysWithTheMachinesClockForTenMinutes) {
    Card card(GetParam());
    Listener listener;
    std::mt19937 random(3);
    std::normal_distribution<double> jitter(0, 0.003);
    double worst = 0;
    while (card.time() < 600) {
        const double begin = card.time();
        static_cast<void>(listener.place(begin + jitter(random), card.piece(882)));
        if (listener.end)
            worst = std::max(worst, std::abs(std::chrono::duration<double>(*listener.end).count() - card.time()));
    }
    EXPECT_LT(worst, 0.012) << worst;
    EXPECT_LT(listener.largestStep, 1e-6); // never a gap, never an overlap
    RecordProperty("worstMilliseconds", std::to_string(worst * 1000));
}
INSTANTIATE_TEST_SUITE_P(PartsPerMillion, DriftingClock, testing::Values(-200.0, 200.0, 1000.0));

TEST(SoundPlacer, aToneComesOutAsItWasWhateverTheClocks) {
    Card card(200, 3000);
    Listener listener;
    double worst = 0;
    while (card.time() < 30) {
        const double begin = card.time();
        const auto sample = listener.place(begin, card.piece(441));
        if (!sample || begin < 20)
            continue;
        // Three values of a tone that follow one another say whether it is one, whatever its place.
        const float *const sound = soundIn(*sample);
        const double turn = 2 * std::cos(2 * std::numbers::pi * 3000 / rate);
        for (qsizetype i = 2; i < framesIn(*sample); ++i) {
            worst = std::max(worst, std::abs(sound[i * 2] - turn * sound[i * 2 - 2] + sound[i * 2 - 4]));
            EXPECT_NEAR(sound[i * 2], -sound[i * 2 + 1], 1e-6);
        }
    }
    EXPECT_LT(worst, 0.001);
}

TEST(SoundPlacer, whatIsMissingIsLeftOutOfTheTimes) {
    Card card(0);
    Listener listener;
    for (int i = 0; i < 50; ++i)
        static_cast<void>(listener.place(10 + i * 0.02, card.piece(882)));
    const auto after = listener.place(15, card.piece(882));
    ASSERT_TRUE(after);
    EXPECT_EQ(after->presentationTime, 15s);
    const auto next = listener.place(15.02, card.piece(882));
    EXPECT_EQ(next->presentationTime, 15s + mediaTime(static_cast<double>(framesIn(*after)) / rate));
}

TEST(SoundPlacer, aGapIsOneFromAFifthOfASecondOn) {
    for (const bool isGap : {false, true}) {
        Card card(0);
        Listener listener;
        for (int i = 0; i < 50; ++i)
            static_cast<void>(listener.place(10 + i * 0.02, card.piece(882)));
        const auto after = listener.place(11 + (isGap ? 0.201 : 0.199), card.piece(882));
        EXPECT_EQ(after->presentationTime > 11100ms, isGap);
    }
}

TEST(SoundPlacer, whatWasGivenIsNotGivenAgain) {
    Card card(0);
    Listener listener;
    for (int i = 0; i < 50; ++i)
        static_cast<void>(listener.place(10 + i * 0.02, card.piece(882)));
    // The last half second once more, and a half that is new.
    const auto again = listener.place(10.5, card.piece(rate));
    ASSERT_TRUE(again);
    EXPECT_NEAR(static_cast<double>(framesIn(*again)) / rate, 0.5, 0.002);
    EXPECT_LT(listener.largestStep, 1e-6);
    EXPECT_FALSE(listener.place(3, card.piece(882)));
}

TEST(SoundPlacer, aLagThatStaysAndWouldBeSeenIsJumpedOver) {
    Card card(0);
    Listener listener;
    for (int i = 0; i < 500; ++i)
        static_cast<void>(listener.place(i * 0.02 + (i < 50 ? 0 : 0.06), card.piece(882)));
    EXPECT_NEAR(std::chrono::duration<double>(*listener.end).count(), 10.06, 0.012);
    EXPECT_GT(listener.largestStep, 0.02);
}

TEST(SoundPlacer, nothingIsMadeOfNothing) {
    SoundPlacer placer;
    EXPECT_FALSE(placer.place(1s, {}));
    const float half[] = {1.0F};
    EXPECT_FALSE(placer.place(1s, half));
    const std::vector<float> few(6, 0.5F);
    EXPECT_FALSE(placer.place(1s, few)); // three frames are needed by those that follow
}

} // namespace
} // namespace tavrine
