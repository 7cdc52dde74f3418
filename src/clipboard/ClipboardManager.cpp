#include "clipboard/ClipboardManager.h"

#include "base/Print.h"
#include "base/Time.h"
#include "clipboard/ClipboardDatabase.h"
#include "clipboard/ClipboardPreferences.h"
#include "clipboard/SavedRecording.h"
#include "ports/LoginItem.h"
#include "ports/Pasteboard.h"
#include "ports/Workspace.h"

#include <QFileInfo>
#include <QPointer>
#include <QTextBoundaryFinder>
#include <QUrl>

#include <algorithm>
#include <utility>

namespace tavrine {
namespace {

/// True when a reader sees one character, however many code points it is made of.
bool isOneCharacter(const QString &text) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    return finder.toNextBoundary() == text.size();
}

/// `work` in a form that any thread may call: it runs in a turn of the main queue.
std::function<void()> onMainQueue(Time &time, QObject *owner, std::function<void()> work) {
    return [&time, owner = QPointer(owner), work = std::move(work)] {
        time.async([owner, work] {
            if (owner)
                work();
        });
    };
}

} // namespace

ClipboardManager::ClipboardManager(Ports ports, QObject *parent)
    : QObject(parent), m_ports(std::move(ports)), m_media(m_ports.folders, m_ports.defaults, m_ports.imageCoder),
      m_recordingThumbnails(m_media, m_ports.movieAsset,
                            [this](const QString &fileName) { Q_EMIT thumbnailMade(fileName); }),
      m_recordingMover(m_ports.time), m_isPaused(!preference::featureClipboardHistory.get(m_ports.defaults)) {
    // The order counts: old items are in the database before a clear can apply to them.
    loadSettings();
    migrateHistory();
    applyClearOnRestart();
    runCleanup();
    reloadHistory();
    setLaunchAtLogin(m_ports.loginItem.isEnabled());
    startMonitoring();
    m_ports.time.async(this, [this] { removeLeftovers(); });
}

void ClipboardManager::loadSettings() {
    const UserDefaults &defaults = m_ports.defaults;
    m_hotkeyCharacter = preference::hotkeyCharacter.get(defaults);
    m_retentionPeriod = preference::retentionPeriod.get(defaults);
    m_autoClearOnRestart = preference::autoClearOnRestart.get(defaults);
    m_stripRichText = preference::stripRichText.get(defaults);
    if (const auto stored = preference::excludedApps.stored(defaults))
        m_excludedApps = decodeExcludedApps(*stored).value_or(m_excludedApps);
}

void ClipboardManager::saveSettings() {
    UserDefaults &defaults = m_ports.defaults;
    preference::retentionPeriod.set(defaults, m_retentionPeriod);
    preference::autoClearOnRestart.set(defaults, m_autoClearOnRestart);
    preference::stripRichText.set(defaults, m_stripRichText);
    preference::excludedApps.set(defaults, encodeExcludedApps(m_excludedApps));
}

void ClipboardManager::setRetentionPeriod(RetentionPeriod period) {
    m_retentionPeriod = period;
    Q_EMIT retentionPeriodChanged();
}

void ClipboardManager::setLaunchAtLogin(bool isEnabled) {
    m_launchAtLogin = isEnabled;
    Q_EMIT launchAtLoginChanged();
}

void ClipboardManager::setExcludedApps(std::vector<ExcludedApp> apps) {
    m_excludedApps = std::move(apps);
    m_exclusion.reset();
    Q_EMIT excludedAppsChanged();
}

void ClipboardManager::setAutoClearOnRestart(bool isOn) {
    m_autoClearOnRestart = isOn;
    Q_EMIT autoClearOnRestartChanged();
}

void ClipboardManager::setStripRichText(bool isOn) {
    m_stripRichText = isOn;
    Q_EMIT stripRichTextChanged();
}

void ClipboardManager::setHotkeyCharacter(const QString &character) {
    if (!isOneCharacter(character))
        return;
    m_hotkeyCharacter = character.toLower();
    preference::hotkeyCharacter.set(m_ports.defaults, m_hotkeyCharacter);
    Q_EMIT hotkeyCharacterChanged();
}

void ClipboardManager::addExcludedApp(const ExcludedApp &app) {
    if (std::ranges::find(m_excludedApps, app.bundleID, &ExcludedApp::bundleID) != m_excludedApps.end())
        return;
    std::vector<ExcludedApp> apps = m_excludedApps;
    apps.push_back(app);
    setExcludedApps(std::move(apps));
    saveSettings();
}

void ClipboardManager::setHistory(std::vector<ClipboardItem> items) {
    m_history = std::move(items);
    Q_EMIT historyChanged();
}

