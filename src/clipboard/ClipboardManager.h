#pragma once

#include "base/Date.h"
#include "clipboard/ClipboardItem.h"
#include "clipboard/ExcludedApp.h"
#include "clipboard/MediaStore.h"
#include "clipboard/RecordingMover.h"
#include "clipboard/RecordingThumbnails.h"
#include "clipboard/RetentionPeriod.h"
#include "ports/Folders.h"
#include "ports/Pasteboard.h"
#include "ports/Workspace.h"

#include <QObject>
#include <QStringList>

#include <array>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tavrine {

class ApplicationCatalog;
class ClipboardDatabase;
class HistoryRead;
class LoginItem;
class Time;
class Timer;

/// The owner of the clipboard history at run time: polls the pasteboard, and looks at once where the desktop tells of a
/// copy; filters what it sees, stores text and images,
/// keeps a bounded list in memory for the panels, and puts items back on the pasteboard.
///
/// Lives on the main thread, as long as the process; AppDelegate holds the one instance. Nothing here shows an error
/// to the person.
///
///  1. `history` holds all protected rows and at most `inMemoryItems` others; while paused, the protected ones alone.
///     `historyChanged` follows every time it is set, also to an equal list.
///  2. What is copied while monitoring is off is never recorded.
///  3. Text never expires and has no count limit. Only media rows go by age or count, and never a protected one.
///  4. What `copyToPasteboard` writes is recorded again like any other copy: this is how a pasted item rises.
class ClipboardManager : public QObject {
    Q_OBJECT

public:
    struct Ports {
        Time &time;
        UserDefaults &defaults;
        Pasteboard &pasteboard;
        Workspace &workspace;
        ApplicationCatalog &catalog;
        ImageCoder &imageCoder;
        MovieAsset &movieAsset;
        LoginItem &loginItem;
        Folders folders;
        ClipboardDatabase &database;
    };

    static constexpr Seconds pollInterval{0.5};
    /// From the word of a copy to the look at it: some programs copy in two steps, or for each move of a selection.
    static constexpr Seconds settlingTime{0.03};
    /// Words of copies that are heeded between two ticks; further copies are left to the next one.
    static constexpr int mostHeard = 4;
    static constexpr Seconds cleanupInterval{14400.0}; ///< between two cleanups while the pasteboard is idle
    /// Between two looks at a clear that waits, which begin with a poll's interval and double.
    static constexpr Seconds longestClearRetry{30.0};
    static constexpr Seconds imageRetentionInterval{604800.0}; ///< 7 days, the age from which unprotected media go
    static constexpr qint64 maxImages = 50;                    ///< unprotected media rows that may remain
    static constexpr qint64 inMemoryItems = 200;               ///< bound of `history` in unprotected items
    static constexpr qint64 searchLimit = 500;
    static constexpr auto defaultMySaveText = "You can save your custom things here...";

    /// Never recorded, whatever the person excludes besides. Compared as prefixes, like the person's own list.
    static constexpr std::array sensitiveBundleIDs{
        "com.agilebits.onepassword", "com.agilebits.onepassword7", "com.bitwarden.desktop", "com.apple.keychainaccess",
        "org.keepassxc.keepassxc",   "co.dashlane.dashlane",       "com.lastpass.LastPass"};

    /// Loads the settings, migrates, seeds, clears after a reboot when that is wished, cleans, loads and starts to
    /// poll.
    explicit ClipboardManager(Ports ports, QObject *parent = nullptr);
    ~ClipboardManager() override;

    // Published state.
    [[nodiscard]] const std::vector<ClipboardItem> &history() const { return m_history; }
    [[nodiscard]] QString hotkeyCharacter() const { return m_hotkeyCharacter; }
    [[nodiscard]] RetentionPeriod retentionPeriod() const { return m_retentionPeriod; }
    [[nodiscard]] bool launchAtLogin() const { return m_launchAtLogin; }
    [[nodiscard]] const std::vector<ExcludedApp> &excludedApps() const { return m_excludedApps; }
    [[nodiscard]] bool autoClearOnRestart() const { return m_autoClearOnRestart; }
    [[nodiscard]] bool stripRichText() const { return m_stripRichText; }

