#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace tavrine {

/// Puts pieces of sound where their time stamps say, from the start of the movie on. A value; knows no samples.
class SoundPlacement {
public:
    /// Stamps that differ by less from what was counted are taken for inexact: a quarter of what a person notices
    /// between lips and words.
    static constexpr std::chrono::milliseconds tolerance{20};
    static constexpr std::chrono::hours mostSilence{24};

    SoundPlacement(std::chrono::nanoseconds start, int sampleRate) : m_start(start), m_sampleRate(sampleRate) {}

    struct Place {
        std::int64_t silence = 0; ///< samples to be put before it
        std::int64_t skipped = 0; ///< of its own samples, from the first on, that are left out
    };
    /// None for sound from a time that cannot be meant.
    [[nodiscard]] std::optional<Place> place(std::chrono::nanoseconds time, std::int64_t count) {
        using Seconds = std::chrono::duration<double>;
        const auto samplesOf = [this](std::chrono::nanoseconds length) {
            return static_cast<std::int64_t>(std::chrono::duration_cast<Seconds>(length).count() * m_sampleRate +
                                             (length.count() < 0 ? -0.5 : 0.5));
        };
        const std::int64_t lag = samplesOf(time - m_start) - m_length;
        if (lag > samplesOf(mostSilence))
            return std::nullopt;
        Place place;
        const bool isExact = m_length == 0 || lag > samplesOf(tolerance) || lag < -samplesOf(tolerance);
        if (isExact && lag > 0)
            place.silence = lag;
        if (isExact && lag < 0)
            place.skipped = -lag < count ? -lag : count;
        m_length += place.silence + count - place.skipped;
        return place;
    }

    [[nodiscard]] std::int64_t length() const { return m_length; } ///< samples so far

private:
    std::chrono::nanoseconds m_start;
    int m_sampleRate;
    std::int64_t m_length = 0;
};

} // namespace tavrine
