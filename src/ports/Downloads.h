#pragma once

#include "base/FileResult.h"

#include <QString>
#include <QUrl>

#include <functional>
#include <memory>
#include <utility>

namespace tavrine {

/// What has arrived, in a file that has no name yet.
class DownloadedFile {
public:
    virtual ~DownloadedFile() = default;
    /// Gives it the name that it was meant for, in one step; a file that stood there is replaced. Once.
    [[nodiscard]] virtual FileResult moveToDestination() = 0;
};

/// One download. Main thread; its owner's. Dropping it is cancelling it: nothing is called any more, and nothing of
/// what had arrived remains.
class DownloadTask {
public:
    /// Called in a later turn. Each may destroy the task.
    struct Handlers {
        /// Bytes so far, and in all; 0 while the server does not say. A few times a second at most.
        std::function<void(qint64 written, qint64 expected)> didWriteData;
        /// All of it is there. The file goes with the end of the call.
        std::function<void(DownloadedFile &file)> didFinishDownloading;
        /// The last call: after that one with an empty text, or instead of it with the reason in words.
        std::function<void(const QString &error)> didComplete;
    };

    virtual ~DownloadTask() = default;
    [[nodiscard]] virtual const QUrl &originalRequestUrl() const = 0;
    /// Begins. Once.
    virtual void resume() = 0;
};

/// What a download may be at most.
struct DownloadBounds {
    enum class Schemes {
        all,
        secure, ///< https alone, also where a redirect leads
    };
    Schemes schemes = Schemes::all;
    qint64 mostBytes = qint64(512) << 20; ///< more is an error; never more than this
};

/// Fetches files. Lives on the main thread, as long as the process; what is fetched is received elsewhere.
///
/// Addresses are of the schemes http, https and file; any other is an error, as is an answer of the server that says
/// that there is no such file, a server from which nothing comes for half a minute, and more than `bounds` let in. A
/// redirect leads to http and https alone.
class Downloads {
public:
    virtual ~Downloads() = default;

    /// `destination` is the file that is to be; what arrives is kept in its folder, without a name where the file
    /// system knows such files.
    [[nodiscard]] virtual std::unique_ptr<DownloadTask> downloadTask(const QUrl &url, const QString &destination,
                                                                     DownloadTask::Handlers handlers,
                                                                     const DownloadBounds &bounds) = 0;
    [[nodiscard]] std::unique_ptr<DownloadTask> downloadTask(const QUrl &url, const QString &destination,
                                                             DownloadTask::Handlers handlers) {
        return downloadTask(url, destination, std::move(handlers), DownloadBounds());
    }
};

} // namespace tavrine