    // The setters change and publish the value; the settings page calls saveSettings after them.
    void setRetentionPeriod(RetentionPeriod period);
    void setLaunchAtLogin(bool isEnabled);
    void setExcludedApps(std::vector<ExcludedApp> apps);
    void setAutoClearOnRestart(bool isOn);
    void setStripRichText(bool isOn);
    void saveSettings();

    /// Ignored unless `character` is exactly one character. Stores its lower-case form at once.
    void setHotkeyCharacter(const QString &character);
    /// Ignored when an entry with the same identifier stands already. Saves the settings.
    void addExcludedApp(const ExcludedApp &app);

    /// What is copied while it is in front is not recorded: it is listed above, or by the person.
    [[nodiscard]] bool isExcluded(const RunningApplication &application) const;

    // Monitoring. To resume: setPaused(false), reloadHistory, startMonitoring.
    [[nodiscard]] bool isPaused() const { return m_isPaused; }
    void setPaused(bool isPaused) { m_isPaused = isPaused; }
    [[nodiscard]] bool isMonitoring() const { return m_timer != nullptr; }
    void startMonitoring(); ///< nothing while paused
    void pauseMonitoring();
    /// Waits for the copies that were seen and are not recorded yet, and records them; nothing otherwise. What must
    /// come after the copies that were made before it begins with this.
    void finishRecording();
    void reloadHistory();

    // Items.
    /// Makes the file's thumbnail unless it comes along; that of a recording, later. The date is now unless another one
    /// is given.
    void addItem(const QString &content, const std::optional<QString> &imageFileName = std::nullopt,
                 std::optional<QImage> thumbnail = std::nullopt, std::optional<Date> date = std::nullopt);
    void addToMySaved(const QString &text);
    void copyToPasteboard(const ClipboardItem &item);
    /// An empty query gives `history`; any other searches the whole database, at most 500 rows.
    [[nodiscard]] std::vector<ClipboardItem> searchItems(const QString &query);
    /// The search of a query that is not empty, without waiting for it. `whenDone` comes in a later turn of the main
    /// queue, unless `owner` is gone.
    [[nodiscard]] std::shared_ptr<HistoryRead> beginSearch(const QString &query, QObject *owner,
                                                           std::function<void()> whenDone);
    /// In the same way, those of `cutItems` that contain `text` behind their beginning.
    [[nodiscard]] std::shared_ptr<HistoryRead> beginFilter(std::vector<ClipboardItem> cutItems, const QString &text,
                                                           QObject *owner, std::function<void()> whenDone);

    // Media: by bare file name, as in MediaStore.
    [[nodiscard]] MediaStore &media() { return m_media; }
    [[nodiscard]] std::optional<QImage> makeThumbnail(const QString &name) { return m_media.makeThumbnail(name); }
    void cacheThumbnail(const QImage &image, const QString &name) { m_media.cacheThumbnail(image, name); }
    /// Has the thumbnail of a recording made and cached, without waiting for it; `thumbnailMade` follows.
    void wantRecordingThumbnail(const QString &name) { m_recordingThumbnails.want(name); }
    [[nodiscard]] ThumbnailCache &thumbnailCache() { return m_media.thumbnailCache(); }
    [[nodiscard]] std::optional<QImage> loadImage(const QString &name) { return m_media.loadImage(name); }
    [[nodiscard]] std::optional<QString> saveImage(QImage image) { return m_media.saveImage(std::move(image)); }
    void removeImageFile(const std::optional<QString> &name) { m_media.removeImageFile(name); }
    void removeImageFiles(const QStringList &names) { m_media.removeImageFiles(names); }
    [[nodiscard]] std::optional<QString> imagesDirectory() const { return m_media.imagesDirectory(); }
    [[nodiscard]] std::optional<QString> quickShotsDirectory() const { return m_media.quickShotsDirectory(); }
    /// Moves the movie at the path `source` to the recordings, records it, copies it and shows it; then `then` is told
    /// its path, or none when it is where it was. Another file system takes its time: see `RecordingMover`.
    void saveRecording(const QString &source, const std::optional<QString> &name, RecordingMover::Then then = {});

