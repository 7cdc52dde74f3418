#pragma once

#include "base/FileResult.h"
#include "base/Preference.h"
#include "ports/AudioPlayer.h"
#include "ports/Downloads.h"
#include "ports/Folders.h"

#include <QList>
#include <QObject>
#include <QStringList>
#include <QUrl>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

class AudioDevices;
class FilePanels;
class SerialQueue;
class Time;

namespace preference {
inline constexpr Preference<QString> lofiCustomTrackPath{"lofiCustomTrackPath"}; ///< of the imported copy
inline constexpr Preference<QString> lofiCustomTrackName{"lofiCustomTrackName"}; ///< without its extension
} // namespace preference

/// Plays one looping track of background music: what the person has imported, else a built-in track, which is fetched
/// at the first time and kept. Main thread; the shell makes the one instance at its first use.
///
///  1. There is one download at a time, and it goes on while the music is paused or stopped.
///  2. A paused track is not gone on with: every play begins at its beginning. A play begins a moment after it was
///     asked for, when its player has been made; a later play, pause or stop takes its place. Until then what decides
///     about a track that plays, the button, an import and a reset, takes it for one.
///  3. When sound goes to another device the music pauses at once, and stays so when the old device is back.
///  4. A built-in track in which there is no music (what a server sent in its stead) is removed when a play has found
///     that out, so that the next one fetches a track again.
///  5. Importing copies the file, on the queue: a file is there whole or not at all, and until then the earlier choice
///     stands. A reset takes back an import that is under way.
class LofiManager : public QObject {
    Q_OBJECT

public:
    /// All outlive the manager.
    struct Ports {
        Time &time;
        UserDefaults &defaults;
        AudioPlayers &players;
        AudioDevices &devices;
        Downloads &downloads;
        FilePanels &filePanels;
        SerialQueue &fileQueue; ///< for copies
        QString applicationSupport;
        QList<QUrl> trackUrls;
        std::function<int(int count)> anyOf; ///< a number from 0 below `count`, each as likely
        std::function<bool()> mayPlay;       ///< asked at each play, and when a download is over
    };

    explicit LofiManager(Ports ports);
    ~LofiManager() override;

    [[nodiscard]] bool isPlaying() const { return m_isPlaying; }
    /// A play has been asked for, and its player is not made yet.
    [[nodiscard]] bool isStarting() const { return m_isStarting; }
    [[nodiscard]] bool isDownloading() const { return m_isDownloading; }
    [[nodiscard]] double downloadProgress() const { return m_downloadProgress; } ///< 0 to 1
    [[nodiscard]] const std::optional<QString> &customTrackName() const { return m_customTrackName; }
    [[nodiscard]] const QList<QUrl> &trackUrls() const { return m_ports.trackUrls; }

    /// The person may be about to play.
    void expectPlay();
    void play();
    void pause();
    void stop();
    /// Asks the person for a file.
    void chooseCustomTrack();
    void importCustomTrack(const QString &path);
    void resetToDefaultTrack();

Q_SIGNALS:
    /// `isPlaying`, `isStarting`, the download or the name of the track.
    void changed();

private:
    enum class Origin { custom, builtIn };

    [[nodiscard]] QString tracksFolder() const;
    void playFile(const QString &path, Origin origin);
    void begin(const QString &path, Origin origin, AudioPlayers::Result result);
    void failToPlay(const QString &reason);
    void startDownload();
    void finishDownload(const QString &path, DownloadedFile &file);
    void endDownload(double progress);
    void outputDeviceChanged();
    void finishImport(const QString &path, const QString &destination, const FileResult &result);
    [[nodiscard]] bool isKnown(const QString &copy) const; ///< chosen, or being imported
    void playAgain();

    void setPlaying(bool isPlaying) { setState(isPlaying, m_isStarting); }
    void setState(bool isPlaying, bool isStarting);
    void setDownload(bool isDownloading, double progress);
    void setCustomTrackName(const std::optional<QString> &name);

    Ports m_ports;
    bool m_isPlaying = false;
    bool m_isStarting = false;
    bool m_isDownloading = false;
    double m_downloadProgress = 0;
    std::optional<QString> m_customTrackName;
    std::unique_ptr<AudioPlayer> m_audioPlayer;
    std::unique_ptr<DownloadTask> m_downloadTask;
    int m_request = 0; ///< counts what takes the place of a play that has not begun yet
    std::shared_ptr<std::atomic<bool>> m_isImportStopped; ///< of the imports since the last reset
    QStringList m_imports;                                ///< where they go, until they are over
};

} // namespace tavrine
