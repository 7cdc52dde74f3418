#pragma once

#include "base/Date.h"
#include "ports/MovieAsset.h"
#include "ports/MoviePlayer.h"

#include <QObject>

namespace tavrine {

class FilePanels;

/// A recording that waits for its name and its place. Main thread; held by its view and by the flow.
class ScreenRecordingPreviewModel final : public QObject {
    Q_OBJECT

public:
    /// All outlive the model.
    struct Ports {
        MovieAsset &asset;
        MoviePlayers &players;
        FilePanels &filePanels;
    };
    struct Choice {
        QString fileName; ///< trimmed, never empty
        QString targetFolder;
        bool isMuted = false;
        bool operator==(const Choice &) const = default;
    };
    struct Actions {
        std::function<void(const Choice &choice)> onSave;
        std::function<void(const Choice &choice)> onCopy;
        std::function<void()> onCancel;
        std::function<void(const QString &folder)> onFolderChosen;
    };

    /// `fileName` is offered as the name; `targetFolder` may be empty for none.
    ScreenRecordingPreviewModel(const QString &filePath, const QString &fileName, const QString &targetFolder,
                                const Ports &ports, Actions actions);
    ~ScreenRecordingPreviewModel() override;

    /// Looks into the file.
    void load();
    /// Plays it, in pictures of that size, until `stop`.
    void play(QSize pixels);
    void setPictureSize(QSize pixels);
    /// Ends the player; presses do nothing any more.
    void stop();

    // Before it is shown.
    void setNotice(const QString &notice) { m_notice = notice; }
    void setMuted(bool isMuted) { m_isMuted = isMuted; }

    void setFileName(const QString &name) { m_fileName = name; }
    void toggleMuted();
    void pressChange();
    void pressDelete();
    void pressCopy() { leave(m_actions.onCopy); }
    void pressSave() { leave(m_actions.onSave); }

    [[nodiscard]] const QString &filePath() const { return m_filePath; }
    [[nodiscard]] const QString &fileName() const { return m_fileName; }
    [[nodiscard]] const QString &targetFolder() const { return m_targetFolder; }
    /// What went wrong with the recording, for the person; empty for nothing.
    [[nodiscard]] const QString &notice() const { return m_notice; }
    [[nodiscard]] QString fileSizeText() const;
    [[nodiscard]] QString audioText() const; ///< what stands beside the switch
    [[nodiscard]] bool isMuted() const { return m_isMuted; }
    [[nodiscard]] bool hasAudioTrack() const { return m_hasAudioTrack; }
    [[nodiscard]] double videoAspectRatio() const { return m_videoAspectRatio; }
    [[nodiscard]] std::optional<Seconds> duration() const { return m_duration; } ///< none until it is known
    /// What is to be seen of it now; null until there is something.
    [[nodiscard]] const QImage &picture() const { return m_picture; }
    /// Nothing can be shown of it, for this reason.
    [[nodiscard]] const std::optional<QString> &failure() const { return m_failure; }

Q_SIGNALS:
    void changed();
    void pictureChanged();

private:
    void leave(const std::function<void(const Choice &choice)> &way);
    void take(const std::optional<MovieFacts> &facts);

    QString m_filePath;
    QString m_fileName;
    QString m_notice;
    QString m_targetFolder;
    Ports m_ports;
    Actions m_actions;
    qint64 m_fileSize;
    bool m_isMuted = false;
    bool m_hasAudioTrack = true;
    bool m_isStopped = false;
    double m_videoAspectRatio = 16.0 / 9.0;
    std::optional<Seconds> m_duration;
    std::optional<QString> m_failure;
    QImage m_picture;
    QSize m_pictureSize; ///< that is asked for
    std::unique_ptr<MoviePlayer> m_player;
};

} // namespace tavrine
