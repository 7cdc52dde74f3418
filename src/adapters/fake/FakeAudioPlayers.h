#pragma once

#include "base/Time.h"
#include "ports/AudioDevices.h"
#include "ports/AudioPlayer.h"

#include <QList>

#include <optional>
#include <utility>
#include <vector>

namespace tavrine {

/// Sound that is written down instead of heard, with the device that it goes to. A player can be told to be slow, to
/// fail and to end.
class FakeAudioPlayers final : public AudioPlayers, public AudioDevices {
public:
    explicit FakeAudioPlayers(Time &time) : m_time(time) {}

    /// What became of one player; stays when its owner has dropped it.
    struct Sound {
        QString path;
        int loops = 0;
        bool isPrepared = false;
        bool isHeard = false;
        bool isDropped = false;
        std::function<void(const QString &reason)> onEnd = {};
    };

    void expectPlayer() override { ++m_expectations; }
    void makePlayer(const QString &path, Answer answer) override {
        auto work = [this, path, answer = std::move(answer), failure = std::exchange(m_nextFailure, std::nullopt)] {
            if (failure)
                answer(*failure);
            else
                answer(std::make_unique<Player>(*this, path));
        };
        if (m_isSlow)
            m_waiting.push_back(std::move(work));
        else
            m_time.async(std::move(work));
    }
    void setDefaultOutputListener(std::function<void()> handler) override { m_listener = std::move(handler); }

    /// The next file cannot be played.
    void failNext(const Failure &failure) { m_nextFailure = failure; }
    /// Answers wait until `answerAll` from now on.
    void beSlow() { m_isSlow = true; }
    void answerAll() {
        m_isSlow = false;
        for (auto &work : std::exchange(m_waiting, {}))
            m_time.async(std::move(work));
    }
    /// What sounds ends by itself.
    void endSound(const QString &reason) { end(reason, false); }
    /// So much time passes that every sound whose loops have an end comes to it.
    void endLoops() { end({}, true); }
    /// Sound goes elsewhere now. Told only while something sounds, which is silent at once.
    void changeOutput() {
        m_time.async([this] {
            bool wasHeard = false;
            for (const auto &sound : m_sounds)
                wasHeard = std::exchange(sound->isHeard, false) || wasHeard;
            if (wasHeard && m_listener)
                m_listener();
        });
    }

    /// All that were made, the oldest first.
    [[nodiscard]] const std::vector<std::shared_ptr<Sound>> &sounds() const { return m_sounds; }
    /// The paths of what is heard now.
    [[nodiscard]] QStringList heard() const {
        QStringList paths;
        for (const auto &sound : m_sounds)
            if (sound->isHeard)
                paths.append(sound->path);
        return paths;
    }
    [[nodiscard]] int expectations() const { return m_expectations; }
    [[nodiscard]] bool hasListener() const { return m_listener != nullptr; }

private:
    void end(const QString &reason, bool isByLoops) {
        m_time.async([this, reason, isByLoops] {
            for (const auto &sound : m_sounds)
                if (!(isByLoops && sound->loops < 0) && std::exchange(sound->isHeard, false))
                    if (const auto handler = std::exchange(sound->onEnd, nullptr))
                        handler(reason);
        });
    }

    class Player final : public AudioPlayer {
    public:
        Player(FakeAudioPlayers &owner, const QString &path) : m_sound(std::make_shared<Sound>(Sound{path})) {
            owner.m_sounds.push_back(m_sound);
        }
        ~Player() override {
            stop();
            m_sound->isDropped = true;
        }
        void setNumberOfLoops(int loops) override { m_sound->loops = loops; }
        void prepareToPlay() override { m_sound->isPrepared = true; }
        void play() override { m_sound->isHeard = !m_isOver; }
        void pause() override { stop(); }
        void stop() override {
            m_isOver = true;
            m_sound->isHeard = false;
            m_sound->onEnd = nullptr;
        }
        void setOnEnd(std::function<void(const QString &reason)> handler) override {
            m_sound->onEnd = std::move(handler);
        }

    private:
        std::shared_ptr<Sound> m_sound;
        bool m_isOver = false;
    };

    Time &m_time;
    std::function<void()> m_listener;
    std::optional<Failure> m_nextFailure;
    int m_expectations = 0;
    bool m_isSlow = false;
    std::vector<std::function<void()>> m_waiting;
    std::vector<std::shared_ptr<Sound>> m_sounds;
};

} // namespace tavrine
