#include "adapters/linux/MoviePlayerProcess.h"

#include "adapters/linux/HelperProcess.h"
#include "adapters/linux/PlainFile.h"
#include "adapters/linux/PlayerProtocol.h"
#include "base/ErrorText.h"

#include <QObject>
#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>

namespace tavrine {

using playerProtocol::MovieCommand;
using playerProtocol::PictureSize;
using playerProtocol::Report;

namespace {

/// For one picture; as large as it is for good. Not open, with errno, when there is none.
Descriptor pictureMemory() {
    Descriptor memory(::memfd_create("movie-picture", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!memory.isOpen() || ::ftruncate(memory.number(), playerProtocol::pictureBytes) != 0 ||
        ::fcntl(memory.number(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) != 0)
        return {};
    return memory;
}

/// A copy of what is in the memory; null when it cannot be read.
QImage pictureIn(int memory, PictureSize size) {
    const auto row = static_cast<std::size_t>(playerProtocol::pixelsInRow(size.width));
    std::vector<QRgb> pixels(row * static_cast<std::size_t>(size.height));
    const std::size_t bytes = pixels.size() * sizeof(QRgb);
    if (::pread(memory, pixels.data(), bytes, 0) != static_cast<ssize_t>(bytes))
        return {};
    QImage picture(size.width, size.height, QImage::Format_RGB32);
    for (int y = 0; y < picture.height(); ++y) {
        const QRgb *const from = pixels.data() + row * static_cast<std::size_t>(y);
        auto *const to = reinterpret_cast<QRgb *>(picture.scanLine(y));
        for (int x = 0; x < picture.width(); ++x)
            to[x] = from[x] | 0xff000000U; // what else would be there is for nobody to mix colours with
    }
    return picture;
}

/// One movie, from its process's start to its end.
class ProcessMovie final : public QObject, public MoviePlayer {
public:
    ProcessMovie(const QString &program, const QString &path, std::chrono::milliseconds patience) {
        const PlainFile movie = openPlainFile(path);
        if (!movie.file.isOpen()) {
            endLater(movie.reason);
            return;
        }
        m_memory = pictureMemory();
        if (!m_memory.isOpen()) {
            endLater(QString::fromLocal8Bit(errorText(errno)));
            return;
        }
        m_rest.setSingleShot(true);
        connect(&m_rest, &QTimer::timeout, this, [this] {
            m_isExpected = true;
            tell(MovieCommand::next);
        });
        m_process = std::make_unique<HelperProcess>(
            HelperProcess::Start{.program = program,
                                 .arguments = {QString::fromLatin1(playerProtocol::movieArgument)},
                                 .file = movie.file.number(),
                                 .result = m_memory.number(),
                                 .longestSilence = patience},
            HelperProcess::Handlers{
                .line = [this](const std::string &line) { hear(playerProtocol::reportIn(line)); },
                .ended = [this](const QString &reason) { end(QStringLiteral("the player: ") + reason); }});
    }

    void play() override { tell(MovieCommand::play); }
    void pause() override { tell(MovieCommand::pause); }
    void setMuted(bool muted) override { tell(muted ? MovieCommand::mute : MovieCommand::unmute); }
    void setPictureSize(QSize pixels) override {
        constexpr QSize most(playerProtocol::longestEdge, playerProtocol::longestEdge);
        if (pixels.width() > most.width() || pixels.height() > most.height())
            pixels.scale(most, Qt::KeepAspectRatio);
        const PictureSize size{std::max(1, pixels.width()), std::max(1, pixels.height())};
        if (!m_process || m_size == size)
            return;
        if (std::exchange(m_size, size) == PictureSize())
            m_isExpected = true;
        m_process->write(playerProtocol::sizeLine(size));
    }
    void setOnPicture(std::function<void(const QImage &picture)> handler) override { m_onPicture = std::move(handler); }
    void setOnFailure(std::function<void(const QString &reason)> handler) override { m_onFailure = std::move(handler); }

private:
    void tell(MovieCommand command) {
        if (m_process)
            m_process->write(playerProtocol::lineOf(command));
    }
    void hear(const std::optional<Report> &report) {
        if (report && (report->kind == Report::Kind::ready || report->kind == Report::Kind::alive))
            return;
        if (report && report->kind == Report::Kind::picture && m_isExpected)
            return take(report->size);
        const bool isFailure = report && !report->words.empty();
        end(isFailure ? QString::fromStdString(report->words) : QStringLiteral("the player makes no sense"));
    }
    /// May destroy this.
    void take(PictureSize size) {
        const QImage picture = pictureIn(m_memory.number(), size);
        if (picture.isNull())
            return end(QStringLiteral("its picture cannot be read"));
        m_isExpected = false;
        m_rest.start(MoviePlayerProcesses::betweenPictures);
        if (const auto handler = m_onPicture)
            handler(picture);
    }
    void endLater(const QString &reason) {
        QMetaObject::invokeMethod(
            this, [this, reason] { end(reason); }, Qt::QueuedConnection);
    }
    /// May destroy this.
    void end(const QString &reason) {
        m_rest.stop();
        m_process.reset();
        if (const auto handler = std::exchange(m_onFailure, nullptr))
            handler(reason);
    }

    Descriptor m_memory;
    std::unique_ptr<HelperProcess> m_process;
    PictureSize m_size;
    bool m_isExpected = false; ///< a picture: the memory is the player's
    QTimer m_rest;
    std::function<void(const QImage &picture)> m_onPicture;
    std::function<void(const QString &reason)> m_onFailure;
};

} // namespace

MoviePlayerProcesses::MoviePlayerProcesses(const QString &programFolder, std::chrono::milliseconds patience)
    : m_program(programFolder + QStringLiteral("/TavrinePlayer")), m_patience(patience) {}

std::unique_ptr<MoviePlayer> MoviePlayerProcesses::makePlayer(const QString &path) {
    return std::make_unique<ProcessMovie>(m_program, path, m_patience);
}

} // namespace tavrine
