#include "recording/RecordingLeftovers.h"

#include <QDir>
#include <QFile>

namespace tavrine {

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
        if (isRecording && file.size() > 0)
            found.append(file.filePath());
        else if (isRecording || name.startsWith(QLatin1String("tavrine-muted-")))
            QFile::remove(file.filePath());
    }
    return found;
}

} // namespace tavrine
