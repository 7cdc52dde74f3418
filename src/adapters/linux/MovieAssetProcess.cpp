#include "adapters/linux/MovieAssetProcess.h"

#include "adapters/linux/HelperProcess.h"
#include "adapters/linux/MovieProtocol.h"
#include "adapters/linux/PlainFile.h"
#include "base/WholeFile.h"

#include <QFile>
#include <QTransform>

#include <algorithm>
#include <cerrno>
#include <utility>

#include <sys/mman.h>

namespace tavrine {

using movieProtocol::Job;
using movieProtocol::Report;

namespace {

/// The pixels in `file`, upright. They are read and not mapped: who wrote them may have been taken over.
std::optional<QImage> frameIn(int file, const Report &report) {
    QImage image(report.width, report.height, QImage::Format_ARGB32);
    if (image.isNull())
        return std::nullopt;
    qint64 done = 0;
    while (done < image.sizeInBytes()) {
        const ssize_t count = ::pread(file, image.bits() + done, static_cast<size_t>(image.sizeInBytes() - done), done);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return std::nullopt;
        done += count;
    }
    const auto &turn = report.turn;
    const QImage upright = image.transformed(QTransform(turn[0], turn[1], turn[2], turn[3], 0, 0));
    return upright.convertToFormat(QImage::Format_RGB32);
}

} // namespace

/// One question, from its process's start to its end.
class MovieJob final : public QObject {
public:
    using Done = std::function<void(const std::optional<Report> &report)>;

    MovieJob(ProcessMovieAsset &owner, Done done) : m_owner(owner), m_done(std::move(done)) {}

    /// `done` comes in a later turn: with a report of `kind`, or with none.
    static void begin(ProcessMovieAsset &owner, const QString &path, const QStringList &arguments, int result,
                      Report::Kind kind, Done done) {
        auto &job = owner.m_jobs.emplace_back(std::make_unique<MovieJob>(owner, std::move(done)));
        job->start(path, arguments, result, kind);
    }
    static void refuse(ProcessMovieAsset &owner, Done done) {
        owner.m_jobs.emplace_back(std::make_unique<MovieJob>(owner, std::move(done)))->endLater();
    }

private:
    void start(const QString &path, const QStringList &arguments, int result, Report::Kind kind) {
        const PlainFile movie = openPlainFile(path);
        if (!movie.file.isOpen()) {
            endLater();
            return;
        }
        m_process = std::make_unique<HelperProcess>(
            HelperProcess::Start{.program = m_owner.m_program,
                                 .arguments = arguments,
                                 .file = movie.file.number(),
                                 .result = result,
                                 .longestSilence = m_owner.m_patience},
            HelperProcess::Handlers{.line =
                                        [this, kind](const std::string &line) {
                                            const auto report = movieProtocol::reportIn(line);
                                            if (!report || report->kind != Report::Kind::alive)
                                                end(report && report->kind == kind ? report : std::nullopt);
                                        },
                                    .ended = [this](const QString &) { end(std::nullopt); }});
    }
    void endLater() {
        QMetaObject::invokeMethod(
            this, [this] { end(std::nullopt); }, Qt::QueuedConnection);
    }
    /// Destroys this.
    void end(const std::optional<Report> &report) {
        const auto found = std::find_if(m_owner.m_jobs.begin(), m_owner.m_jobs.end(),
                                        [this](const auto &each) { return each.get() == this; });
        const std::unique_ptr<MovieJob> self = std::move(*found);
        m_owner.m_jobs.erase(found);
        m_process.reset();
        m_done(report);
    }

    ProcessMovieAsset &m_owner;
    Done m_done;
    std::unique_ptr<HelperProcess> m_process;
};

ProcessMovieAsset::ProcessMovieAsset(const QString &programFolder, std::chrono::milliseconds patience)
    : m_program(programFolder + QStringLiteral("/TavrineMovies")), m_patience(patience) {}

ProcessMovieAsset::~ProcessMovieAsset() = default;

void ProcessMovieAsset::firstFrame(const QString &path, int longestEdge, FrameAnswer answer) {
    const auto pixels = std::make_shared<Descriptor>(memfd_create("frame", MFD_CLOEXEC));
    const auto done = [pixels, answer = std::move(answer)](const std::optional<Report> &report) {
        answer(report ? frameIn(pixels->number(), *report) : std::nullopt);
    };
    if (!pixels->isOpen())
        MovieJob::refuse(*this, done);
    else
        MovieJob::begin(*this, path,
                        {QLatin1String(movieProtocol::wordOf(Job::frame)),
                         QString::number(std::clamp(longestEdge, 1, movieProtocol::mostPixels))},
                        pixels->number(), Report::Kind::frame, done);
}

void ProcessMovieAsset::facts(const QString &path, FactsAnswer answer) {
    MovieJob::begin(*this, path, {QLatin1String(movieProtocol::wordOf(Job::facts))}, -1, Report::Kind::facts,
                    [answer = std::move(answer)](const std::optional<Report> &report) {
                        if (!report)
                            return answer(std::nullopt);
                        answer(MovieFacts{.naturalSize = {report->width, report->height},
                                          .hasAudioTrack = report->hasAudio,
                                          .duration = std::chrono::milliseconds(report->milliseconds)});
                    });
}

void ProcessMovieAsset::copyVideoTrack(const QString &source, const QString &target, CopyAnswer answer) {
    const auto writer = std::make_shared<WholeFileWriter>(QFile::encodeName(target).toStdString());
    const auto done = [writer, answer = std::move(answer)](const std::optional<Report> &report) {
        answer(report && writer->commit() == 0);
    };
    if (writer->descriptor() < 0)
        MovieJob::refuse(*this, done);
    else
        MovieJob::begin(*this, source, {QLatin1String(movieProtocol::wordOf(Job::copy))}, writer->descriptor(),
                        Report::Kind::copied, done);
}

} // namespace tavrine
