#pragma once

#include "support/PrivateSound.h"

#include <QByteArray>
#include <QFile>
#include <QProcess>
#include <QString>

#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace tavrine::test {

/// Listens to one of the devices of a `PrivateSound`, on a thread of its own.
class SoundRecording {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr int quiet = 200; ///< of 32768; no sample of silence is louder

    explicit SoundRecording(const QString &device) {
        m_program.setStandardErrorFile(QProcess::nullDevice());
        int ends[2] = {-1, -1};
        if (::pipe2(ends, O_CLOEXEC) != 0)
            std::abort();
        m_reading = ends[0];
        m_program.setStandardOutputFile(QStringLiteral("/proc/self/fd/%1").arg(ends[1]));
        m_program.start(QStringLiteral("parec"),
                        {QStringLiteral("-d"), device + QStringLiteral(".monitor"), QStringLiteral("--raw"),
                         QStringLiteral("--format=s16le"), QStringLiteral("--rate=%1").arg(PrivateSound::rate),
                         QStringLiteral("--channels=1"), QStringLiteral("--latency-msec=5"),
                         // PipeWire carries recordings along to another default device; PulseAudio does not know these.
                         QStringLiteral("--property=node.dont-reconnect=true"),
                         QStringLiteral("--property=node.dont-move=true")});
        m_program.waitForStarted();
        ::close(ends[1]);
        m_thread = std::thread([this] { listen(); });
    }
    ~SoundRecording() {
        m_program.kill();
        m_program.waitForFinished();
        m_thread.join();
        ::close(m_reading);
    }
    SoundRecording(const SoundRecording &) = delete;
    SoundRecording &operator=(const SoundRecording &) = delete;

    /// Whether the last thing that came was sound.
    [[nodiscard]] bool isHeard() const { return m_isHeard; }
    /// When that began or ended.
    [[nodiscard]] Clock::time_point changed() const {
        const std::lock_guard lock(m_mutex);
        return m_changed;
    }
    /// All that came, so far. A device that nobody listened to takes its time, two seconds at most, until it comes
    /// quickly.
    [[nodiscard]] qsizetype samples() const { return m_samples; }
    /// Samples louder than silence, so far.
    [[nodiscard]] qsizetype loudSamples() const { return m_loud; }
    /// From now on.
    void keep() {
        const std::lock_guard lock(m_mutex);
        m_kept.clear();
        m_keeps = true;
    }
    [[nodiscard]] std::vector<std::int16_t> kept() const {
        const std::lock_guard lock(m_mutex);
        return m_kept;
    }

private:
    void listen() {
        std::vector<char> bytes(65'536);
        std::size_t rest = 0;
        for (;;) {
            const ssize_t count = ::read(m_reading, bytes.data() + rest, bytes.size() - rest);
            if (count <= 0) {
                m_isHeard = false;
                return;
            }
            const std::size_t size = rest + static_cast<std::size_t>(count);
            std::vector<std::int16_t> samples(size / 2);
            std::memcpy(samples.data(), bytes.data(), samples.size() * 2);
            rest = size % 2;
            bytes[0] = bytes[size - 1];
            take(samples);
        }
    }
    void take(const std::vector<std::int16_t> &samples) {
        qsizetype loud = 0;
        for (const std::int16_t sample : samples)
            loud += std::abs(sample) > quiet ? 1 : 0;
        m_loud += loud;
        m_samples += static_cast<qsizetype>(samples.size());
        const std::lock_guard lock(m_mutex);
        if (m_isHeard.exchange(loud > 0) != (loud > 0))
            m_changed = Clock::now();
        if (m_keeps)
            m_kept.insert(m_kept.end(), samples.begin(), samples.end());
    }

    QProcess m_program;
    int m_reading = -1;
    mutable std::mutex m_mutex;
    std::atomic<bool> m_isHeard = false;
    std::atomic<qsizetype> m_loud = 0;
    std::atomic<qsizetype> m_samples = 0;
    Clock::time_point m_changed;
    bool m_keeps = false;
    std::vector<std::int16_t> m_kept;
    std::thread m_thread;
};

/// A sound file of a tone, whole waves of it, so that nothing is heard where its end meets its beginning.
inline QByteArray toneWave(double seconds, int hertz = 500) {
    const auto count = static_cast<quint32>(seconds * PrivateSound::rate);
    QByteArray data;
    const auto number = [&data](auto value) { data.append(reinterpret_cast<const char *>(&value), sizeof value); };
    data.append("RIFF");
    number(quint32(36 + count * 2));
    data.append("WAVEfmt ");
    number(quint32(16));
    number(quint16(1));
    number(quint16(1));
    number(quint32(PrivateSound::rate));
    number(quint32(PrivateSound::rate * 2));
    number(quint16(2));
    number(quint16(16));
    data.append("data");
    number(quint32(count * 2));
    for (quint32 i = 0; i < count; ++i)
        number(std::int16_t(12'000 * std::sin(2 * M_PI * hertz * i / PrivateSound::rate)));
    return data;
}

/// Where a tone is broken: the samples that do not follow from the two before, but for the edges of the recording.
inline std::vector<qsizetype> breaksIn(const std::vector<std::int16_t> &samples, int hertz = 500) {
    const double factor = 2 * std::cos(2 * M_PI * hertz / PrivateSound::rate);
    std::vector<qsizetype> breaks;
    for (std::size_t i = 2; i < samples.size(); ++i)
        if (std::abs(samples[i] - factor * samples[i - 1] + samples[i - 2]) > 60)
            breaks.push_back(static_cast<qsizetype>(i));
    return breaks;
}

} // namespace tavrine::test
