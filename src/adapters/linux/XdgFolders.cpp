#include "adapters/linux/XdgFolders.h"

#include <QDir>
#include <QStandardPaths>

namespace tavrine {

Folders xdgFolders() {
    const auto location = [](QStandardPaths::StandardLocation which) {
        return QDir::cleanPath(QStandardPaths::writableLocation(which));
    };
    return {
        .applicationSupport = location(QStandardPaths::GenericDataLocation),
        .home = QDir::homePath(),
        .documents = location(QStandardPaths::DocumentsLocation),
        .temporary = location(QStandardPaths::GenericCacheLocation) + QStringLiteral("/Tavrine/tmp"),
    };
}

QString preferencesPath() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/com.veltrane.Tavrine.plist");
}

} // namespace tavrine
