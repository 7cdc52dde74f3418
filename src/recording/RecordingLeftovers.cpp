#include "recording/RecordingLeftovers.h"

#include <QDir>
#include <QFile>
#include <QtEndian>

namespace tavrine {
namespace {

constexpr qint64 bytesOfHead = 8;

/// Of a part of a movie in which no picture can be: its kind, the description of what is to come, and room.
bool isWithoutPictures(QByteArrayView type) {
    return type == "ftyp" || type == "moov" || type == "free";
}

} // namespace

bool mayHoldPictures(const QString &path) {
    if (!QFile::exists(path))
        return false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return true; // who may not read it does not know
    const qint64 size = file.size();
    // The description of a movie that is whole is followed by what it describes. The last part may be cut off.
    for (qint64 at = 0; at < size;) {
        const QByteArray head = file.seek(at) ? file.read(bytesOfHead) : QByteArray();
        if (head.size() < bytesOfHead)
            return at == 0 || file.error() != QFile::NoError;
        const qint64 length = qFromBigEndian<quint32>(head.constData());
        if (!isWithoutPictures(QByteArrayView(head).sliced(4)) || length < bytesOfHead)
            return true;
        at += length;
    }
    return false;
}

QStringList recordingLeftovers(const QString &temporaryFolder) {
    QStringList found;
    const QDir folder(temporaryFolder);
    if (temporaryFolder.isEmpty() || !folder.exists())
        return found;
    for (const QFileInfo &file : folder.entryInfoList(QDir::Files | QDir::NoSymLinks, QDir::Time | QDir::Reversed)) {
        const QString name = file.fileName();
        if (!name.endsWith(QLatin1String(".mp4")))
            continue;
        const bool isRecording = name.startsWith(QLatin1String("tavrine-rec-"));
        if (isRecording && mayHoldPictures(file.filePath()))
            found.append(file.filePath());
        else if (isRecording || name.startsWith(QLatin1String("tavrine-muted-")))
            QFile::remove(file.filePath());
    }
    return found;
}

} // namespace tavrine
