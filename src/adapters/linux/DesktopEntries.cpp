#include "adapters/linux/DesktopEntries.h"

#include "adapters/linux/KnownPrograms.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QStandardPaths>

namespace tavrine {
namespace {

constexpr qint64 largestFile = 512LL * 1024; // the largest on a full desktop has 60 KB, for its translations

QString identifierOf(const QString &path, const DesktopEntry &entry) {
    return knownProgram(QFileInfo(path).completeBaseName(), entry.windowClass).bundleIdentifier;
}

} // namespace

std::optional<DesktopEntry> DesktopEntry::read(const QString &path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > largestFile)
        return std::nullopt;
    DesktopEntry entry;
    bool isInGroup = false;
    bool isProgram = false;
    const QList<QByteArray> lines = file.read(largestFile).split('\n');
    for (const QByteArray &raw : lines) {
        const QByteArray line = raw.trimmed();
        if (line.startsWith('['))
            isInGroup = line == "[Desktop Entry]";
        const qsizetype sign = line.indexOf('=');
        if (!isInGroup || sign <= 0)
            continue;
        const QByteArray key = line.left(sign).trimmed();
        const QString value = QString::fromUtf8(line.mid(sign + 1).trimmed());
        if (key == "Type")
            isProgram = value == QLatin1String("Application");
        else if (key == "Name")
            entry.name = value;
        else if (key == "Icon")
            entry.icon = value;
        else if (key == "StartupWMClass")
            entry.windowClass = value;
    }
    if (!isProgram || entry.name.isEmpty())
        return std::nullopt;
    return entry;
}

DesktopEntries::DesktopEntries(QStringList folders) : m_folders(std::move(folders)) {}

QStringList DesktopEntries::standardFolders() {
    return QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation);
}

std::optional<InstalledApplication> DesktopEntries::applicationIn(const QString &path) {
    const auto entry = DesktopEntry::read(path);
    if (!entry)
        return std::nullopt;
    // A program names its windows by this class; without one its windows are called like the file.
    const QString name = QFileInfo(path).completeBaseName();
    const QString identifier = knownProgram(name, entry->windowClass).bundleIdentifier;
    const bool isListed = identifier != name;
    return InstalledApplication{isListed || entry->windowClass.isEmpty() ? identifier : entry->windowClass,
                                entry->name};
}

QString DesktopEntries::folder() {
    for (const QString &folder : m_folders) {
        if (QDir(folder).exists() && !QDir(folder).isEmpty())
            return folder;
    }
    return {};
}

void DesktopEntries::readAll() {
    m_isRead = true;
    for (const QString &folder : m_folders) {
        const QFileInfoList files = QDir(folder).entryInfoList(QDir::Files | QDir::Readable);
        for (const QFileInfo &file : files) {
            if (file.suffix() != QLatin1String("desktop"))
                continue;
            const auto entry = DesktopEntry::read(file.filePath());
            if (!entry || entry->icon.isEmpty())
                continue;
            for (const QString &name :
                 {file.completeBaseName(), entry->windowClass, identifierOf(file.filePath(), *entry)}) {
                if (!name.isEmpty() && !m_icons.contains(name.toLower()))
                    m_icons.insert(name.toLower(), entry->icon);
            }
        }
    }
}

QImage DesktopEntries::icon(const QString &bundleIdentifier, int side) {
    if (!m_isRead)
        readAll();
    const QString name = m_icons.value(bundleIdentifier.toLower(), bundleIdentifier);
    const QIcon icon = QDir::isAbsolutePath(name) ? QIcon(name) : QIcon::fromTheme(name);
    return icon.pixmap(side, side).toImage();
}

} // namespace tavrine