    // Retention and export.
    bool runCleanup(); ///< true when it removed anything; the caller then reloads
    /// `then` comes when it is done: at once, or when another program has let go of the database's file. The history is
    /// empty meanwhile. Where the file refuses the clear for good the history stands, and `then` does not come.
    void clearHistory(std::function<void()> then = {});
    [[nodiscard]] ClipboardDatabase &database() { return m_ports.database; } ///< panels save and remove rows in it
    /// Writes the whole history as plain text and answers the file's path, whether or not it could be written. None
    /// when there is no temporary folder.
    std::optional<QString> exportHistory();

Q_SIGNALS:
    void historyChanged();
    /// The thumbnail of a recording is in the cache.
    void thumbnailMade(const QString &fileName);
    void hotkeyCharacterChanged();
    void retentionPeriodChanged();
    void launchAtLoginChanged();
    void excludedAppsChanged();
    void autoClearOnRestartChanged();
    void stripRichTextChanged();

private:
    void loadSettings();
    void migrateHistory();
    void seedMySaved();
    void applyClearOnRestart();
    void removeLeftovers();
    void finishClear();
    void retryClearAfter(Seconds delay);
    void setHistory(std::vector<ClipboardItem> items);
    std::vector<ClipboardItem> protectedItems();
    /// A copy made ready to be recorded, or a text that already is, which is work for any thread.
    struct Prepared {
        std::optional<QString> imageFileName; ///< of the stored image
        std::optional<QImage> thumbnail;
        std::optional<QString> text; ///< where there is no image
        std::optional<bool> isNew;   ///< of a text that is recorded already: false where a protected row has it
    };
    /// When a tick saw a copy, which is the date of its row, however long its recording takes.
    struct Seen {
        Date at;
        int changeCount = 0;
    };
    struct Copy {
        Pasteboard::Reading reading;
        Seen seen;
    };
    struct Recording;
    void poll();
    void hearOfCopy();
    void standInLine(Copy copy);
    void record(const Copy &copy);
    void recordElsewhere(const Copy &copy);
    void finishOneRecording();
    [[nodiscard]] Prepared prepare(const Pasteboard::Reading &reading);
    void record(const Prepared &prepared, const Seen &seen);
    void cleanUpAfterPoll();
    void addRecording(const QString &target, const std::optional<QString> &name);
    [[nodiscard]] bool isExcludedApplicationFrontmost();
    bool recordText(const Prepared &prepared, const Seen &seen); ///< false when a protected row of that text stands
    [[nodiscard]] static ClipboardItem newItem(const QString &content, Date date);
    void stripFormatting(const QString &text, int changeCount);

    Ports m_ports;
    MediaStore m_media;
    RecordingThumbnails m_recordingThumbnails;
    RecordingMover m_recordingMover;
    std::vector<ClipboardItem> m_history;
    QString m_hotkeyCharacter;
    RetentionPeriod m_retentionPeriod{};
    bool m_launchAtLogin = false;
    std::vector<ExcludedApp> m_excludedApps;
    /// What was found of the program in front; found anew once it is another, since files of the desktop are read for
    /// it.
    std::optional<std::pair<RunningApplication, bool>> m_exclusion;
    bool m_autoClearOnRestart = false;
    bool m_stripRichText = false;
    bool m_isPaused = false;
    int m_lastChangeCount = 0;
    int m_heardSinceTick = 0;
    Date m_lastCleanupAt = Date::distantPast();
    bool m_isClearOpen = false;                      ///< what has come of it is not known yet
    bool m_hasClearRetry = false;                    ///< one for all
    std::vector<std::function<void()>> m_afterClear; ///< who waits to hear that it is done
    std::unique_ptr<Timer> m_timer;
    std::shared_ptr<Recording> m_recording; ///< a copy on its way that the main thread does not wait for
    std::deque<Copy> m_line;                ///< what was copied meanwhile
};

} // namespace tavrine
