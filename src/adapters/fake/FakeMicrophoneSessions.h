#pragma once

#include "base/Time.h"
#include "ports/MicrophoneSession.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace tavrine {

/// Microphones that a test plugs in and speaks into. All happens in the turns of the test's time, handlers of samples
/// included. At first there is one, which is built in and the default.
class FakeMicrophoneSessions final : public MicrophoneSessions {
public:
    explicit FakeMicrophoneSessions(Time &time) : m_time(time) {}

    void devices(DevicesAnswer answer) override {
        auto work = [this, answer = std::move(answer)] {
            m_told = m_devices;
            answer(m_devices);
        };
        if (m_isSlow)
            m_waiting.push_back(std::move(work));
        else
            m_time.async(std::move(work));
    }
    [[nodiscard]] std::unique_ptr<MicrophoneSession> makeSession(const MicrophoneDevice &device,
                                                                 SampleHandler handler) override {
        const bool isThere = std::any_of(m_told.begin(), m_told.end(), [&](const MicrophoneDevice &each) {
            return each.uniqueID == device.uniqueID;
        });
        if (!isThere || std::exchange(m_isNextRefused, false))
            return nullptr;
        auto state = std::make_shared<State>();
        state->device = device;
        state->handler = std::move(handler);
        m_sessions.push_back(state);
        return std::make_unique<FakeSession>(std::move(state));
    }

    /// What became of one session; stays when its owner has dropped it.
    struct Session {
        MicrophoneDevice device;
        bool isRunning = false;
        bool isDropped = false;
    };
    /// All that were made, the oldest first.
    [[nodiscard]] std::vector<const Session *> sessions() const {
        std::vector<const Session *> all;
        for (const auto &state : m_sessions)
            all.push_back(state.get());
        return all;
    }

    /// None is as without a sound server.
    void setDevices(const QList<MicrophoneDevice> &devices) { m_devices = devices; }
    /// The next session cannot be made.
    void refuseNext() { m_isNextRefused = true; }
    /// Answers wait until `answerAll` from now on.
    void beSlow() { m_isSlow = true; }
    void answerAll() {
        m_isSlow = false;
        for (auto &work : std::exchange(m_waiting, {}))
            m_time.async(std::move(work));
    }

    /// Every session that runs hears this, now.
    void deliver(const AudioSample &sample) {
        for (const auto &state : std::vector(m_sessions))
            if (state->isRunning)
                state->handler(sample);
    }
    /// The sound of `length`, the same value all through, that ends now.
    void speak(std::chrono::milliseconds length, float value = 0.5F) {
        const auto frames = length.count() * microphoneSampleRate / 1000;
        QByteArray data(static_cast<qsizetype>(frames) * microphoneChannels * qsizetype{sizeof(float)}, '\0');
        for (qsizetype i = 0; i < data.size(); i += qsizetype{sizeof value})
            std::copy_n(reinterpret_cast<const char *>(&value), sizeof value, data.data() + i);
        const auto now = std::chrono::duration_cast<MediaTime>(m_time.systemUptime());
        deliver({now - MediaTime(length), data});
    }

private:
    struct State : Session {
        SampleHandler handler;
    };
    class FakeSession final : public MicrophoneSession {
    public:
        explicit FakeSession(std::shared_ptr<State> state) : m_state(std::move(state)) {}
        ~FakeSession() override {
            m_state->isRunning = false;
            m_state->isDropped = true;
        }
        void startRunning() override { m_state->isRunning = true; }
        void stopRunning() override { m_state->isRunning = false; }

    private:
        std::shared_ptr<State> m_state;
    };

    Time &m_time;
    QList<MicrophoneDevice> m_devices{{.uniqueID = QStringLiteral("built-in"),
                                       .localizedName = QStringLiteral("Built-in Microphone"),
                                       .isDefault = true,
                                       .isBuiltIn = true}};
    QList<MicrophoneDevice> m_told = m_devices;
    bool m_isNextRefused = false;
    bool m_isSlow = false;
    std::vector<std::function<void()>> m_waiting;
    std::vector<std::shared_ptr<State>> m_sessions;
};

} // namespace tavrine
