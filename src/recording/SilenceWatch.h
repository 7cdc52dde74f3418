#pragma once

#include "ports/MicrophoneSession.h"

#include <atomic>
#include <optional>

namespace tavrine {

/// Knows how long a microphone that should be heard has given nothing. `hear` may be called on any thread, the rest on
/// that of the owner.
class SilenceWatch {
public:
    /// A thousandth of full scale, -60 dB: a microphone that is open makes more noise than that in a quiet room; one
    /// that is muted or suspended makes none.
    static constexpr float loudFrom = 0.001F;

    /// From now on there should be sound.
    void begin(MediaTime now) { m_lastSound = now.count(); }
    void end() { m_lastSound = none; }
    void hear(const AudioSample &sample, MediaTime now);

    /// None while nothing is listened to.
    [[nodiscard]] std::optional<MediaTime> silence(MediaTime now) const;

private:
    static constexpr MediaTime::rep none = -1;
    std::atomic<MediaTime::rep> m_lastSound = none;
};

} // namespace tavrine
