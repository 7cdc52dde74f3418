#include "capture/SnipDragFile.h"

#include "base/PrivateFiles.h"
#include "base/Uuid.h"

#include <QDateTime>
#include <QDir>

namespace tavrine {

void removeOldDrags(const QString &temporaryFolder, Date now) {
    const auto drags = QDir(temporaryFolder)
                           .entryInfoList({QLatin1String(dragFolderPrefix) + QLatin1Char('*')},
                                          QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks);
    for (const QFileInfo &drag : drags) {
        const auto age = now.secondsSince1970 - static_cast<double>(drag.lastModified().toMSecsSinceEpoch()) / 1000.0;
        if (age > dragFileLife.count())
            QDir(drag.absoluteFilePath()).removeRecursively();
    }
}

QString freshDragFile(const QString &temporaryFolder, const QString &fileName) {
    const QString folder = temporaryFolder + QLatin1Char('/') + QLatin1String(dragFolderPrefix) + freshUuidString();
    return makePrivateFolder(folder) ? folder + QLatin1Char('/') + fileName : QString();
}

} // namespace tavrine
