#include "adapters/linux/ImageFormats.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <mutex>

namespace tavrine {
namespace {

// From the program's folder to that of its plugins: in the build tree, and installed.
constexpr const char *pluginFolders[] = {"../lib/tavrine", TAVRINE_INSTALLED_PLUGINS};

void addPluginFolders() {
    const QDir program(QCoreApplication::applicationDirPath());
    for (const char *folder : pluginFolders) {
        const QString path = QDir::cleanPath(program.filePath(QString::fromUtf8(folder)));
        if (QDir(path + QStringLiteral("/imageformats")).exists())
            QCoreApplication::addLibraryPath(path);
    }
}

} // namespace

void prepareImageFormatOf(const QString &path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    // The family of formats in which HEIF is begins so; the plugin knows which ones are meant.
    if (file.read(12).mid(4, 4) != "ftyp")
        return;
    static std::once_flag isAdded;
    std::call_once(isAdded, addPluginFolders);
}

} // namespace tavrine
