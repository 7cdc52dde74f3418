#include "clipboard/RecordingMover.h"

#include "base/FileResult.h"
#include "base/Print.h"
#include "base/Time.h"
#include "base/WholeFile.h"
#include "clipboard/SavedRecording.h"

#include <QFile>

#include <cerrno>
#include <cstdio>
#include <utility>

#include <unistd.h>

namespace tavrine {
namespace {

constexpr qint64 bytesAtOnce = 1 << 20;
/// As many as may wait for the disk: whoever gives the copy up waits for them.
constexpr qint64 mostUnsynced = 16 << 20;

/// 0 or errno's number.
int copyWhole(const QString &source, const QString &target, const std::atomic<bool> &isStopped) {
    QFile from(source);
    if (!from.open(QIODevice::ReadOnly))
        return QFile::exists(source) ? EACCES : ENOENT;
    WholeFileWriter to(QFile::encodeName(target).toStdString(),
                       {.isDurable = true, .isStopped = [&isStopped] { return isStopped.load(); }});
    QByteArray piece;
    qint64 unsynced = 0;
    do {
        if (isStopped)
            return ECANCELED;
        piece = from.read(bytesAtOnce);
        if (const int error = to.write({piece.constData(), static_cast<std::size_t>(piece.size())}))
            return error;
        unsynced += piece.size();
        if (unsynced >= mostUnsynced) {
            ::fdatasync(to.descriptor()); // what fails, fails at the end again
            unsynced = 0;
        }
    } while (!piece.isEmpty());
    if (from.error() != QFile::NoError)
        return EIO;
    return to.commit();
}

} // namespace

RecordingMover::~RecordingMover() {
    *m_isGone = true;
}

void RecordingMover::move(const QString &source, const QString &folder, const std::optional<QString> &name, Then then) {
    const QString target = recordingTarget(
        source, folder, name, [this](const QString &path) { return QFile::exists(path) || m_underWay.contains(path); });
    QFile::remove(target);
    const auto moved =
        FileResult::ofCall(std::rename(QFile::encodeName(source).constData(), QFile::encodeName(target).constData()));
    if (moved) {
        then(target);
        return;
    }
    printLine(QStringLiteral("moveItem failed (") + moved.reason() + QStringLiteral("), falling back to copyItem..."));
    copy(source, target, std::move(then));
}

void RecordingMover::copy(const QString &source, const QString &target, Then then) {
    m_underWay.append(target);
    if (!m_queue)
        m_queue = std::make_unique<SerialQueue>(QStringLiteral("com.tavrine.recordings"));
    m_queue->async([this, source, target, then = std::move(then), gone = m_isGone, &time = m_time] {
        const int error = copyWhole(source, target, *gone);
        time.async([this, source, target, then, gone, error] {
            if (!*gone)
                copied(source, target, error, then);
        });
    });
}

void RecordingMover::copied(const QString &source, const QString &target, int error, const Then &then) {
    m_underWay.removeOne(target);
    if (error != 0) {
        printLine(QStringLiteral("Failed to save screen recording file: ") + FileResult::failure(error).reason());
        then(std::nullopt);
        return;
    }
    QFile::remove(source);
    then(target);
}

} // namespace tavrine
