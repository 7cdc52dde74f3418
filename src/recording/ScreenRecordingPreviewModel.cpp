#include "recording/ScreenRecordingPreviewModel.h"

#include "ports/FilePanels.h"
#include "recording/RecordingTexts.h"

#include <QFileInfo>
#include <QPointer>

#include <cmath>
#include <utility>

namespace tavrine {

ScreenRecordingPreviewModel::ScreenRecordingPreviewModel(const QString &filePath, const QString &fileName,
                                                         const QString &targetFolder, const Ports &ports,
                                                         Actions actions)
    : m_filePath(filePath), m_fileName(fileName), m_targetFolder(targetFolder), m_ports(ports),
      m_actions(std::move(actions)), m_fileSize(QFileInfo(filePath).size()) {}

ScreenRecordingPreviewModel::~ScreenRecordingPreviewModel() = default;

void ScreenRecordingPreviewModel::load() {
    m_ports.asset.facts(m_filePath, [self = QPointer(this)](const std::optional<MovieFacts> &facts) {
        if (self)
            self->take(facts);
    });
}

void ScreenRecordingPreviewModel::take(const std::optional<MovieFacts> &facts) {
    if (!facts)
        return;
    m_hasAudioTrack = facts->hasAudioTrack;
    m_duration = facts->duration;
    if (!facts->naturalSize.isEmpty())
        m_videoAspectRatio = std::abs(double(facts->naturalSize.width()) / facts->naturalSize.height());
    Q_EMIT changed();
}

void ScreenRecordingPreviewModel::play(QSize pixels) {
    if (m_isStopped)
        return;
    m_player = m_ports.players.makePlayer(m_filePath);
    m_player->setOnPicture([this](const QImage &picture) {
        m_picture = picture;
        Q_EMIT pictureChanged();
    });
    m_player->setOnFailure([this](const QString &reason) {
        m_failure = reason;
        m_player.reset();
        Q_EMIT changed();
    });
    setPictureSize(pixels);
    m_player->setMuted(m_isMuted);
    m_player->play();
}

void ScreenRecordingPreviewModel::setPictureSize(QSize pixels) {
    if (m_player && std::exchange(m_pictureSize, pixels) != pixels)
        m_player->setPictureSize(pixels);
}

void ScreenRecordingPreviewModel::stop() {
    m_isStopped = true;
    if (const auto player = std::exchange(m_player, nullptr))
        player->pause();
}

void ScreenRecordingPreviewModel::toggleMuted() {
    if (!m_hasAudioTrack)
        return;
    m_isMuted = !m_isMuted;
    if (m_player)
        m_player->setMuted(m_isMuted);
    Q_EMIT changed();
}

void ScreenRecordingPreviewModel::pressChange() {
    if (m_isStopped)
        return;
    m_ports.filePanels.runOpenPanel({.title = QStringLiteral("Select Folder"),
                                     .prompt = QStringLiteral("Select Folder"),
                                     .directory = m_targetFolder,
                                     .filter = {},
                                     .choosesDirectories = true},
                                    [self = QPointer(this)](const std::optional<QString> &folder) {
                                        if (!self || self->m_isStopped || !folder)
                                            return;
                                        self->m_targetFolder = *folder;
                                        self->m_actions.onFolderChosen(*folder);
                                        Q_EMIT self->changed();
                                    });
}

void ScreenRecordingPreviewModel::pressDelete() {
    if (!m_isStopped)
        m_actions.onCancel();
}

void ScreenRecordingPreviewModel::leave(const std::function<void(const Choice &choice)> &way) {
    if (m_isStopped)
        return;
    if (m_player)
        m_player->pause();
    const QString trimmed = m_fileName.trimmed();
    way({.fileName = trimmed.isEmpty() ? QStringLiteral("recording") : trimmed,
         .targetFolder = m_targetFolder,
         .isMuted = m_isMuted});
}

QString ScreenRecordingPreviewModel::fileSizeText() const {
    return tavrine::fileSizeText(m_fileSize);
}

QString ScreenRecordingPreviewModel::audioText() const {
    if (!m_hasAudioTrack)
        return QStringLiteral("No Audio Recorded");
    return m_isMuted ? QStringLiteral("Muted (Silent)") : QStringLiteral("Include Audio");
}

} // namespace tavrine
