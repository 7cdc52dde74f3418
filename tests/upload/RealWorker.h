#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

namespace tavrine::test {

/// The record of one run of the real worker.
struct WorkerRun {
    QByteArray bytes;
    QJsonObject record;
    qint64 milliseconds = 0;

    [[nodiscard]] QString text(const char *key) const { return record.value(QLatin1String(key)).toString(); }
    [[nodiscard]] QStringList logs() const {
        QStringList lines;
        const QJsonArray array = record.value(QLatin1String("logs")).toArray();
        for (const QJsonValue &line : array)
            lines.append(line.toString());
        return lines;
    }
};

/// Feeds the real worker with bytes and takes all it prints. A run that is not over in a minute is a failure.
inline WorkerRun runWorkerOn(const QByteArray &input) {
    WorkerRun run;
    QElapsedTimer timer;
    timer.start();
    QProcess process;
    process.start(QStringLiteral(UPLOAD_WORKER), {});
    process.write(input);
    process.closeWriteChannel();
    const bool hasEnded = process.waitForFinished(60'000);
    EXPECT_TRUE(hasEnded) << "the worker did not end";
    run.milliseconds = timer.elapsed();
    run.bytes = process.readAllStandardOutput();
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(run.bytes, &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << run.bytes.left(300).constData();
    run.record = document.object();
    EXPECT_TRUE(run.record.value(QStringLiteral("logs")).isArray()) << run.bytes.left(300).constData();
    return run;
}

inline WorkerRun runWorker(const QString &script, const QString &image = QStringLiteral("aGVsbG8="),
                           const QString &fileName = QStringLiteral("shot.png")) {
    const QJsonObject input{{QStringLiteral("script"), script},
                            {QStringLiteral("imageBase64"), image},
                            {QStringLiteral("fileName"), fileName}};
    return runWorkerOn(QJsonDocument(input).toJson());
}
inline WorkerRun runWorker(const char *script) {
    return runWorker(QString::fromUtf8(script));
}

/// What an expression gives in the worker, as a console shows it.
inline QString shown(const char *expression) {
    const QString script =
        QStringLiteral("function uploadImage() { console.log(%1); return 'u' }").arg(QString::fromUtf8(expression));
    const WorkerRun run = runWorker(script);
    EXPECT_EQ(run.text("errorMessage"), QString()) << expression;
    return run.logs().join(QLatin1Char('|'));
}

/// The server of the folder's `http-server`, as long as the object lives.
class HttpServer {
public:
    explicit HttpServer(const QStringList &arguments = {}) {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(HTTP_SERVER), arguments);
        while (!m_process.canReadLine() && m_process.waitForReadyRead(20'000)) {
        }
        m_port = m_process.readLine().trimmed().toInt();
        EXPECT_GT(m_port, 0);
    }
    ~HttpServer() {
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished(5000))
            m_process.kill();
    }
    HttpServer(const HttpServer &) = delete;
    HttpServer &operator=(const HttpServer &) = delete;

    [[nodiscard]] QString url(const char *path, const char *scheme = "http", const char *host = "127.0.0.1") const {
        return QStringLiteral("%1://%2:%3%4")
            .arg(QLatin1String(scheme), QLatin1String(host), QString::number(m_port), QLatin1String(path));
    }

private:
    QProcess m_process;
    int m_port = 0;
};

} // namespace tavrine::test
