#include "recording/SilenceWatch.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace tavrine {

namespace {

bool isLoud(const QByteArray &floats) {
    constexpr auto step = qsizetype{sizeof(float)};
    for (qsizetype place = 0; place + step <= floats.size(); place += step) {
        float value = 0;
        std::memcpy(&value, floats.constData() + place, sizeof value);
        if (std::abs(value) >= SilenceWatch::loudFrom)
            return true;
    }
    return false;
}

} // namespace

void SilenceWatch::hear(const AudioSample &sample, MediaTime now) {
    MediaTime::rep last = m_lastSound.load();
    if (last != none && isLoud(sample.data))
        m_lastSound.compare_exchange_strong(last, now.count()); // not when it has ended meanwhile
}

std::optional<MediaTime> SilenceWatch::silence(MediaTime now) const {
    const MediaTime::rep last = m_lastSound.load();
    return last == none ? std::nullopt : std::optional(std::max(now - MediaTime(last), MediaTime::zero()));
}

} // namespace tavrine
