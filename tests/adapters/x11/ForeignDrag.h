#pragma once

#include "desktop/Desktop.h"
#include "support/Wait.h"

#include <QProcess>
#include <QStringList>

namespace tavrine::testing {

/// A foreign program in whose window a drag begins or ends. It ends with the test.
class ForeignDrag {
public:
    ForeignDrag(const QString &command, const QStringList &arguments) {
        m_process.setReadChannel(QProcess::StandardOutput);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(command, arguments);
    }
    ~ForeignDrag() {
        m_process.kill();
        m_process.waitForFinished(5000);
    }
    ForeignDrag(const ForeignDrag &) = delete;
    ForeignDrag &operator=(const ForeignDrag &) = delete;

    /// True when it has said a line that begins so.
    [[nodiscard]] bool says(const QString &beginning) {
        return waitUntil([&] { return hasSaid(beginning); });
    }
    [[nodiscard]] bool hasSaid(const QString &beginning) {
        m_process.waitForReadyRead(0);
        while (m_process.canReadLine())
            m_said.append(QString::fromUtf8(m_process.readLine()).chopped(1));
        return std::any_of(m_said.begin(), m_said.end(),
                           [&](const QString &line) { return line.startsWith(beginning); });
    }
    [[nodiscard]] QStringList said() const { return m_said; }
    void forget() { m_said.clear(); }
    [[nodiscard]] qint64 processId() const { return m_process.processId(); }

private:
    QProcess m_process;
    QStringList m_said;
};

/// Moves the pointer as a hand does, while this program's own loop goes on.
inline void movePointer(Desktop &desktop, QPoint from, QPoint to, int steps = 12) {
    for (int i = 1; i <= steps; ++i) {
        const QPoint place = from + (to - from) * i / steps;
        desktop.keyboard.movePointer(place.x(), place.y());
        static_cast<void>(waitUntil([] { return false; }, std::chrono::milliseconds(8)));
    }
}

} // namespace tavrine::testing
