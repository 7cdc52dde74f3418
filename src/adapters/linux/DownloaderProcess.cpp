#include "adapters/linux/DownloaderProcess.h"

#include "adapters/linux/DownloadProtocol.h"
#include "adapters/linux/HelperProcess.h"
#include "base/WholeFile.h"

#include <QFile>
#include <QObject>
#include <QPointer>

#include <chrono>
#include <cstring>
#include <utility>

namespace tavrine {
namespace {

using downloadProtocol::Report;

/// How much longer than the server the downloader may be silent, which says how far it is each second.
constexpr std::chrono::seconds grace{30};

bool isFetchable(const QUrl &url, DownloadBounds::Schemes schemes) {
    const QString scheme = url.scheme();
    if (!url.isValid() || scheme == QLatin1String("https"))
        return url.isValid();
    return schemes == DownloadBounds::Schemes::all && (scheme == QLatin1String("http") || url.isLocalFile());
}

class ArrivedFile final : public DownloadedFile {
public:
    explicit ArrivedFile(WholeFileWriter &writer) : m_writer(writer) {}
    [[nodiscard]] FileResult moveToDestination() override {
        const int error = m_writer.commit();
        return error == 0 ? FileResult() : FileResult::failure(error);
    }

private:
    WholeFileWriter &m_writer;
};

class ProcessDownload final : public QObject, public DownloadTask {
public:
    ProcessDownload(QString program, std::chrono::seconds patience, QUrl url, QString destination, Handlers handlers,
                    const DownloadBounds &bounds)
        : m_program(std::move(program)), m_patience(patience), m_url(std::move(url)),
          m_destination(std::move(destination)), m_handlers(std::move(handlers)), m_bounds(bounds) {}

    [[nodiscard]] const QUrl &originalRequestUrl() const override { return m_url; }

    void resume() override {
        if (!isFetchable(m_url, m_bounds.schemes)) {
            completeLater(QStringLiteral("unsupported URL"));
            return;
        }
        m_writer = std::make_unique<WholeFileWriter>(QFile::encodeName(m_destination).toStdString());
        if (m_writer->descriptor() < 0) {
            completeLater(FileResult::failure(m_writer->commit()).reason());
            return;
        }
        m_process = std::make_unique<HelperProcess>(
            HelperProcess::Start{.program = m_program,
                                 .arguments = {QString::fromLatin1(m_url.toEncoded(QUrl::RemoveFragment)),
                                               QString::number(m_patience.count()), QString::number(m_bounds.mostBytes),
                                               QLatin1String(m_bounds.schemes == DownloadBounds::Schemes::secure
                                                                 ? downloadProtocol::secureSchemes
                                                                 : downloadProtocol::allSchemes)},
                                 .file = m_writer->descriptor(),
                                 .longestSilence = m_patience + grace},
            HelperProcess::Handlers{
                .line = [this](const std::string &line) { hear(downloadProtocol::reportIn(line)); },
                .ended = [this](const QString &reason) { complete(QStringLiteral("the downloader: ") + reason); }});
    }

private:
    void hear(const std::optional<Report> &report) {
        if (!report) {
            complete(QStringLiteral("the downloader makes no sense"));
        } else if (report->kind == Report::Kind::failed) {
            complete(QString::fromStdString(report->words));
        } else if (report->kind == Report::Kind::done) {
            finish();
        } else if (const auto handler = m_handlers.didWriteData) {
            handler(report->written, report->expected);
        }
    }
    void finish() {
        m_process.reset();
        const QPointer<QObject> self(this);
        ArrivedFile file(*m_writer);
        if (const auto handler = m_handlers.didFinishDownloading)
            handler(file);
        if (self)
            complete({});
    }
    void completeLater(const QString &error) {
        QMetaObject::invokeMethod(
            this, [this, error] { complete(error); }, Qt::QueuedConnection);
    }
    void complete(const QString &error) {
        m_process.reset();
        m_writer.reset();
        if (const auto handler = std::exchange(m_handlers, {}).didComplete)
            handler(error);
    }

    QString m_program;
    std::chrono::seconds m_patience;
    QUrl m_url;
    QString m_destination;
    Handlers m_handlers;
    DownloadBounds m_bounds;
    std::unique_ptr<WholeFileWriter> m_writer;
    std::unique_ptr<HelperProcess> m_process;
};

} // namespace

std::unique_ptr<DownloadTask> DownloaderProcesses::downloadTask(const QUrl &url, const QString &destination,
                                                                DownloadTask::Handlers handlers,
                                                                const DownloadBounds &bounds) {
    return std::make_unique<ProcessDownload>(m_program, m_patience, url, destination, std::move(handlers), bounds);
}

} // namespace tavrine
