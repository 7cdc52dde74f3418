#include "adapters/linux/XdgFolders.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <array>

#include <pwd.h>
#include <unistd.h>

namespace tavrine {
namespace {

/// The person's home by the account database; empty when that does not know the person.
QByteArray homeOfAccount() {
    std::array<char, 16 * 1024> space{}; // what the database asks for at most, with names from a directory service
    passwd account{};
    passwd *found = nullptr;
    const bool isKnown = ::getpwuid_r(::getuid(), &account, space.data(), space.size(), &found) == 0 && found;
    return isKnown ? QByteArray(account.pw_dir) : QByteArray();
}

} // namespace

void settleHome() {
    if (!qEnvironmentVariableIsEmpty("HOME"))
        return;
    if (const QByteArray home = homeOfAccount(); home.startsWith('/'))
        qputenv("HOME", home);
}

Folders xdgFolders() {
    settleHome();
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
        .caches = location(QStandardPaths::GenericCacheLocation) + QStringLiteral("/Tavrine"),
    };
}

} // namespace tavrine
