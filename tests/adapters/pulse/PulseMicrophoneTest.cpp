// What becomes of a microphone's sound while devices and servers come and go.
#include "adapters/linux/PluginLoader.h"
#include "ports/MicrophoneSession.h"
#include "support/Eventually.h"
#include "support/PrivateSound.h"

#include <QDir>
#include <QElapsedTimer>

#include <cmath>
#include <cstring>
#include <mutex>

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

class PulseMicrophoneTest : public testing::Test {
protected:
    QList<MicrophoneDevice> devices() {
        std::optional<QList<MicrophoneDevice>> told;
        plugin.port()->devices([&](const QList<MicrophoneDevice> &devices) { told = devices; });
        EXPECT_TRUE(eventually([&] { return told.has_value(); }));
        return told.value_or(QList<MicrophoneDevice>());
    }
    std::unique_ptr<MicrophoneSession> listen(const QString &device) {
        for (const auto &each : devices())
            if (each.uniqueID == device) {
                auto session = plugin.port()->makeSession(each, [this](const AudioSample &sample) { take(sample); });
                session->startRunning();
                return session;
            }
        ADD_FAILURE() << "no such microphone";
        return nullptr;
    }
    void take(const AudioSample &sample) {
        const std::lock_guard lock(mutex);
        const auto frames = sample.data.size() / qsizetype{sizeof(float)} / microphoneChannels;
        const auto length = std::chrono::nanoseconds(frames * 1'000'000'000 / microphoneSampleRate);
        if (end && sample.presentationTime < *end - 1us)
            ++overlaps;
        end = sample.presentationTime + length;
        lag = std::chrono::duration<double>(Clock::now().time_since_epoch() - *end).count();
        float value = 0;
        for (qsizetype i = 0; i + qsizetype{sizeof value} <= sample.data.size(); i += qsizetype{sizeof value}) {
            std::memcpy(&value, sample.data.constData() + i, sizeof value);
            const bool isLoud = std::abs(value) > 0.01F;
            loud += isLoud ? 1 : 0;
            quiet = isLoud ? 0 : quiet + 1;
        }
        ++count;
    }
    template <class T>
    T read(const T &value) {
        const std::lock_guard lock(mutex);
        return value;
    }
    /// Sound comes again after now.
    bool isHeardAgain() {
        const int before = read(count);
        return eventually([&] { return read(count) > before + 5; }, 8s);
    }
    bool isSilentFor(std::chrono::milliseconds length) {
        const int before = read(count);
        letPass(length);
        return read(count) == before;
    }

    PrivateSound sound{SoundServerKind::pulseAudio};
    PluginLoader<MicrophoneSessions> plugin{QStringLiteral("microphone_sessions")};
    std::mutex mutex;
    std::optional<MediaTime> end;
    double lag = 0;
    int overlaps = 0;
    int count = 0;
    qint64 loud = 0;
    qint64 quiet = 0; ///< since the last of those
};

TEST_F(PulseMicrophoneTest, soundIsPlacedAtTheTimeAtWhichItIsHeard) {
    sound.addTone(QStringLiteral("tone"));
    const auto session = listen(QStringLiteral("tone"));
    ASSERT_TRUE(eventually([&] { return read(loud) > microphoneSampleRate; }));
    // The server hands a tone of its own over in blocks of two seconds; the end of one is of now.
    EXPECT_TRUE(eventually([&] { return read(lag) < 0.3; }));
    EXPECT_GT(read(lag), -0.05); // never ahead of the present but for the server's own error
    EXPECT_EQ(read(overlaps), 0);
}

TEST_F(PulseMicrophoneTest, aMicrophoneThatIsPulledOutGivesWayToTheDefaultOneAndIsHeardAgainWhenItComesBack) {
    sound.addMicrophone(QStringLiteral("quiet"));
    sound.addTone(QStringLiteral("tone"));
    const auto session = listen(QStringLiteral("tone"));
    ASSERT_TRUE(eventually([&] { return read(loud) > 1000; }));
    sound.setDefaultMicrophone(QStringLiteral("quiet"));
    sound.removeDevice(QStringLiteral("tone"));
    qint64 before = 0;
    EXPECT_TRUE(eventually([&] { // what was on its way of the tone comes first
        before = read(loud);
        return isHeardAgain() && read(loud) == before;
    }));
    sound.addTone(QStringLiteral("tone"));
    EXPECT_TRUE(eventually([&] { return read(loud) > before + 1000; }));
    EXPECT_EQ(read(overlaps), 0);
}

TEST_F(PulseMicrophoneTest, anotherDefaultMicrophoneIsNotListenedToWhileTheChosenOneIsThere) {
    sound.addMicrophone(QStringLiteral("quiet"));
    sound.addTone(QStringLiteral("tone"));
    const auto session = listen(QStringLiteral("tone"));
    ASSERT_TRUE(eventually([&] { return read(loud) > 1000; }));
    sound.setDefaultMicrophone(QStringLiteral("quiet"));
    const qint64 before = read(loud);
    EXPECT_TRUE(eventually([&] { return read(loud) > before + qint64{3} * microphoneSampleRate; }));
    EXPECT_EQ(read(overlaps), 0);
}

TEST_F(PulseMicrophoneTest, aMutedMicrophoneGivesSilenceAndIsNotMissing) {
    sound.addTone(QStringLiteral("tone"));
    const auto session = listen(QStringLiteral("tone"));
    ASSERT_TRUE(eventually([&] { return read(loud) > 1000; }));
    sound.setMuted(QStringLiteral("tone"), true);
    ASSERT_TRUE(eventually([&] { return read(quiet) > microphoneSampleRate / 2; }));
    const qint64 silent = read(loud);
    sound.setMuted(QStringLiteral("tone"), false);
    EXPECT_TRUE(eventually([&] { return read(loud) > silent + 1000; }));
    EXPECT_EQ(read(overlaps), 0);
}

TEST_F(PulseMicrophoneTest, withTheOnlyMicrophoneGoneThereIsSilenceAndNoEcho) {
    sound.addMicrophone(QStringLiteral("quiet"));
    const auto session = listen(QStringLiteral("quiet"));
    ASSERT_TRUE(eventually([&] { return read(count) > 5; }));
    sound.removeDevice(QStringLiteral("quiet"));
    letPass(100ms);
    EXPECT_TRUE(isSilentFor(700ms));
    sound.addMicrophone(QStringLiteral("quiet"));
    EXPECT_TRUE(isHeardAgain());
}

TEST_F(PulseMicrophoneTest, aSuspendedMicrophoneIsMissingFromTheTimes) {
    sound.addMicrophone(QStringLiteral("quiet"));
    const auto session = listen(QStringLiteral("quiet"));
    ASSERT_TRUE(eventually([&] { return read(count) > 5; }));
    sound.setSuspended(QStringLiteral("quiet"), true);
    letPass(100ms);
    EXPECT_TRUE(isSilentFor(700ms));
    sound.setSuspended(QStringLiteral("quiet"), false);
    EXPECT_TRUE(isHeardAgain());
    EXPECT_TRUE(eventually([&] { return std::abs(read(lag)) < 0.3; }));
    EXPECT_EQ(read(overlaps), 0);
}

TEST_F(PulseMicrophoneTest, aServerThatHangsOrDiesIsWaitedFor) {
    sound.addMicrophone(QStringLiteral("quiet"));
    auto session = listen(QStringLiteral("quiet"));
    ASSERT_TRUE(eventually([&] { return read(count) > 5; }));
    sound.hang();
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(devices().isEmpty());
    EXPECT_LT(timer.elapsed(), 1500);
    sound.goOn();
    EXPECT_TRUE(isHeardAgain());
    EXPECT_TRUE(eventually([&] { return std::abs(read(lag)) < 0.3; }));
    sound.end();
    letPass(100ms);
    EXPECT_TRUE(isSilentFor(300ms));
    sound.startAgain();
    sound.addMicrophone(QStringLiteral("quiet"));
    EXPECT_TRUE(isHeardAgain());
    EXPECT_EQ(read(overlaps), 0);
    sound.hang();
    timer.start();
    session.reset();
    EXPECT_LT(timer.elapsed(), 100);
    sound.goOn();
}

TEST_F(PulseMicrophoneTest, nothingIsLeftAfterManyStarts) {
    sound.addMicrophone(QStringLiteral("quiet"));
    const auto descriptors = [] { return QDir(QStringLiteral("/proc/self/fd")).entryList().size(); };
    const auto threads = [] { return QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs).size(); };
    listen(QStringLiteral("quiet")).reset();
    letPass(200ms);
    const auto before = std::pair(descriptors(), threads());
    for (int i = 0; i < 20; ++i) {
        const auto session = listen(QStringLiteral("quiet"));
        session->stopRunning();
        session->startRunning();
    }
    EXPECT_TRUE(eventually([&] { return std::pair(descriptors(), threads()) == before; })) << descriptors();
}

} // namespace
} // namespace tavrine::test
