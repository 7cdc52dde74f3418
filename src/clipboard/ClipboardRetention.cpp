// What keeps the history bounded, and what carries it across versions and restarts.

#include "base/PrivateFiles.h"
#include "base/Time.h"
#include "clipboard/ClipboardDatabase.h"
#include "clipboard/ClipboardExport.h"
#include "clipboard/ClipboardManager.h"
#include "clipboard/ClipboardPreferences.h"
#include "clipboard/OldHistory.h"

#include <algorithm>
#include <utility>

namespace tavrine {

bool ClipboardManager::runCleanup() {
    ClipboardDatabase &database = m_ports.database;
    const Date cutOff = m_ports.time.now() - imageRetentionInterval;
    const ClipboardDatabase::Pruned old = database.prune(true, cutOff, std::nullopt);
    const ClipboardDatabase::Pruned surplus = database.prune(true, std::nullopt, maxImages);
    removeImageFiles(old.imageFileNames + surplus.imageFileNames);
    return old.deletedCount + surplus.deletedCount > 0;
}

void ClipboardManager::removeLeftovers() {
    // Older versions left a file for each capture: there may be thousands, and no turn of the main loop is theirs.
    constexpr int filesPerTurn = 100;
    const auto named = m_ports.database.imageFileNames();
    if (named && m_media.removeLeftovers(*named, filesPerTurn))
        m_ports.time.async(this, [this] { removeLeftovers(); });
}

void ClipboardManager::clearHistory(std::function<void()> then) {
    finishRecording();
    removeImageFiles(m_ports.database.clearUnprotected());
    reloadHistory();
    m_isClearOpen = true;
    if (then)
        m_afterClear.push_back(std::move(then));
    finishClear();
    if (m_isClearOpen && !m_hasClearRetry) // no tick may come to see to it: monitoring may end with the clear
        retryClearAfter(pollInterval);
}

void ClipboardManager::finishClear() {
    using State = ClipboardDatabase::Clearing::State;
    const ClipboardDatabase::Clearing clearing = m_ports.database.finishClear();
    removeImageFiles(clearing.fileNames);
    if (clearing.state == State::waits)
        return;
    m_isClearOpen = false;
    const auto after = std::exchange(m_afterClear, {});
    if (clearing.state == State::failed)
        return reloadHistory(); // it was shown empty while the clear waited
    for (const std::function<void()> &then : after)
        then();
}

void ClipboardManager::retryClearAfter(Seconds delay) {
    m_hasClearRetry = true;
    m_ports.time.asyncAfter(delay, this, [this, delay] {
        m_hasClearRetry = false;
        if (m_isClearOpen && !m_ports.database.wouldWait())
            finishClear();
        if (m_isClearOpen)
            retryClearAfter(std::min(delay * 2, longestClearRetry));
    });
}

void ClipboardManager::migrateHistory() {
    UserDefaults &defaults = m_ports.defaults;
    if (!preference::databaseMigrated.get(defaults)) {
        const auto stored = preference::oldHistory.stored(defaults);
        const auto items = stored ? decodeOldHistory(*stored) : std::nullopt;
        for (const ClipboardItem &item : items.value_or(std::vector<ClipboardItem>()))
            m_ports.database.save(item);
        preference::databaseMigrated.set(defaults, true);
        preference::oldHistory.remove(defaults);
    }
    reloadHistory();
    seedMySaved();
}

void ClipboardManager::seedMySaved() {
    UserDefaults &defaults = m_ports.defaults;
    if (preference::mySaveSeeded.get(defaults))
        return;
    ClipboardItem item;
    item.content = QLatin1String(defaultMySaveText);
    if (!m_ports.database.findDuplicate(std::nullopt, item.content)) {
        item.id = QUuid::createUuid();
        item.date = m_ports.time.now();
        item.isSaved = true;
        m_ports.database.save(item);
    }
    preference::mySaveSeeded.set(defaults, true);
    reloadHistory();
}

void ClipboardManager::applyClearOnRestart() {
    UserDefaults &defaults = m_ports.defaults;
    const Date now = m_ports.time.now();
    const auto noteLaunch = [&defaults, now] { preference::lastLaunchDate.set(defaults, now); };
    if (m_autoClearOnRestart) {
        // A restart of the machine is told from the time of its boot; the first launch ever clears as well. One whose
        // clear has to wait counts when it is done: should the program end before, the next launch clears.
        const Date lastLaunch = preference::lastLaunchDate.get(defaults);
        const Date bootTime = now - m_ports.time.systemUptime();
        if (bootTime > lastLaunch)
            return clearHistory(noteLaunch);
    }
    noteLaunch();
}

std::optional<QString> ClipboardManager::exportHistory() {
    const QString &folder = m_ports.folders.temporary;
    if (folder.isEmpty())
        return std::nullopt;
    const Date now = m_ports.time.now();
    const QString path = folder + u'/' + exportFileName(now);
    if (!makePrivateFolder(folder))
        return path;
    // Row by row: a history may be larger than what memory should hold.
    PrivateFileWriter writer(path);
    (void)writer.write(exportHeader(now).toUtf8()); // the commit knows of every failure
    bool isFirst = true;
    m_ports.database.forEachRow([&](const ClipboardItem &item) {
        (void)writer.write(((isFirst ? QString() : QStringLiteral("\n")) + exportLine(item)).toUtf8());
        isFirst = false;
    });
    (void)writer.commit();
    return path;
}

} // namespace tavrine
