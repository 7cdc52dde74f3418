#pragma once

#include "base/Date.h"
#include "upload/UploadButtonState.h"
#include "upload/UploadRunner.h"

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <optional>

namespace tavrine {

class CustomUploadManager;
class Pasteboard;
class SerialQueue;
class Time;

/// One upload button, on a preview card or in an editor: a press, the run of the script, and the link on the
/// pasteboard. Belongs to its view; main thread.
///
///  1. At most one run is under way; a press during it, or while its picture is made ready, does nothing.
///  2. Whoever pressed gets the answer: a run outlives its view, and its link reaches the pasteboard all the same.
class UploadFlow final : public QObject {
    Q_OBJECT

public:
    static constexpr Seconds dismissDelay{0.8}; ///< from the link to the end of the card
    static constexpr Seconds idleDelay{2.0};    ///< from the link to a button that can be pressed, in an editor
    static constexpr auto doneSymbol = "checkmark.circle.fill";
    static constexpr auto idleSymbol = "icloud.and.arrow.up";
    static constexpr auto failureSymbol = "exclamationmark.triangle.fill";

    /// All outlive every run.
    struct Ports {
        CustomUploadManager &manager;
        Pasteboard &pasteboard;
        Time &time;
        SerialQueue &pictureQueue; ///< a picture of a large screen takes a fifth of a second to become a PNG
    };
    using PngMaker = std::function<std::optional<QByteArray>()>;
    using ShowToast = std::function<void(const QString &message, const QString &icon)>;
    struct Actions {
        /// Takes the picture as it is now. What it returns is called once, on the queue of the pictures: the PNG, or
        /// none when the picture has no such form.
        std::function<PngMaker()> picture;
        UploadRunner run;
        std::function<QString()> uploadFileName;
        /// Kept as long as a run: they may be called after the view is gone.
        ShowToast showToast;
        /// A card's: none in an editor.
        std::function<void()> stopCountdown{};
        /// A card's end after an upload; without it the button returns to idle.
        std::function<void()> onDismiss{};
    };

    UploadFlow(Ports ports, Actions actions, QObject *parent = nullptr);

    [[nodiscard]] UploadButtonState uploadState() const { return m_uploadState; }
    /// From a press until its run has ended, or its picture turned out to have no PNG.
    [[nodiscard]] bool isBusy() const { return m_isPreparing || m_uploadState == UploadButtonState::uploading; }
    [[nodiscard]] QString buttonTitle() const;
    [[nodiscard]] QString buttonSymbol() const;

    /// The press.
    void upload();

Q_SIGNALS:
    /// A view may animate what follows.
    void uploadStateChanged();
    /// There was no PNG; nothing has been run and the state is the one before the press.
    void preparationFailed();
    /// A press has had all its effect: the button is idle, or the card has been dismissed.
    void ended();

private:
    struct Press;

    static void begin(const Press &press, const std::optional<QString> &imageBase64);
    static void complete(const Press &press, const UploadScriptRunResult &result);
    void finish(const UploadScriptRunResult &result);
    void setUploadState(UploadButtonState state);

    Ports m_ports;
    Actions m_actions;
    bool m_isPreparing = false;
    UploadButtonState m_uploadState = UploadButtonState::idle;
};

} // namespace tavrine
