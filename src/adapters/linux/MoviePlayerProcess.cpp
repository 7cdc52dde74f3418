#include "adapters/linux/MoviePlayerProcess.h"

#include "adapters/linux/HelperProcess.h"
#include "adapters/linux/PlainFile.h"
#include "adapters/linux/PlayerProtocol.h"

#include <QObject>

#include <utility>

namespace tavrine {

using playerProtocol::MovieCommand;
using playerProtocol::Report;

namespace {

/// One movie, from its process's start to its end.
class ProcessMovie final : public QObject, public MoviePlayer {
public:
    ProcessMovie(const QString &program, const QString &path, WId window, std::chrono::milliseconds patience) {
        const PlainFile movie = openPlainFile(path);
        if (!movie.file.isOpen()) {
            QMetaObject::invokeMethod(
                this, [this, reason = movie.reason] { end(reason); }, Qt::QueuedConnection);
            return;
        }
        m_process = std::make_unique<HelperProcess>(
            HelperProcess::Start{.program = program,
                                 .arguments = {QString::number(window)},
                                 .file = movie.file.number(),
                                 .longestSilence = patience},
            HelperProcess::Handlers{
                .line = [this](const std::string &line) { hear(playerProtocol::reportIn(line)); },
                .ended = [this](const QString &reason) { end(QStringLiteral("the player: ") + reason); }});
    }

    void play() override { tell(MovieCommand::play); }
    void pause() override { tell(MovieCommand::pause); }
    void setMuted(bool muted) override { tell(muted ? MovieCommand::mute : MovieCommand::unmute); }
    void setOnFailure(std::function<void(const QString &reason)> handler) override { m_onFailure = std::move(handler); }

private:
    void tell(MovieCommand command) {
        if (m_process)
            m_process->write(playerProtocol::lineOf(command));
    }
    void hear(const std::optional<Report> &report) {
        if (report && (report->kind == Report::Kind::ready || report->kind == Report::Kind::alive))
            return;
        const bool isFailure = report && !report->words.empty();
        end(isFailure ? QString::fromStdString(report->words) : QStringLiteral("the player makes no sense"));
    }
    /// May destroy this.
    void end(const QString &reason) {
        m_process.reset();
        if (const auto handler = std::exchange(m_onFailure, nullptr))
            handler(reason);
    }

    std::unique_ptr<HelperProcess> m_process;
    std::function<void(const QString &reason)> m_onFailure;
};

} // namespace

MoviePlayerProcesses::MoviePlayerProcesses(const QString &programFolder, std::chrono::milliseconds patience)
    : m_program(programFolder + QStringLiteral("/TavrinePlayer")), m_patience(patience) {}

std::unique_ptr<MoviePlayer> MoviePlayerProcesses::makePlayer(const QString &path, WId window) {
    return std::make_unique<ProcessMovie>(m_program, path, window, m_patience);
}

} // namespace tavrine
