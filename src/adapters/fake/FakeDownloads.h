#pragma once

#include "base/Time.h"
#include "ports/Downloads.h"

#include <QFile>
#include <QList>
#include <QPointer>

#include <optional>
#include <utility>

namespace tavrine {

/// Downloads that arrive when a test says so. What arrives is written to its destination for real.
class FakeDownloads final : public Downloads {
public:
    explicit FakeDownloads(Time &time) : m_time(time) {}

    using Downloads::downloadTask;
    [[nodiscard]] std::unique_ptr<DownloadTask> downloadTask(const QUrl &url, const QString &destination,
                                                             DownloadTask::Handlers handlers,
                                                             const DownloadBounds &bounds) override {
        return std::make_unique<Task>(*this, url, destination, std::move(handlers), bounds);
    }

    /// Those that were begun, the oldest first.
    [[nodiscard]] const QList<QUrl> &begun() const { return m_begun; }
    /// Whether one is under way.
    [[nodiscard]] bool isReceiving() const { return m_task != nullptr; }

    void progress(qint64 written, qint64 expected) {
        later([written, expected](Task &task) {
            if (const auto handler = task.handlers.didWriteData)
                handler(written, expected);
        });
    }
    void fail(const QString &error) {
        later([error](Task &task) { task.complete(error); });
    }
    void finish(const QByteArray &contents) {
        later([this, contents](Task &task) { task.finish(contents, std::exchange(m_nextMoveError, 0)); });
    }
    /// The next file that arrives cannot be given its name, for this of errno's numbers.
    void failNextMove(int error) { m_nextMoveError = error; }

private:
    class File final : public DownloadedFile {
    public:
        File(QString destination, QByteArray contents, int error)
            : m_destination(std::move(destination)), m_contents(std::move(contents)), m_error(error) {}
        [[nodiscard]] FileResult moveToDestination() override {
            if (m_error != 0)
                return FileResult::failure(m_error);
            QFile file(m_destination);
            if (!file.open(QIODevice::WriteOnly))
                return FileResult::failure(ENOENT);
            file.write(m_contents);
            return {};
        }

    private:
        QString m_destination;
        QByteArray m_contents;
        int m_error;
    };

    class Task final : public QObject, public DownloadTask {
    public:
        Task(FakeDownloads &owner, QUrl url, QString destination, Handlers given, const DownloadBounds &bounds)
            : handlers(std::move(given)), m_owner(owner), m_url(std::move(url)), m_destination(std::move(destination)),
              m_bounds(bounds) {}
        [[nodiscard]] const QUrl &originalRequestUrl() const override { return m_url; }
        void resume() override {
            m_owner.m_task = this;
            m_owner.m_begun.append(m_url);
            const QString scheme = m_url.scheme();
            const bool isOther = m_bounds.schemes == DownloadBounds::Schemes::all &&
                                 (scheme == QLatin1String("http") || m_url.isLocalFile());
            if (scheme != QLatin1String("https") && !isOther)
                m_owner.fail(QStringLiteral("unsupported URL"));
        }
        void finish(const QByteArray &contents, int moveError) {
            if (contents.size() > m_bounds.mostBytes)
                return complete(QStringLiteral("the file is too large"));
            const QPointer<Task> self(this);
            File file(m_destination, contents, moveError);
            if (const auto handler = handlers.didFinishDownloading)
                handler(file);
            if (self)
                complete({});
        }
        void complete(const QString &error) {
            m_owner.m_task = nullptr;
            if (const auto handler = std::exchange(handlers, {}).didComplete)
                handler(error);
        }

        Handlers handlers;

    private:
        FakeDownloads &m_owner;
        QUrl m_url;
        QString m_destination;
        DownloadBounds m_bounds;
    };

    void later(std::function<void(Task &task)> work) {
        m_time.async([this, work = std::move(work)] {
            if (m_task)
                work(*m_task);
        });
    }

    Time &m_time;
    QPointer<Task> m_task;
    QList<QUrl> m_begun;
    int m_nextMoveError = 0;
};

} // namespace tavrine