std::vector<ClipboardItem> ClipboardManager::protectedItems() {
    return m_ports.database.loadProtectedAndRecent(Date::distantFuture(), 0);
}

void ClipboardManager::reloadHistory() {
    setHistory(m_isPaused ? protectedItems() : m_ports.database.loadProtectedAndRecent(std::nullopt, inMemoryItems));
}

void ClipboardManager::addItem(const QString &content, const std::optional<QString> &imageFileName,
                               std::optional<QImage> thumbnail, std::optional<Date> date) {
    if (const auto duplicate = m_ports.database.findDuplicate(imageFileName, content)) {
        if (duplicate->isProtected())
            return;
        removeImageFile(duplicate->imageFileName);
        m_ports.database.remove(duplicate->id);
    }
    if (imageFileName && isRecordingFileName(*imageFileName)) {
        wantRecordingThumbnail(*imageFileName);
    } else if (imageFileName) {
        if (!thumbnail)
            thumbnail = makeThumbnail(*imageFileName);
        if (thumbnail)
            cacheThumbnail(*thumbnail, *imageFileName);
    }
    ClipboardItem item = newItem(contentOrImage(content, imageFileName), date.value_or(m_ports.time.now()));
    item.imageFileName = imageFileName;
    if (imageFileName)
        m_media.claim(*imageFileName);
    m_ports.database.record(item);
    runCleanup();
    reloadHistory();
}

ClipboardItem ClipboardManager::newItem(const QString &content, Date date) {
    ClipboardItem item;
    item.id = QUuid::createUuid();
    item.content = content;
    item.date = date;
    return item;
}

void ClipboardManager::addToMySaved(const QString &text) {
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return;
    ClipboardItem item;
    if (auto existing = m_ports.database.findDuplicate(std::nullopt, trimmed)) {
        item = std::move(*existing);
    } else {
        item = newItem(trimmed, m_ports.time.now());
    }
    item.isSaved = true;
    m_ports.database.save(item);
    reloadHistory();
}

void ClipboardManager::copyToPasteboard(const ClipboardItem &item) {
    Pasteboard &pasteboard = m_ports.pasteboard;
    pasteboard.clearContents();
    if (!item.imageFileName) {
        if (const auto text = m_ports.database.wholeText(item))
            pasteboard.setString(*text);
    } else if (isRecordingFileName(*item.imageFileName)) {
        if (const auto path = m_media.filePath(*item.imageFileName))
            pasteboard.writeFileUrls({QUrl::fromLocalFile(*path)});
    } else if (const auto image = loadImage(*item.imageFileName)) {
        pasteboard.writeImage(*image);
    }
}

std::vector<ClipboardItem> ClipboardManager::searchItems(const QString &query) {
    return query.isEmpty() ? m_history : m_ports.database.search(query, searchLimit);
}

std::shared_ptr<HistoryRead> ClipboardManager::beginSearch(const QString &query, QObject *owner,
                                                           std::function<void()> whenDone) {
    return m_ports.database.beginSearch(query, searchLimit, onMainQueue(m_ports.time, owner, std::move(whenDone)));
}

std::shared_ptr<HistoryRead> ClipboardManager::beginFilter(std::vector<ClipboardItem> cutItems, const QString &text,
                                                           QObject *owner, std::function<void()> whenDone) {
    return m_ports.database.beginFilter(std::move(cutItems), text,
                                        onMainQueue(m_ports.time, owner, std::move(whenDone)));
}

void ClipboardManager::saveRecording(const QString &source, const std::optional<QString> &name,
                                     RecordingMover::Then then) {
    const auto saved = [this, name, then = std::move(then)](const std::optional<QString> &target) {
        if (target)
            addRecording(*target, name);
        if (then)
            then(target);
    };
    if (const std::optional<QString> folder = quickShotsDirectory())
        m_recordingMover.move(source, *folder, name, saved);
    else
        saved(std::nullopt);
}

void ClipboardManager::addRecording(const QString &target, const std::optional<QString> &name) {
    const QString fileName = QFileInfo(target).fileName();
    const QString caption = recordingCaption(name);
    // The row of an older recording whose file the person has removed may have both in common with this one. It goes
    // here, alone: as a duplicate it would take the new file with it.
    if (const auto stale = m_ports.database.findDuplicate(fileName, caption); stale && !stale->isProtected())
        m_ports.database.remove(stale->id);
    addItem(caption, fileName);

    const QList<QUrl> urls{QUrl::fromLocalFile(target)};
    m_ports.pasteboard.clearContents();
    m_ports.pasteboard.writeFileUrls(urls);
    m_ports.workspace.activateFileViewerSelecting(urls);
    printLine(QStringLiteral("Successfully saved screen recording to QuickShots: ") + target);
}

} // namespace tavrine
