#include "utilities/lofi/LofiManager.h"

#include "base/Print.h"
#include "base/PrivateFiles.h"
#include "base/SerialQueue.h"
#include "base/Time.h"
#include "ports/AudioDevices.h"
#include "ports/FilePanels.h"
#include "utilities/lofi/LofiTracks.h"
#include "utilities/lofi/TrackCopy.h"

#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QStringList>

#include <algorithm>
#include <utility>

namespace tavrine {
namespace {

constexpr int forEver = -1;

/// The content types of the panel: all sound, with what their files are called here.
constexpr auto audioFilter = "Audio (*.mp3 *.m4a *.m4b *.wav *.aif *.aiff *.aifc *.aac *.ac3 *.amr *.ape *.au *.caf "
                             "*.flac *.mid *.mka *.mp2 *.mpga *.oga *.ogg *.opus *.snd *.spx *.wave *.weba *.wma *.wv)";

void print(const char *words, const QString &what = {}) {
    printLine(QString::fromUtf8(words) + what);
}

QString lastComponent(const QString &path) {
    return QFileInfo(path).fileName();
}

} // namespace

LofiManager::LofiManager(Ports ports)
    : m_ports(std::move(ports)), m_isImportStopped(std::make_shared<std::atomic<bool>>(false)) {
    const auto path = preference::lofiCustomTrackPath.stored(m_ports.defaults);
    const auto name = preference::lofiCustomTrackName.stored(m_ports.defaults);
    if (path && name && QFileInfo::exists(*path))
        m_customTrackName = name;
    m_ports.devices.setDefaultOutputListener([self = QPointer(this)] {
        if (self)
            self->outputDeviceChanged();
    });
}

LofiManager::~LofiManager() {
    *m_isImportStopped = true;
    m_ports.devices.setDefaultOutputListener({});
}

QString LofiManager::tracksFolder() const {
    QString folder = lofiTracks::folder(m_ports.applicationSupport);
    makePrivateFolder(folder); // whoever wants to write there tells when it is missing
    return folder;
}

void LofiManager::expectPlay() {
    if (!m_isPlaying && m_ports.mayPlay())
        m_ports.players.expectPlayer();
}

void LofiManager::play() {
    if (!m_ports.mayPlay())
        return;
    const auto custom = preference::lofiCustomTrackPath.stored(m_ports.defaults);
    if (custom && QFileInfo::exists(*custom)) {
        playFile(*custom, Origin::custom);
        return;
    }
    const QString folder = tracksFolder();
    const QList<QString> names = lofiTracks::builtInNames();
    for (const QString &name : names) {
        const QString path = folder + QLatin1Char('/') + name;
        if (!QFileInfo::exists(path))
            continue;
        print("✅ Found local track: ", name);
        playFile(path, Origin::builtIn);
        return;
    }
    startDownload();
}

void LofiManager::playFile(const QString &path, Origin origin) {
    const int request = ++m_request;
    setState(m_isPlaying, true);
    m_ports.players.makePlayer(path, [self = QPointer(this), request, path, origin](AudioPlayers::Result result) {
        if (self && self->m_request == request)
            self->begin(path, origin, std::move(result));
    });
}

void LofiManager::begin(const QString &path, Origin origin, AudioPlayers::Result result) {
    if (const auto *failure = std::get_if<AudioPlayers::Failure>(&result)) {
        if (origin == Origin::builtIn && failure->cause == AudioPlayers::Failure::Cause::contents)
            QFile::remove(path);
        setState(m_isPlaying, false);
        failToPlay(failure->reason);
        return;
    }
    m_audioPlayer = std::get<std::unique_ptr<AudioPlayer>>(std::move(result));
    m_audioPlayer->setOnEnd([this](const QString &reason) { failToPlay(reason); });
    m_audioPlayer->setNumberOfLoops(forEver);
    m_audioPlayer->prepareToPlay();
    m_audioPlayer->play();
    setState(true, false);
    print("▶️ Playing lofi track: ", lastComponent(path));
}

/// Also when the player has ended under way. What sounded before does not go on unseen.
void LofiManager::failToPlay(const QString &reason) {
    m_audioPlayer.reset();
    print("❌ Failed to play audio: ", reason);
    setPlaying(false);
}

void LofiManager::startDownload() {
    if (m_isDownloading) {
        print("⚠️ Already downloading a track");
        return;
    }
    const QUrl url = m_ports.trackUrls.at(m_ports.anyOf(static_cast<int>(m_ports.trackUrls.size())));
    const QString name = url.fileName();
    const QString path = tracksFolder() + QLatin1Char('/') + name;
    print("⬇️ Starting download: ", name);
    setDownload(true, 0);
    m_downloadTask = m_ports.downloads.downloadTask(
        url, path,
        {.didWriteData =
             [this](qint64 written, qint64 expected) {
                 if (expected > 0)
                     setDownload(m_isDownloading, std::clamp(double(written) / double(expected), 0.0, 1.0));
             },
         .didFinishDownloading = [this, path](DownloadedFile &file) { finishDownload(path, file); },
         .didComplete =
             [this](const QString &error) {
                 if (!error.isEmpty()) {
                     print("❌ Download failed: ", error);
                     endDownload(0);
                 }
                 m_downloadTask.reset();
             }});
    m_downloadTask->resume();
}

void LofiManager::finishDownload(const QString &path, DownloadedFile &file) {
    const FileResult result = file.moveToDestination();
    if (!result) {
        print("❌ Failed to save downloaded track: ", result.reason());
        endDownload(0);
        return;
    }
    print("✅ Track downloaded successfully: ", lastComponent(path));
    m_ports.time.async(this, [this, path] {
        setDownload(false, 1);
        if (m_ports.mayPlay())
            playFile(path, Origin::builtIn);
    });
}

void LofiManager::endDownload(double progress) {
    m_ports.time.async(this, [this, progress] { setDownload(false, progress); });
}

void LofiManager::pause() {
    ++m_request;
    if (m_audioPlayer)
        m_audioPlayer->pause();
    setState(false, false);
    print("⏸️ Lofi playback paused");
}

void LofiManager::stop() {
    ++m_request;
    if (m_audioPlayer)
        m_audioPlayer->stop();
    m_audioPlayer.reset();
    setState(false, false);
    print("⏹️ Lofi playback stopped");
}

void LofiManager::outputDeviceChanged() {
    if (!m_isPlaying)
        return;
    print("🎧 Audio output device changed (e.g. Bluetooth disconnected). Pausing Lo-Fi playback.");
    pause();
}

void LofiManager::chooseCustomTrack() {
    OpenPanel panel;
    panel.title = QStringLiteral("Select Custom Lo-Fi Audio File");
    panel.filter = QString::fromLatin1(audioFilter);
    m_ports.filePanels.runOpenPanel(panel, [self = QPointer(this)](const std::optional<QString> &path) {
        if (self && path)
            self->importCustomTrack(*path);
    });
}

void LofiManager::importCustomTrack(const QString &path) {
    const QString destination = tracksFolder() + QLatin1Char('/') + lofiTracks::customFileName(lastComponent(path));
    m_imports.append(destination);
    const auto isStopped = [stop = m_isImportStopped] { return stop->load(); };
    m_ports.fileQueue.async([self = QPointer(this), time = &m_ports.time, isStopped, path, destination] {
        const FileResult result = copyWholeFile(path, destination, isStopped);
        time->async([self, isStopped, path, destination, result] {
            if (!self)
                return;
            if (!isStopped())
                self->finishImport(path, destination, result);
            else if (result && !self->isKnown(destination))
                QFile::remove(destination); // it was whole at the moment of the reset
        });
    });
}

bool LofiManager::isKnown(const QString &copy) const {
    return m_imports.contains(copy) || preference::lofiCustomTrackPath.stored(m_ports.defaults) == copy;
}

void LofiManager::finishImport(const QString &path, const QString &destination, const FileResult &result) {
    m_imports.removeOne(destination);
    if (!result) {
        print("❌ Failed to copy custom audio track: ", result.reason());
        return;
    }
    const QString name = lofiTracks::displayName(lastComponent(path));
    preference::lofiCustomTrackPath.set(m_ports.defaults, destination);
    preference::lofiCustomTrackName.set(m_ports.defaults, name);
    setCustomTrackName(name);
    print("✅ Imported custom Lo-Fi track: ", name);
    playAgain();
}

void LofiManager::resetToDefaultTrack() {
    *std::exchange(m_isImportStopped, std::make_shared<std::atomic<bool>>(false)) = true;
    const QStringList imports = std::exchange(m_imports, {});
    for (const QString &copy : imports) // those that are whole already and not yet known
        QFile::remove(copy);
    if (const auto path = preference::lofiCustomTrackPath.stored(m_ports.defaults))
        QFile::remove(*path);
    preference::lofiCustomTrackPath.remove(m_ports.defaults);
    preference::lofiCustomTrackName.remove(m_ports.defaults);
    setCustomTrackName(std::nullopt);
    playAgain();
}

/// So that another choice sounds at once.
void LofiManager::playAgain() {
    if (!m_isPlaying && !m_isStarting)
        return;
    stop();
    play();
}

void LofiManager::setState(bool isPlaying, bool isStarting) {
    const bool isOther = m_isPlaying != isPlaying || m_isStarting != isStarting;
    m_isPlaying = isPlaying;
    m_isStarting = isStarting;
    if (isOther)
        Q_EMIT changed();
}

void LofiManager::setDownload(bool isDownloading, double progress) {
    const bool isOther = m_isDownloading != isDownloading || m_downloadProgress != progress;
    m_isDownloading = isDownloading;
    m_downloadProgress = progress;
    if (isOther)
        Q_EMIT changed();
}

void LofiManager::setCustomTrackName(const std::optional<QString> &name) {
    if (std::exchange(m_customTrackName, name) != name)
        Q_EMIT changed();
}

} // namespace tavrine
