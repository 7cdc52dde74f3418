#include "capture/CaptureLeftovers.h"

#include "base/Time.h"
#include "capture/SnipDragFile.h"

#include <QDir>
#include <QFile>

namespace tavrine {
namespace {

/// Of captures, of captures that are searched for codes, and of files that have no name yet.
const QStringList patterns{QStringLiteral("tavrine-snip-*.png"), QStringLiteral("tavrine_qr_*.png"),
                           QStringLiteral(".tavrine-*")};
constexpr Seconds afterwards{1.0}; // a file's own time may be cut to the second

} // namespace

void removeCaptureLeftovers(const QString &temporaryFolder, Time &time) {
    const QDir folder(temporaryFolder);
    if (temporaryFolder.isEmpty() || !folder.exists())
        return;
    for (const QString &name : folder.entryList(patterns, QDir::Files | QDir::Hidden | QDir::System))
        QFile::remove(folder.filePath(name));
    removeOldDrags(temporaryFolder, time.now());
    time.asyncAfter(dragFileLife + afterwards,
                    [temporaryFolder, &time] { removeOldDrags(temporaryFolder, time.now()); });
}

} // namespace tavrine
