// Microphones, under one contract over the fake and over the real ones, which are a sound server's that nobody hears.
#include "adapters/fake/FakeMicrophoneSessions.h"
#include "adapters/fake/VirtualTime.h"
#include "adapters/linux/PluginLoader.h"
#include "support/Eventually.h"
#include "support/PrivateSound.h"

#include <mutex>

#include <gmock/gmock.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

struct FakeMicrophones {
    MicrophoneSessions &sessions() { return fake; }
    template <class Condition>
    bool eventually(Condition condition) {
        time.advance(10ms);
        fake.speak(10ms);
        return condition();
    }
    void settle() { time.advance(100ms); }
    void unplug(const QString &) { fake.setDevices({}); }
    void endServer() { fake.setDevices({}); }
    [[nodiscard]] QString name() const { return QStringLiteral("built-in"); }

    VirtualTime time;
    FakeMicrophoneSessions fake{time};
};

struct PulseMicrophones {
    PulseMicrophones() { sound.addMicrophone(name()); }
    MicrophoneSessions &sessions() { return *plugin.port(); }
    template <class Condition>
    bool eventually(Condition condition) {
        return test::eventually(condition);
    }
    void settle() { letPass(200ms); }
    void unplug(const QString &microphone) { sound.removeDevice(microphone); }
    void endServer() { sound.end(); }
    [[nodiscard]] QString name() const { return QStringLiteral("microphone"); }

    PrivateSound sound{SoundServerKind::pulseAudio};
    PluginLoader<MicrophoneSessions> plugin{QStringLiteral("microphone_sessions")};
};

template <class Microphones>
class MicrophoneSessionContract : public testing::Test {
protected:
    QList<MicrophoneDevice> devices() {
        std::optional<QList<MicrophoneDevice>> told;
        microphones.sessions().devices([&](const QList<MicrophoneDevice> &devices) {
            EXPECT_FALSE(told);
            told = devices;
        });
        EXPECT_FALSE(told);
        EXPECT_TRUE(microphones.eventually([&] { return told.has_value(); }));
        return told.value_or(QList<MicrophoneDevice>());
    }
    std::unique_ptr<MicrophoneSession> make(const MicrophoneDevice &device) {
        return microphones.sessions().makeSession(device, [this](const AudioSample &sample) {
            const std::lock_guard lock(mutex);
            samples.push_back(sample);
        });
    }
    size_t heard() {
        const std::lock_guard lock(mutex);
        return samples.size();
    }

    std::mutex mutex;
    std::vector<AudioSample> samples;
    Microphones microphones;
};

using All = testing::Types<FakeMicrophones, PulseMicrophones>;
TYPED_TEST_SUITE(MicrophoneSessionContract, All);

TYPED_TEST(MicrophoneSessionContract, theDevicesAreToldInALaterTurnOnceWithTheDefault) {
    const auto devices = this->devices();
    ASSERT_EQ(devices.size(), 1); // and no echo of what is played
    EXPECT_EQ(devices.first().uniqueID, this->microphones.name());
    EXPECT_TRUE(devices.first().isDefault);
    EXPECT_FALSE(devices.first().localizedName.isEmpty());
    this->microphones.unplug(this->microphones.name());
    EXPECT_TRUE(this->devices().isEmpty());
}

TYPED_TEST(MicrophoneSessionContract, withoutAServerThereAreNone) {
    this->microphones.endServer();
    EXPECT_TRUE(this->devices().isEmpty());
}

TYPED_TEST(MicrophoneSessionContract, nothingIsHeardBeforeTheStartAndAfterTheStop) {
    const auto session = this->make(this->devices().first());
    ASSERT_TRUE(session);
    this->microphones.settle();
    EXPECT_EQ(this->heard(), 0U);
    session->startRunning();
    ASSERT_TRUE(this->microphones.eventually([this] { return this->heard() > 0; }));
    session->stopRunning();
    const size_t before = this->heard();
    this->microphones.settle();
    EXPECT_EQ(this->heard(), before);
}

TYPED_TEST(MicrophoneSessionContract, aDroppedSessionHearsNothing) {
    auto session = this->make(this->devices().first());
    session->startRunning();
    ASSERT_TRUE(this->microphones.eventually([this] { return this->heard() > 0; }));
    session.reset();
    const size_t before = this->heard();
    this->microphones.settle();
    EXPECT_EQ(this->heard(), before);
}

TYPED_TEST(MicrophoneSessionContract, samplesAreWholeFramesThatFollowOneAnother) {
    const auto session = this->make(this->devices().first());
    session->startRunning();
    for (int i = 0; i < 5; ++i) // a fake speaks once at a look
        ASSERT_TRUE(this->microphones.eventually([&] { return this->heard() > static_cast<size_t>(i); }));
    session->stopRunning();
    constexpr qsizetype frameBytes = qsizetype{microphoneChannels} * qsizetype{sizeof(float)};
    for (size_t i = 0; i < this->samples.size(); ++i) {
        EXPECT_EQ(this->samples[i].data.size() % frameBytes, 0);
        EXPECT_GT(this->samples[i].data.size(), 0);
        if (i == 0)
            continue;
        EXPECT_GE(this->samples[i].presentationTime, this->samples[i - 1].presentationTime);
    }
}

TYPED_TEST(MicrophoneSessionContract, aDeviceThatIsNotThereGivesNoSession) {
    static_cast<void>(this->devices());
    EXPECT_EQ(this->make({QStringLiteral("other"), QStringLiteral("Other"), false, false}), nullptr);
}

} // namespace
} // namespace tavrine::test
