#include "adapters/linux/PluginLoader.h"

#include "base/Print.h"

#include <QCoreApplication>
#include <QDir>
#include <QPluginLoader>

namespace tavrine {
namespace {

/// From the folder of the program to that of its plugins: in the build tree, and in an installed one, where
/// distributions have their own names for the folder of libraries.
constexpr const char *pluginFolders[] = {"../lib/tavrine", TAVRINE_INSTALLED_PLUGINS};

} // namespace

QObject *loadPlugin(const QString &name) {
    QString last;
    const QDir program(QCoreApplication::applicationDirPath());
    for (const char *folder : pluginFolders) {
        const QString path = QDir::cleanPath(
            program.filePath(QString::fromUtf8(folder) + QLatin1Char('/') + name + QStringLiteral(".so")));
        if (path == last || !QFile::exists(path))
            continue;
        last = path;
        QPluginLoader loader(path); // destroying it does not unload the plugin
        if (QObject *root = loader.instance())
            return root;
        printLine(QStringLiteral("DEBUG: could not load ") + loader.errorString());
    }
    return nullptr;
}

} // namespace tavrine
