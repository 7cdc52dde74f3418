#include "capture/CaptureLeftovers.h"

#include "base/Time.h"
#include "capture/SnipDragFile.h"

#include <QDir>
#include <QFile>

namespace tavrine {
namespace {

/// Of captures, of captures that are searched for codes, and of files that have no name yet. By hand: the library for
/// patterns would cost every launch half a megabyte.
bool isLeftover(const QString &name) {
    const bool isCapture =
        name.startsWith(QLatin1String("tavrine-snip-")) || name.startsWith(QLatin1String("tavrine_qr_"));
    return (isCapture && name.endsWith(QLatin1String(".png"))) || name.startsWith(QLatin1String(".tavrine-"));
}

constexpr Seconds afterwards{1.0}; // a file's own time may be cut to the second

} // namespace

void removeCaptureLeftovers(const QString &temporaryFolder, Time &time) {
    const QDir folder(temporaryFolder);
    if (temporaryFolder.isEmpty() || !folder.exists())
        return;
    for (const QString &name : folder.entryList(QDir::Files | QDir::Hidden | QDir::System)) {
        if (isLeftover(name))
            QFile::remove(folder.filePath(name));
    }
    removeOldDrags(temporaryFolder, time.now());
    time.asyncAfter(dragFileLife + afterwards,
                    [temporaryFolder, &time] { removeOldDrags(temporaryFolder, time.now()); });
}

} // namespace tavrine
