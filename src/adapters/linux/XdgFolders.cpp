#include "adapters/linux/XdgFolders.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace tavrine {

Folders xdgFolders() {
    const auto location = [](QStandardPaths::StandardLocation which) {
        return QDir::cleanPath(QStandardPaths::writableLocation(which));
    };
    // The program's own file, also before the toolkit knows it.
    const QString programs = QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/self/exe"))).absolutePath();
    return {
        .applicationSupport = location(QStandardPaths::GenericDataLocation),
        .home = QDir::homePath(),
        .documents = location(QStandardPaths::DocumentsLocation),
        .temporary = location(QStandardPaths::GenericCacheLocation) + QStringLiteral("/Tavrine/tmp"),
        .preferences = location(QStandardPaths::GenericConfigLocation),
        .programs = programs,
        .resources = QDir::cleanPath(programs + QStringLiteral("/../share/tavrine")),
    };
}

} // namespace tavrine
