#pragma once

#include "ports/MicrophoneSession.h"

#include <array>
#include <optional>
#include <span>
#include <vector>

namespace tavrine {

/// Puts a microphone's sound on the clock of the pictures. Its own clock runs by some parts in ten thousand beside that
/// one, and after ten minutes that would be seen; so a little more or less of it is taken for a second, never to be
/// heard, as the times say that come with it. A value without a thread.
///
/// 1. What it gives follows on what it gave before, to the sample, until something is missing.
/// 2. What is missing is left out of the times; what was given already is not given again.
/// 3. Times that jitter by some milliseconds are averaged; a difference that stays and could be seen is jumped over.
class SoundPlacer {
public:
    SoundPlacer();

    /// Sound that came now, interleaved, the first of it heard at `time`. What can be given out of it; none when it is
    /// too little yet, or nothing new.
    [[nodiscard]] std::optional<AudioSample> place(MediaTime time, std::span<const float> sound);

    /// More of the microphone's frames than this for one of the pictures' clock, or less.
    [[nodiscard]] double correction() const { return m_correction; }

private:
    using Frame = std::array<float, microphoneChannels>;

    void begin(MediaTime time);
    [[nodiscard]] MediaTime expected() const;
    [[nodiscard]] AudioSample take();
    [[nodiscard]] Frame interpolated(double position) const;

    std::vector<float> m_table; ///< of the interpolation, a line for each place between two frames
    std::vector<float> m_input; ///< frames that are needed still
    double m_position = 0;      ///< of the next frame to give, in frames of the input
    std::optional<MediaTime> m_begin;
    qint64 m_given = 0; ///< frames since then
    double m_lag = 0;   ///< seconds, averaged
    double m_correction = 0;
};

} // namespace tavrine
