// What keeps the history bounded, and what carries it across versions and restarts.

#include "base/PrivateFiles.h"
#include "base/Time.h"
#include "base/UserDefaults.h"
#include "clipboard/ClipboardDatabase.h"
#include "clipboard/ClipboardExport.h"
#include "clipboard/ClipboardManager.h"
#include "clipboard/OldHistory.h"

#include <limits>

namespace tavrine {
namespace {

constexpr QLatin1String oldHistoryKey("ClipboardHistory");
constexpr QLatin1String migratedKey("ClipboardDBMigrated");
constexpr QLatin1String seededKey("ClipboardMySaveSeeded");
constexpr QLatin1String lastLaunchKey("LastLaunchDate");

} // namespace

bool ClipboardManager::runCleanup() {
    ClipboardDatabase &database = m_ports.database;
    const Date cutOff = m_ports.time.now() - imageRetentionInterval;
    const ClipboardDatabase::Pruned old = database.prune(true, cutOff, std::nullopt);
    const ClipboardDatabase::Pruned surplus = database.prune(true, std::nullopt, maxImages);
    removeImageFiles(old.imageFileNames + surplus.imageFileNames);
    return old.deletedCount + surplus.deletedCount > 0;
}

void ClipboardManager::clearHistory() {
    removeImageFiles(m_ports.database.clearUnprotected());
    reloadHistory();
}

void ClipboardManager::migrateHistory() {
    UserDefaults &defaults = m_ports.defaults;
    if (!defaults.get<bool>(migratedKey, false)) {
        const std::optional<QByteArray> stored = defaults.get<QByteArray>(oldHistoryKey);
        const auto items = stored ? decodeOldHistory(*stored) : std::nullopt;
        for (const ClipboardItem &item : items.value_or(std::vector<ClipboardItem>()))
            m_ports.database.save(item);
        defaults.set(migratedKey, true);
        defaults.remove(oldHistoryKey);
    }
    reloadHistory();
    seedMySaved();
}

void ClipboardManager::seedMySaved() {
    UserDefaults &defaults = m_ports.defaults;
    if (defaults.get<bool>(seededKey, false))
        return;
    ClipboardItem item;
    item.content = QLatin1String(defaultMySaveText);
    if (!m_ports.database.findDuplicate(std::nullopt, item.content)) {
        item.id = QUuid::createUuid();
        item.date = m_ports.time.now();
        item.isSaved = true;
        m_ports.database.save(item);
    }
    defaults.set(seededKey, true);
    reloadHistory();
}

void ClipboardManager::applyClearOnRestart() {
    UserDefaults &defaults = m_ports.defaults;
    const Date now = m_ports.time.now();
    if (m_autoClearOnRestart) {
        // A restart of the machine is told from the time of its boot; the first launch ever clears as well.
        const Date lastLaunch = defaults.get<Date>(lastLaunchKey, Date::distantPast());
        const Date bootTime = now - m_ports.time.systemUptime();
        if (bootTime > lastLaunch)
            clearHistory();
    }
    defaults.set(lastLaunchKey, now);
}

std::optional<QString> ClipboardManager::exportHistory() {
    const QString &folder = m_ports.folders.temporary;
    if (folder.isEmpty())
        return std::nullopt;
    const Date now = m_ports.time.now();
    const auto items = m_ports.database.loadAll(std::nullopt, std::numeric_limits<qint64>::max());
    const QString path = folder + u'/' + exportFileName(now);
    if (makePrivateFolder(folder))
        writePrivateFile(path, exportText(items, now).toUtf8());
    return path;
}

} // namespace tavrine
