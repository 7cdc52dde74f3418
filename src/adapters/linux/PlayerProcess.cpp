#include "adapters/linux/PlayerProcess.h"

#include "adapters/linux/HelperProcess.h"
#include "adapters/linux/PlainFile.h"
#include "adapters/linux/PlayerProtocol.h"

#include <QPointer>

#include <algorithm>
#include <optional>
#include <utility>

namespace tavrine {

using playerProtocol::Report;
using Failure = AudioPlayers::Failure;

namespace {

constexpr auto outputChanged = "the output device has changed";

} // namespace

/// One player, from its process's start to its end.
class ProcessPlayer final : public AudioPlayer {
public:
    ProcessPlayer(PlayerProcesses &owner, AudioPlayers::Answer answer) : m_owner(&owner), m_answer(std::move(answer)) {}

    void start(const QString &program, int sound, std::chrono::milliseconds patience) {
        m_patience = patience;
        m_process = std::make_unique<HelperProcess>(
            HelperProcess::Start{.program = program, .arguments = {}, .file = sound, .longestSilence = patience},
            HelperProcess::Handlers{.line =
                                        [this](const std::string &line) {
                                            if (const auto report = playerProtocol::reportIn(line))
                                                hear(*report);
                                            else
                                                endAsNonsense();
                                        },
                                    .ended =
                                        [this](const QString &reason) {
                                            end(Failure::Cause::circumstances, QStringLiteral("the player: ") + reason);
                                        }});
    }
    void fail(const Failure &failure) { end(failure.cause, failure.reason); }

    void setNumberOfLoops(int loops) override { m_loops = loops; }
    void prepareToPlay() override {} // it was the condition of being made
    void play() override {
        if (!m_process)
            return;
        m_process->write(playerProtocol::playLine(m_loops));
        m_process->setLongestSilence(m_patience);
    }
    void pause() override { stop(); }
    void stop() override { m_process.reset(); }
    void setOnEnd(std::function<void(const QString &reason)> handler) override { m_onEnd = std::move(handler); }

private:
    void hear(const Report &report) {
        switch (report.kind) {
        case Report::Kind::ready:
            becomeReady();
            break;
        case Report::Kind::alive:
            break;
        case Report::Kind::picture:
            endAsNonsense();
            break;
        case Report::Kind::ended:
            end(Failure::Cause::circumstances, {});
            break;
        case Report::Kind::outputChanged:
            loseOutput();
            break;
        case Report::Kind::contentsFailed:
            end(Failure::Cause::contents, QString::fromStdString(report.words));
            break;
        case Report::Kind::outputFailed:
            end(Failure::Cause::circumstances, QString::fromStdString(report.words));
            break;
        }
    }
    void becomeReady() {
        if (!m_answer)
            return;
        m_process->setLongestSilence({}); // it waits for us now
        const auto answer = std::exchange(m_answer, nullptr);
        answer(m_owner->take(this));
    }
    /// The listener is told first, who may well drop this player.
    void loseOutput() {
        const std::weak_ptr<bool> self = m_isAlive;
        if (!m_answer && m_owner && m_owner->m_listener) {
            const auto listener = m_owner->m_listener;
            listener();
        }
        if (self.lock() && m_process)
            end(Failure::Cause::circumstances, QString::fromLatin1(outputChanged));
    }
    void endAsNonsense() { end(Failure::Cause::circumstances, QStringLiteral("the player makes no sense")); }
    /// May destroy this.
    void end(Failure::Cause cause, const QString &reason) {
        m_process.reset();
        if (const auto answer = std::exchange(m_answer, nullptr)) {
            const auto self = m_owner->take(this);
            answer(Failure{cause, reason});
        } else if (const auto handler = std::exchange(m_onEnd, nullptr)) {
            handler(reason);
        }
    }

    QPointer<PlayerProcesses> m_owner;
    AudioPlayers::Answer m_answer; ///< empty once there was one
    std::chrono::milliseconds m_patience{};
    std::unique_ptr<HelperProcess> m_process;
    std::function<void(const QString &reason)> m_onEnd;
    int m_loops = 0;
    std::shared_ptr<bool> m_isAlive = std::make_shared<bool>(true);
};

PlayerProcesses::PlayerProcesses(const QString &programFolder, std::chrono::milliseconds patience)
    : m_program(programFolder + QStringLiteral("/TavrinePlayer")), m_patience(patience) {}

PlayerProcesses::~PlayerProcesses() = default;

/// The player's libraries are two hundred files. From a cold disk they take longer than all else, and no later player
/// waits for them.
void PlayerProcesses::expectPlayer() {
    if (std::exchange(m_hasStarted, true))
        return;
    m_readingAhead = std::make_unique<HelperProcess>(
        HelperProcess::Start{.program = m_program,
                             .arguments = {QString::fromLatin1(playerProtocol::readAheadArgument)},
                             .longestSilence = m_patience},
        HelperProcess::Handlers{.line = [](const std::string &) {},
                                .ended = [this](const QString &) { m_readingAhead.reset(); }});
}

void PlayerProcesses::makePlayer(const QString &path, Answer answer) {
    m_hasStarted = true;
    auto &player = m_beginning.emplace_back(std::make_unique<ProcessPlayer>(*this, std::move(answer)));
    const PlainFile sound = openPlainFile(path);
    if (sound.file.isOpen()) {
        player->start(m_program, sound.file.number(), m_patience);
        return;
    }
    const Failure failure{sound.isThere ? Failure::Cause::contents : Failure::Cause::circumstances, sound.reason};
    QMetaObject::invokeMethod(
        this, [player = player.get(), failure] { player->fail(failure); }, Qt::QueuedConnection);
}

std::unique_ptr<ProcessPlayer> PlayerProcesses::take(ProcessPlayer *player) {
    const auto found = std::find_if(m_beginning.begin(), m_beginning.end(),
                                    [player](const auto &each) { return each.get() == player; });
    auto taken = std::move(*found);
    m_beginning.erase(found);
    return taken;
}

} // namespace tavrine
