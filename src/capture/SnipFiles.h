#pragma once

#include "base/Date.h"

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

/// Puts captures into files. A capture of a 4K screen takes a fifth of a second to become a PNG, so that happens on a
/// queue of its own, one piece of work after the other: two captures never meet at one name, and they are done in the
/// order in which they were asked for.
///
/// Main thread; answers come there, in a later turn. The queue outlives it.
class SnipFiles {
public:
    /// A capture that is, or is becoming, a PNG.
    struct Png {
        QImage image;
        std::optional<QByteArray> data; ///< of the queue's thread
    };
    using Prepared = std::shared_ptr<Png>;

    SnipFiles(SerialQueue &queue, Time &time) : m_queue(queue), m_time(time) {}

    /// Begins to make the PNG, after the folder that it may go to.
    [[nodiscard]] Prepared prepare(const QImage &image, const QString &folder);

    /// Writes it under the first free name; the path, or none when it could not be written.
    void saveIn(const QString &folder, const QString &fileName, const Prepared &png,
                std::function<void(std::optional<QString> path)> done);
    /// Writes it to exactly this file.
    void saveAs(const QString &path, const Prepared &png, std::function<void(bool isWritten)> done);

    /// Waits for everything that was asked for. For what cannot be answered later.
    void finish();

private:
    SerialQueue &m_queue;
    Time &m_time;
};

} // namespace tavrine
