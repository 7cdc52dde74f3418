#include "adapters/linux/GtkSettingsFiles.h"

#include "adapters/linux/DesktopLooks.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <optional>

namespace tavrine {
namespace {

constexpr qint64 longestFile = 65536;

using Settings = QHash<QByteArray, QByteArray>;

/// What the file sets; nothing when there is none.
Settings settingsOf(const QString &path) {
    Settings settings;
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) // a pipe would be waited for
        return settings;
    bool isSettings = false;
    for (const QByteArray &rawLine : file.read(longestFile).split('\n')) {
        const QByteArray line = rawLine.trimmed();
        const auto equals = line.indexOf('=');
        if (line.startsWith('['))
            isSettings = line == "[Settings]";
        else if (isSettings && equals > 0)
            settings.insert(line.first(equals).trimmed(), line.sliced(equals + 1).trimmed());
    }
    return settings;
}

std::optional<bool> claim(const Settings &settings, const char *key) {
    const auto found = settings.constFind(key);
    if (found == settings.constEnd())
        return std::nullopt;
    return *found == "1" || found->toLower() == "true";
}

/// Whether a file asks for dark; none when it says nothing of it.
std::optional<bool> wantsDark(const Settings &settings) {
    const std::optional<bool> prefersDark = claim(settings, "gtk-application-prefer-dark-theme");
    const auto theme = settings.constFind("gtk-theme-name");
    if (!prefersDark && theme == settings.constEnd())
        return std::nullopt;
    return prefersDark.value_or(false) || (theme != settings.constEnd() && isDarkTheme(QString::fromUtf8(*theme)));
}

QStringList filesIn(const QString &configFolder) {
    return {configFolder + QStringLiteral("/gtk-4.0/settings.ini"),
            configFolder + QStringLiteral("/gtk-3.0/settings.ini")};
}

} // namespace

DesktopThemes gtkThemes(const QString &configFolder) {
    DesktopThemes themes;
    for (const QString &file : filesIn(configFolder)) {
        const Settings settings = settingsOf(file);
        if (themes.icons.isEmpty())
            themes.icons = QString::fromUtf8(settings.value("gtk-icon-theme-name"));
        if (themes.sounds.isEmpty())
            themes.sounds = QString::fromUtf8(settings.value("gtk-sound-theme-name"));
        if (!themes.hasEventSounds)
            themes.hasEventSounds = claim(settings, "gtk-enable-event-sounds");
    }
    return themes;
}

GtkSettingsFiles::GtkSettingsFiles(const QString &configFolder) : m_files(filesIn(configFolder)) {
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
    std::optional<bool> isDark;
    std::optional<bool> moves;
    for (const QString &file : m_files) {
        const Settings settings = settingsOf(file);
        if (!isDark)
            isDark = wantsDark(settings);
        if (!moves)
            moves = claim(settings, "gtk-enable-animations");
    }
    DesktopAppearance now;
    now.colorScheme = isDark.value_or(false) ? ColorScheme::dark : ColorScheme::noPreference;
    now.reducesMotion = !moves.value_or(true);
    if (std::exchange(m_settings, now) != now && m_onChange)
        m_onChange();
}

} // namespace tavrine
