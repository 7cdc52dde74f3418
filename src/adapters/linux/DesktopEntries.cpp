#include "adapters/linux/DesktopEntries.h"

#include "adapters/linux/KnownPrograms.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QStandardPaths>

#include <algorithm>
#include <utility>

namespace tavrine {
namespace {

constexpr qint64 largestFile = 512LL * 1024; // the largest on a full desktop has 60 KB, for its translations

QString identifierOf(const QString &path, const DesktopEntry &entry) {
    return knownProgram(QFileInfo(path).completeBaseName(), entry.windowClass).bundleIdentifier;
}

/// The command of a line, for a file of this base name. An option tells which job the program shall do, unless the file
/// is called like the program: then it is the program's own.
QString commandOf(const QString &line, const QString &fileName) {
    QStringList words = line.split(u' ', Qt::SkipEmptyParts);
    words.removeIf([](const QString &word) { return word.startsWith(u'%') || word.startsWith(QLatin1String("@@")); });
    if (!words.isEmpty() && QFileInfo(words.constFirst()).fileName() == QLatin1String("env")) {
        words.removeFirst();
        while (!words.isEmpty() && words.constFirst().contains(u'='))
            words.removeFirst();
    }
    if (words.isEmpty())
        return {};
    const QString program = QFileInfo(words.first().remove(u'"')).fileName();
    if (program == QLatin1String("flatpak")) {
        const QLatin1String option("--command=");
        const auto inside = std::ranges::find_if(words, [&](const QString &word) { return word.startsWith(option); });
        return inside == words.cend() ? QString() : inside->mid(option.size());
    }
    const bool isFilesOwn = fileName.section(u'.', -1).compare(program, Qt::CaseInsensitive) == 0;
    return words.size() == 1 || isFilesOwn ? program : QString();
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
        else if (key == "Exec")
            entry.command = commandOf(value, QFileInfo(path).completeBaseName());
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

/// Names come from windows too, and may be anything.
QStringList DesktopEntries::otherNamesOf(const QString &name) {
    QStringList found;
    if (name.isEmpty() || name.contains(u'/'))
        return found;
    QStringList spellings{name, name.toLower()};
    spellings.removeDuplicates();
    for (const QString &spelling : std::as_const(spellings)) {
        for (const QString &folder : m_folders) {
            const QString path = QStringLiteral("%1/%2.desktop").arg(folder, spelling);
            const auto entry = QFileInfo(path).isFile() ? DesktopEntry::read(path) : std::nullopt;
            if (!entry)
                continue;
            found << entry->windowClass << entry->command;
            break; // the first of two with the same name counts
        }
    }
    found.removeAll(QString());
    return found;
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
