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
class Time;

/// One upload button, on a preview card or in an editor: a press, the run of the script, and the link on the
/// pasteboard. Belongs to its view; main thread.
///
///  1. At most one run is under way; a press during it does nothing.
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
    };
    using ShowToast = std::function<void(const QString &message, const QString &icon)>;
    struct Actions {
        /// The picture as it is now, as a PNG; none when it has no such form.
        std::function<std::optional<QByteArray>()> png;
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
    [[nodiscard]] QString buttonTitle() const;
    [[nodiscard]] QString buttonSymbol() const;

    /// The press.
    void upload();

Q_SIGNALS:
    /// A view may animate what follows.
    void uploadStateChanged();
    /// A press has had all its effect: the button is idle, or the card has been dismissed.
    void ended();

private:
    static void complete(const Ports &ports, const ShowToast &showToast, const UploadScriptRunResult &result,
                         const QPointer<UploadFlow> &self);
    void finish(const UploadScriptRunResult &result);
    void setUploadState(UploadButtonState state);

    Ports m_ports;
    Actions m_actions;
    UploadButtonState m_uploadState = UploadButtonState::idle;
};

} // namespace tavrine
