#include "adapters/pulse/SoundPlacer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace tavrine {
namespace {

constexpr auto channels = static_cast<size_t>(microphoneChannels);
constexpr double rate = microphoneSampleRate;

// The interpolation: a windowed sinc over 16 frames, 256 places between two of them and straight lines between those.
// What it adds lies 80 dB below the sound.
constexpr int halfTaps = 8;
constexpr int taps = 2 * halfTaps;
constexpr int places = 256;
constexpr size_t lineValues = taps * channels; // each weight once for each channel
constexpr double windowShape = 8.0;

// The correction: of a lag that is averaged over two seconds a tenth is made up for in a second. At 200 parts in a
// million it settles at 2 ms.
constexpr double averagingSeconds = 2.0;
constexpr double partPerSecond = 0.1;
constexpr double strongestCorrection = 0.002; // a thirtieth of a semitone; nobody hears it
// A lag that people see is 40 ms; no microphone's times jump by a fifth of a second and mean it otherwise.
constexpr double largestLag = 0.030;
constexpr double certainGap = 0.200;

double seconds(MediaTime time) {
    return std::chrono::duration<double>(time).count();
}
MediaTime mediaTime(double seconds) {
    return MediaTime(std::llround(seconds * 1e9));
}

/// The modified Bessel function of order 0, of which the Kaiser window is made.
double bessel(double x) {
    double sum = 1;
    double part = 1;
    for (int i = 1; i < 40; ++i) {
        part *= (x / (2 * i)) * (x / (2 * i));
        sum += part;
    }
    return sum;
}

std::vector<float> interpolationTable() {
    std::vector<float> table;
    table.reserve((places + 1) * lineValues);
    for (int place = 0; place <= places; ++place) {
        double sum = 0;
        const size_t line = table.size();
        for (int tap = 0; tap < taps; ++tap) {
            const double x = tap - (halfTaps - 1) - double{static_cast<double>(place)} / places;
            const double across = x / halfTaps;
            const double window =
                std::abs(across) >= 1 ? 0 : bessel(windowShape * std::sqrt(1 - across * across)) / bessel(windowShape);
            const double sinc = x == 0 ? 1 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
            table.insert(table.end(), channels, static_cast<float>(sinc * window));
            sum += sinc * window;
        }
        for (size_t i = line; i < table.size(); ++i) // silence and hum stay as loud as they are
            table[i] = static_cast<float>(table[i] / sum);
    }
    return table;
}

} // namespace

SoundPlacer::SoundPlacer() : m_table(interpolationTable()) {}

void SoundPlacer::begin(MediaTime time) {
    m_begin = time;
    m_given = 0;
    m_lag = 0;
    m_input.assign(size_t{halfTaps - 1} * channels, 0.0F);
    m_position = halfTaps - 1;
}

/// When the frame that comes after all of the input will be heard in what is given.
MediaTime SoundPlacer::expected() const {
    const double waiting = (static_cast<double>(m_input.size() / channels) - m_position) / (1 + m_correction);
    return *m_begin + mediaTime((static_cast<double>(m_given) + waiting) / rate);
}

std::optional<AudioSample> SoundPlacer::place(MediaTime time, std::span<const float> sound) {
    sound = sound.first(sound.size() / channels * channels);
    if (sound.empty())
        return std::nullopt;
    if (!m_begin)
        begin(time);
    const double lag = seconds(time - expected());
    const double share = std::min(1.0, static_cast<double>(sound.size() / channels) / rate / averagingSeconds);
    m_lag += (lag - m_lag) * share;
    if (lag > certainGap || m_lag > largestLag) {
        begin(time);
    } else if (lag < -certainGap || m_lag < -largestLag) {
        const auto known = static_cast<size_t>(std::llround(std::max(-lag, 0.0) * rate)) * channels;
        m_lag = 0;
        if (known >= sound.size())
            return std::nullopt;
        sound = sound.subspan(known);
    }
    m_correction = std::clamp(-m_lag * partPerSecond, -strongestCorrection, strongestCorrection);
    m_input.insert(m_input.end(), sound.begin(), sound.end());
    AudioSample sample = take();
    return sample.data.isEmpty() ? std::nullopt : std::optional(std::move(sample));
}

AudioSample SoundPlacer::take() {
    AudioSample sample;
    sample.presentationTime = *m_begin + mediaTime(static_cast<double>(m_given) / rate);
    const double end = static_cast<double>(m_input.size() / channels) - halfTaps;
    std::vector<Frame> given;
    for (; m_position < end; m_position += 1 + m_correction, ++m_given)
        given.push_back(interpolated(m_position));
    sample.data =
        QByteArray(reinterpret_cast<const char *>(given.data()), static_cast<qsizetype>(given.size() * sizeof(Frame)));
    const auto done = std::max(0, static_cast<int>(m_position) - (halfTaps - 1));
    m_input.erase(m_input.begin(), m_input.begin() + std::ptrdiff_t{done} * microphoneChannels);
    m_position -= done;
    return sample;
}

SoundPlacer::Frame SoundPlacer::interpolated(double position) const {
    const auto frame = static_cast<size_t>(position);
    const double between = (position - static_cast<double>(frame)) * places;
    const auto place = static_cast<size_t>(between);
    const auto rest = static_cast<float>(between - static_cast<double>(place));
    const float *const line = m_table.data() + place * lineValues;
    const float *const next = line + lineValues;
    const float *const input = m_input.data() + (frame - (halfTaps - 1)) * channels;
    // Sums side by side, which the compiler keeps in one register.
    constexpr size_t lanes = 8;
    std::array<float, lanes> sums{};
    for (size_t i = 0; i < lineValues; i += lanes)
        for (size_t lane = 0; lane < lanes; ++lane)
            sums[lane] += (line[i + lane] + (next[i + lane] - line[i + lane]) * rest) * input[i + lane];
    return {sums[0] + sums[2] + sums[4] + sums[6], sums[1] + sums[3] + sums[5] + sums[7]};
}

} // namespace tavrine
