#include "adapters/linux/PlasmaSettingsFile.h"

#include <QFile>
#include <QFileInfo>

#include <utility>

namespace tavrine {
namespace {

constexpr qint64 longestFile = 256 * 1024; // colour schemes stand in it too

/// The factor in the file; invalid when there is none.
QVariant durationFactor(const QString &path) {
    QVariant factor;
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) // a pipe would be waited for
        return factor;
    bool isGroup = false;
    for (const QByteArray &rawLine : file.read(longestFile).split('\n')) {
        const QByteArray line = rawLine.trimmed();
        const auto equals = line.indexOf('=');
        if (line.startsWith('['))
            isGroup = line == "[KDE]";
        else if (isGroup && equals > 0 && line.first(equals).trimmed() == "AnimationDurationFactor")
            factor = QString::fromUtf8(line.sliced(equals + 1).trimmed());
    }
    return factor;
}

} // namespace

bool isNoDuration(const QVariant &factor) {
    bool isNumber = false;
    return factor.toDouble(&isNumber) <= 0 && isNumber;
}

PlasmaSettingsFile::PlasmaSettingsFile(const QString &configFolder)
    : m_file(configFolder + QStringLiteral("/kdeglobals")) {
    if (!QFileInfo::exists(m_file))
        return;
    m_watcher.emplace();
    connect(&*m_watcher, &QFileSystemWatcher::fileChanged, this, [this] { read(); });
    read();
}

void PlasmaSettingsFile::read() {
    // One that is replaced whole is another file for the watcher.
    if (!m_watcher->files().contains(m_file))
        m_watcher->addPath(m_file);
    DesktopAppearance now;
    now.reducesMotion = isNoDuration(durationFactor(m_file));
    if (std::exchange(m_settings, now) != now && m_onChange)
        m_onChange();
}

} // namespace tavrine
