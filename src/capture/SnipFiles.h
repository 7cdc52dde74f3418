#pragma once

#include "base/Date.h"
#include "base/WholeFile.h"

#include <QByteArray>
#include <QImage>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

class SerialQueue;
class Time;

/// "snip_" and the local time to the second, as in "snip_2026-01-31_12.00.05.png".
[[nodiscard]] QString snipFileName(Date now);

/// The path of `fileName` in `folder`, or of the first name with "-2", "-3" and so on before its ".png" that is free.
[[nodiscard]] QString freePath(const QString &folder, const QString &fileName);

/// Puts pictures into files. One of a 4K screen takes a fifth of a second to become a PNG, so that happens on a queue
/// of its own, one piece of work after the other: two captures never meet at one name, and they are done in the order
/// in which they were asked for. A file has its name when it is whole.
///
/// A value; main thread. Answers come there, in a later turn. The queue and the time outlive it and all answers.
class SnipFiles {
public:
    /// A picture that is, or is becoming, a PNG.
    struct Png {
        QImage image;
        std::optional<QByteArray> data; ///< of the queue's thread
    };
    using Prepared = std::shared_ptr<Png>;
    /// How a write ended.
    struct Outcome {
        QString path;
        QString failure; ///< why it was not written, in words; empty when it was
        [[nodiscard]] bool isWritten() const { return failure.isEmpty(); }
        bool operator==(const Outcome &) const = default;
    };
    using Answer = std::function<void(const Outcome &)>;

    SnipFiles(SerialQueue &queue, Time &time) : m_queue(&queue), m_time(&time) {}

    /// Begins to make the PNG, after the folder that it may go to; none is made for an empty one.
    [[nodiscard]] Prepared prepare(const QImage &image, const QString &folder) const;

    /// Writes it under the first free name, for the person alone.
    void saveIn(const QString &folder, const QString &fileName, const Prepared &png, Answer done) const;
    /// Writes it to exactly this file.
    void saveAs(const QString &path, const Prepared &png, FileRights rights, Answer done) const;

    /// Waits for everything that was asked for. For what cannot be answered later.
    void finish() const;

private:
    SerialQueue *m_queue;
    Time *m_time;
};

/// What a person is told of a picture that could not be written.
[[nodiscard]] QString saveFailureMessage(const SnipFiles::Outcome &outcome);

} // namespace tavrine
