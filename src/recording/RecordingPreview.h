#pragma once

#include "panels/FloatingPanel.h"
#include "panels/TakenCorner.h"
#include "ports/Folders.h"
#include "recording/ScreenRecordingPreviewModel.h"

namespace tavrine {

class Pasteboard;

/// A recording that is to be looked at.
struct ShownRecording {
    QString path;
    QString name = {};   ///< that the person gave it before; empty for none
    QString notice = {}; ///< what went wrong with it, for the person; empty for nothing
    bool isMuted = false;
};

/// The window in which a finished recording is looked at, named, saved, copied or thrown away. Belongs to the recorder;
/// main thread.
///
/// A recording leaves the folder of temporary files by the person's word alone: by being saved or deleted. One whose
/// window goes in another way, or that could not be saved, stays there, and is told as `onUnseen`.
class RecordingPreview final : public QObject {
    Q_OBJECT

public:
    /// All outlive it.
    struct Ports {
        Time &time;
        Screens &screens;
        PanelWindows &windows;
        MovieAsset &asset;
        MoviePlayers &players;
        FilePanels &filePanels;
        Pasteboard &pasteboard;
        Folders folders;
        TakenCorner &corner;
    };
    /// The recordings' folder and what is done when a file goes there. One that is missing does nothing.
    struct Saving {
        std::function<std::optional<QString>()> quickShotsDirectory;
        std::function<QString()> customSaveDirectoryPath;
        std::function<void(const QString &folder)> setCustomSaveDirectoryPath;
        /// Moves the movie there and tells the history, the pasteboard and the file manager of it. `then` is told its
        /// new path, or none when it is where it was; within the call unless that takes long.
        using Then = std::function<void(const std::optional<QString> &savedPath)>;
        std::function<void(const QString &path, const QString &name, Then then)> saveRecording;
    };
    struct Actions {
        std::function<void()> activateApplication;
        std::function<void(const QString &message, const QString &icon)> showToast;
        std::function<void(const ShownRecording &recording)> onUnseen; ///< to be shown another time
        std::function<void(const ShownRecording &recording)> onPutOff; ///< the same, but not at once
        std::function<void()> onLeft;                                  ///< the next may come
    };
    using View = std::function<QWidget *(std::shared_ptr<ScreenRecordingPreviewModel>)>;

    static constexpr QSizeF size{380, 430};
    static constexpr QPointF margin{24, 48}; ///< from the lower left corner of the screen
    static constexpr Seconds untilSavingIsTold{0.3};

    RecordingPreview(Ports ports, Saving saving, Actions actions, View view);
    ~RecordingPreview() override;

    void show(const ShownRecording &recording);
    /// Takes the window off the screen; the file stays where it is.
    void close();

    [[nodiscard]] bool isOpen() const { return m_model != nullptr; }
    /// Null while none is open.
    [[nodiscard]] PanelWindow *window() const { return m_panel.window(); }
    [[nodiscard]] ScreenRecordingPreviewModel *model() const { return m_model.get(); }
    /// While one is open: it, with the name as it is now.
    [[nodiscard]] ShownRecording shown() const;

private:
    using Choice = ScreenRecordingPreviewModel::Choice;
    enum class Use { save, copy };

    [[nodiscard]] ScreenRecordingPreviewModel::Actions modelActions(const QString &path);
    [[nodiscard]] QString firstFolder() const;
    void closedFromOutside();
    void finish(const QString &path, const Choice &choice, Use use);
    void goOn(const QString &original, const QString &path, const Choice &choice, Use use);
    void goneOn(const QString &original, const QString &path, const std::optional<QString> &savedPath,
                const Choice &choice, Use use);
    void copy(const QString &path);
    void saveFailed(const QString &original, const QString &path, const Choice &choice, Use use);
    void warn(const QString &words);

    Ports m_ports;
    Saving m_saving;
    Actions m_actions;
    View m_view;
    std::shared_ptr<ScreenRecordingPreviewModel> m_model;
    FloatingPanel m_panel;
};

} // namespace tavrine
