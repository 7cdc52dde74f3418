#pragma once

#include "support/Wait.h"

#include <QProcess>
#include <QString>
#include <QStringList>

namespace tavrine::testing {

/// A foreign program with one line of text that tells what it sees on standard output. It ends with the test.
class ForeignWindow {
public:
    explicit ForeignWindow(const QString &command, const QStringList &arguments = {}) {
        m_process.setReadChannel(QProcess::StandardOutput);
        m_process.start(command, arguments);
    }
    ~ForeignWindow() {
        m_process.kill();
        m_process.waitForFinished(5000);
    }
    ForeignWindow(const ForeignWindow &) = delete;
    ForeignWindow &operator=(const ForeignWindow &) = delete;

    /// Its toolkit alone takes half a second to start on a machine that has nothing else to do.
    [[nodiscard]] bool waitForFocus() {
        return waitUntil(
            [this] {
                read();
                return m_hasFocus;
            },
            std::chrono::seconds(40));
    }
    [[nodiscard]] bool waitForText(const QString &text, std::chrono::milliseconds limit = std::chrono::seconds(20)) {
        return waitUntil([&] { return this->text() == text; }, limit);
    }
    [[nodiscard]] QString text() {
        read();
        return m_text;
    }
    /// How often the key of that name went down in it; only the window of GTK tells.
    [[nodiscard]] int presses(const QString &key) {
        read();
        return int(m_presses.count(key));
    }
    [[nodiscard]] qint64 processId() const { return m_process.processId(); }

private:
    void read() {
        m_process.waitForReadyRead(0);
        while (m_process.canReadLine()) {
            const QString line = QString::fromUtf8(m_process.readLine()).chopped(1);
            m_hasFocus = m_hasFocus || line == QLatin1String("focus");
            if (line.startsWith(QLatin1String("text ")))
                m_text = line.mid(5);
            if (line.startsWith(QLatin1String("press ")))
                m_presses.append(line.mid(6));
        }
    }

    QProcess m_process;
    QString m_text;
    QStringList m_presses;
    bool m_hasFocus = false;
};

/// Puts the text on the clipboard as a foreign program; it stays there until the next.
[[nodiscard]] inline bool copyByXclip(const QString &text) {
    QProcess xclip;
    xclip.setStandardOutputFile(QProcess::nullDevice());
    xclip.setStandardErrorFile(QProcess::nullDevice());
    xclip.start(QStringLiteral("xclip"),
                {QStringLiteral("-selection"), QStringLiteral("clipboard"), QStringLiteral("-i")});
    xclip.write(text.toUtf8());
    xclip.closeWriteChannel();
    if (!xclip.waitForFinished(5000) || xclip.exitCode() != 0)
        return false;
    return waitUntil([&] { // it ends before the server has heard of it
        QProcess reader;
        reader.start(QStringLiteral("xclip"),
                     {QStringLiteral("-selection"), QStringLiteral("clipboard"), QStringLiteral("-o")});
        reader.waitForFinished(5000);
        return QString::fromUtf8(reader.readAllStandardOutput()) == text;
    });
}

} // namespace tavrine::testing
