#include "adapters/linux/GtkSettingsFiles.h"

#include "adapters/linux/DesktopLooks.h"

#include <QFile>
#include <QFileInfo>

#include <optional>

namespace tavrine {
namespace {

constexpr qint64 longestFile = 65536;

/// Whether the file asks for dark; none when it says nothing of it.
std::optional<bool> wantsDark(const QString &path) {
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) // a pipe would be waited for
        return std::nullopt;
    std::optional<bool> prefersDark;
    std::optional<bool> isThemeDark;
    bool isSettings = false;
    for (const QByteArray &rawLine : file.read(longestFile).split('\n')) {
        const QByteArray line = rawLine.trimmed();
        const auto equals = line.indexOf('=');
        if (line.startsWith('[')) {
            isSettings = line == "[Settings]";
        } else if (isSettings && equals > 0) {
            const QByteArray key = line.first(equals).trimmed();
            const QByteArray value = line.sliced(equals + 1).trimmed();
            if (key == "gtk-application-prefer-dark-theme")
                prefersDark = value == "1" || value.toLower() == "true";
            else if (key == "gtk-theme-name")
                isThemeDark = isDarkTheme(QString::fromUtf8(value));
        }
    }
    if (prefersDark || isThemeDark)
        return prefersDark.value_or(false) || isThemeDark.value_or(false);
    return std::nullopt;
}

} // namespace

GtkSettingsFiles::GtkSettingsFiles(const QString &configFolder)
    : m_files{configFolder + QStringLiteral("/gtk-4.0/settings.ini"),
              configFolder + QStringLiteral("/gtk-3.0/settings.ini")} {
    const auto onNotice = [this] { read(); };
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, onNotice);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, onNotice);
    read();
}

/// Files are replaced whole by those who write them, so their folders are watched as well.
void GtkSettingsFiles::watch() {
    QStringList paths;
    for (const QString &file : m_files)
        for (const QString &path : {file, QFileInfo(file).path()})
            if (QFileInfo::exists(path))
                paths.append(path);
    for (const QString &known : m_watcher.files() + m_watcher.directories())
        paths.removeAll(known);
    if (!paths.isEmpty())
        m_watcher.addPaths(paths);
}

void GtkSettingsFiles::read() {
    watch();
    DesktopAppearance now;
    for (const QString &file : m_files)
        if (const auto isDark = wantsDark(file)) {
            now.colorScheme = *isDark ? ColorScheme::dark : ColorScheme::noPreference;
            break;
        }
    if (std::exchange(m_settings, now) != now && m_onChange)
        m_onChange();
}

} // namespace tavrine
