#pragma once

#include "ports/AudioDevices.h"
#include "ports/AudioPlayer.h"

#include <QObject>

#include <chrono>
#include <list>

namespace tavrine {

class HelperProcess;
class ProcessPlayer;

/// Sounds in TavrinePlayer, a process for each: what crashes or hangs there costs the music and no more, and at rest
/// there is none. A pause ends it, for nobody goes on with a paused player. Main thread.
class PlayerProcesses final : public QObject, public AudioPlayers, public AudioDevices {
    Q_OBJECT

public:
    /// A player that takes longer to begin, or plays and gives no sign of life for so long, hangs. Its libraries may
    /// come from a slow disk.
    static constexpr std::chrono::seconds longestSilence{10};

    /// `programFolder` is where this program's own file stands.
    explicit PlayerProcesses(const QString &programFolder, std::chrono::milliseconds patience = longestSilence);
    ~PlayerProcesses() override;

    void expectPlayer() override;
    void makePlayer(const QString &path, Answer answer) override;
    void setDefaultOutputListener(std::function<void()> handler) override { m_listener = std::move(handler); }

private:
    friend class ProcessPlayer;

    [[nodiscard]] std::unique_ptr<ProcessPlayer> take(ProcessPlayer *player);

    QString m_program;
    std::chrono::milliseconds m_patience;
    std::function<void()> m_listener;
    std::list<std::unique_ptr<ProcessPlayer>> m_beginning;
    bool m_hasStarted = false; ///< one of the programs, so that its libraries are in memory
    std::unique_ptr<HelperProcess> m_readingAhead;
};

} // namespace tavrine
