#pragma once

#include "adapters/linux/HelperLines.h"
#include "base/Descriptor.h"

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>

class QSocketNotifier;

namespace tavrine {

/// A program of the house that runs beside this one for as long as this object lives: lines from it, lines to it, and a
/// bound on how long it may say nothing. Main thread, whose end is the end of the program too.
///
/// It is ended by a kill, which no program can put off; what has to be kept it keeps before it says so.
class HelperProcess : public QObject {
    Q_OBJECT

public:
    struct Start {
        QString program; ///< its file
        QStringList arguments;
        int file = -1;                              ///< becomes its descriptor 3; -1 for none
        int result = -1;                            ///< becomes its descriptor 4 beside a `file`; -1 for none
        std::chrono::milliseconds longestSilence{}; ///< until `setLongestSilence` says otherwise
    };
    struct Handlers {
        std::function<void(const std::string &line)> line;
        /// Once, in a turn of its own: the program has ended, has said nothing for too long, or what no program of ours
        /// says, or could not be started. Why, in words.
        std::function<void(const QString &reason)> ended;
    };
    // Either may destroy the process.

    HelperProcess(const Start &start, Handlers handlers);
    ~HelperProcess() override;

    /// Drops the line when the program does not read.
    void write(const std::string &line);
    /// From now on. Zero is no bound.
    void setLongestSilence(std::chrono::milliseconds longest);
    [[nodiscard]] qint64 processIdentifier() const { return m_pid; } ///< 0 for one that has ended

private:
    /// 0 or errno's number.
    int start(const Start &start);
    void read();
    void end(const QString &reason);
    void kill();

    Handlers m_handlers;
    qint64 m_pid = 0;
    Descriptor m_input;
    Descriptor m_output;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QTimer m_silence;
    HelperLines m_lines;
};

} // namespace tavrine
