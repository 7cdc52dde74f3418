// What the manager does every half second, and when the desktop tells of a copy: see whether something was copied, and
// decide whether to record it.

#include "base/SerialQueue.h"
#include "base/Time.h"
#include "clipboard/ClipboardDatabase.h"
#include "clipboard/ClipboardManager.h"
#include "ports/Pasteboard.h"
#include "ports/Workspace.h"

#include <QPointer>

#include <algorithm>

namespace tavrine {
namespace {

/// With any of these on the pasteboard, its text comes with a look.
constexpr std::array richTypes{pasteboardType::rtf, pasteboardType::html, pasteboardType::flatRtfd,
                               pasteboardType::webArchive};

/// Copies that may stand in line behind one that takes its time, and how many of them may hold tens of megabytes. One
/// more takes the place of the last, and a large one too many that of the last large one, as if no tick had seen it.
constexpr std::size_t longestLine = 32;
constexpr std::ptrdiff_t mostLargeInLine = 2;

} // namespace

/// A copy that is recorded without holding the main thread, since a hot key must not wait for it: a large one is
/// prepared on a thread of its own, and another program that holds the database's file is waited for there. Ticks go
/// on, and what they see stands in line, so that the rows come in the order of the copies.
struct ClipboardManager::Recording {
    Prepared prepared;
    Seen seen;
    SerialQueue queue{QStringLiteral("com.tavrine.clipboard.recording")};
};

ClipboardManager::~ClipboardManager() {
    if (!m_recording)
        return;
    m_recording->queue.sync([] {});
    removeImageFile(m_recording->prepared.imageFileName); // it gets no row any more
}

void ClipboardManager::startMonitoring() {
    if (m_isPaused)
        return;
    m_timer.reset();
    m_lastChangeCount = m_ports.pasteboard.changeCount();
    m_heardSinceTick = 0;
    m_timer = m_ports.time.repeat(pollInterval, [this] { // the timer goes with the manager
        m_heardSinceTick = 0;
        poll();
    });
    m_ports.pasteboard.setOnForeignChange([manager = QPointer(this)] {
        if (manager && manager->isMonitoring())
            manager->hearOfCopy();
    });
}

// Who is in front is asked now as well, and not only by the look that follows: a password manager may hide itself right
// after the copy. A copy that follows within the settling time has a look of its own. A program that copies for ever,
// with each deletion or each move of a selection, has a few of its copies seen between two ticks and no more: it shall
// neither fill the history nor have the desktop asked all the time who is in front.
void ClipboardManager::hearOfCopy() {
    if (m_heardSinceTick++ >= mostHeard)
        return;
    const int changeCount = m_ports.pasteboard.changeCount();
    if (isExcludedApplicationFrontmost()) {
        m_lastChangeCount = changeCount;
        return;
    }
    m_ports.time.asyncAfter(settlingTime, this, [this, changeCount] {
        const bool isNews = changeCount == m_ports.pasteboard.changeCount() && changeCount != m_lastChangeCount;
        if (isMonitoring() && isNews)
            poll();
    });
}

void ClipboardManager::pauseMonitoring() {
    m_isPaused = true;
    m_timer.reset();
    m_recordingThumbnails.forgetAll();
    thumbnailCache().removeAllObjects();
    setHistory(protectedItems());
}

bool ClipboardManager::isExcluded(const RunningApplication &application) const {
    const QString &identifier = application.bundleIdentifier;
    return std::ranges::any_of(sensitiveBundleIDs,
                               [&](const char *id) { return identifier.startsWith(QLatin1String(id)); }) ||
           isAnyMeant(m_excludedApps, application, m_ports.catalog);
}

bool ClipboardManager::isExcludedApplicationFrontmost() {
    const std::optional<RunningApplication> application = m_ports.workspace.frontmostApplication();
    if (!application || application->bundleIdentifier.isEmpty())
        return false;
    if (!m_exclusion || m_exclusion->first != *application)
        m_exclusion = {*application, isExcluded(*application)};
    return m_exclusion->second;
}

void ClipboardManager::poll() {
    // Whatever happens to the database's file is seen here, and what waited to be written to it is shown and written.
    ClipboardDatabase &database = m_ports.database;
    if (!m_recording && database.needsALook() && !database.wouldWait()) {
        reloadHistory();
        if (m_isClearOpen)
            finishClear();
    }
    Pasteboard &pasteboard = m_ports.pasteboard;
    if (isExcludedApplicationFrontmost()) {
        m_lastChangeCount = pasteboard.changeCount();
        return;
    }
    const int changeCount = pasteboard.changeCount();
    if (changeCount != m_lastChangeCount) {
        if (!m_ports.workspace.isFrontmostKnown())
            return; // it may be a password manager: a later tick decides
        m_lastChangeCount = changeCount;
        const QStringList types = pasteboard.types().value_or(QStringList());
        if (types.contains(QLatin1String(pasteboardType::concealed)) ||
            types.contains(QLatin1String(pasteboardType::autoGenerated)))
            return;
        standInLine({pasteboard.reading(), {m_ports.time.now(), changeCount}});
    } else if (!m_recording && m_ports.time.now() - m_lastCleanupAt >= cleanupInterval) {
        cleanUpAfterPoll();
    }
}

void ClipboardManager::standInLine(Copy copy) {
    if (!m_recording)
        return record(copy);
    const auto isLarge = [](const Copy &each) { return each.reading.isLarge; };
    if (copy.reading.isLarge && std::ranges::count_if(m_line, isLarge) >= mostLargeInLine)
        m_line.erase(std::find_if(m_line.rbegin(), m_line.rend(), isLarge).base() - 1);
    if (m_line.size() == longestLine)
        m_line.pop_back();
    m_line.push_back(std::move(copy));
}

void ClipboardManager::record(const Copy &copy) {
    if (copy.reading.isLarge || m_ports.database.wouldWait())
        recordElsewhere(copy);
    else
        record(prepare(copy.reading), copy.seen);
}

void ClipboardManager::recordElsewhere(const Copy &copy) {
    m_recording = std::make_shared<Recording>();
    m_recording->seen = copy.seen;
    m_recording->queue.async([this, recording = m_recording.get(), reading = copy.reading] {
        Prepared &prepared = recording->prepared;
        prepared = prepare(reading);
        m_ports.database.awaitOther();
        if (prepared.text)
            prepared.isNew = m_ports.database.recordText(newItem(*prepared.text, recording->seen.at));
        m_ports.time.async(this, [this, recording] {
            if (m_recording.get() == recording)
                finishOneRecording();
        });
    });
}

ClipboardManager::Prepared ClipboardManager::prepare(const Pasteboard::Reading &reading) {
    // An image comes before text; one that cannot be stored is no error, its text is looked at instead.
    Prepared prepared;
    if (auto image = reading.image())
        prepared.imageFileName = saveImage(*std::move(image));
    if (prepared.imageFileName)
        prepared.thumbnail = makeThumbnail(*prepared.imageFileName);
    else
        prepared.text = reading.string();
    return prepared;
}

void ClipboardManager::finishRecording() {
    while (m_recording)
        finishOneRecording();
}

void ClipboardManager::finishOneRecording() {
    m_recording->queue.sync([] {});
    const std::shared_ptr<Recording> recording = std::move(m_recording);
    record(recording->prepared, recording->seen);
    if (m_isPaused) // meanwhile; a pause leaves nothing there
        thumbnailCache().removeAllObjects();
    while (!m_recording && !m_line.empty()) {
        const Copy next = std::move(m_line.front());
        m_line.pop_front();
        record(next);
    }
}

void ClipboardManager::record(const Prepared &prepared, const Seen &seen) {
    if (prepared.imageFileName) {
        addItem(QStringLiteral("Copied Image"), prepared.imageFileName, prepared.thumbnail, seen.at);
        return;
    }
    if (prepared.text && !recordText(prepared, seen))
        return;
    cleanUpAfterPoll();
}

void ClipboardManager::cleanUpAfterPoll() {
    m_lastCleanupAt = m_ports.time.now();
    if (runCleanup())
        reloadHistory();
}

bool ClipboardManager::recordText(const Prepared &prepared, const Seen &seen) {
    const QString &text = *prepared.text;
    bool isNew = true; // else it stays where it is and keeps its date
    if (prepared.isNew) {
        isNew = *prepared.isNew;
        if (isNew) { // what else adding an item is
            runCleanup();
            reloadHistory();
        }
    } else {
        const auto duplicate = m_ports.database.findDuplicate(std::nullopt, text);
        isNew = !duplicate || !duplicate->isProtected();
        if (isNew)
            addItem(text, std::nullopt, std::nullopt, seen.at);
    }
    if (m_stripRichText)
        stripFormatting(text, seen.changeCount);
    return isNew;
}

void ClipboardManager::stripFormatting(const QString &text, int changeCount) {
    Pasteboard &pasteboard = m_ports.pasteboard;
    if (pasteboard.changeCount() != changeCount)
        return; // `text` has gone already, and what came after it is not to go with it
    const std::optional<QStringList> types = pasteboard.types();
    if (!types ||
        std::ranges::none_of(richTypes, [&](const char *type) { return types->contains(QLatin1String(type)); }))
        return;
    // The only write of our own that the poll is not to see; a copy that follows it, it is.
    m_lastChangeCount = pasteboard.clearContents();
    pasteboard.setString(text);
}

} // namespace tavrine
