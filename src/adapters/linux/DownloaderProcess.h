#pragma once

#include "ports/Downloads.h"

#include <chrono>

namespace tavrine {

/// Downloads by TavrineDownloader, a process for each: what comes from the network is received there, and its libraries
/// go with it. Main thread.
class DownloaderProcesses final : public Downloads {
public:
    /// A server from which nothing comes for so long is given up.
    static constexpr std::chrono::seconds longestSilence{30};

    /// `programFolder` is where this program's own file stands.
    explicit DownloaderProcesses(const QString &programFolder, std::chrono::seconds patience = longestSilence)
        : m_program(programFolder + QStringLiteral("/TavrineDownloader")), m_patience(patience) {}

    using Downloads::downloadTask;
    [[nodiscard]] std::unique_ptr<DownloadTask> downloadTask(const QUrl &url, const QString &destination,
                                                             DownloadTask::Handlers handlers,
                                                             const DownloadBounds &bounds) override;

private:
    QString m_program;
    std::chrono::seconds m_patience;
};

} // namespace tavrine
