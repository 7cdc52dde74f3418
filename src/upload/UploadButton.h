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

class Pasteboard;
class SerialQueue;
class Time;

/// One upload button, on a preview card or in an editor: whether it is there, what it says, and a press with the run of
/// the script and the link on the pasteboard. `Uploads` makes it, the model of its view owns it, and the views read it;
/// main thread.
///
///  1. At most one run is under way; a press during it, or while its picture is made ready, does nothing.
///  2. Whoever pressed gets the answer: a run outlives its view, and its link reaches the pasteboard all the same.
///  3. A button that is not shown cannot be pressed.
class UploadButton final : public QObject {
    Q_OBJECT

public:
    /// What becomes of the view once the link is there.
    enum class AfterLink { dismissView, returnToIdle };

    static constexpr Seconds dismissDelay{0.8}; ///< from the link to the end of a card
    static constexpr Seconds idleDelay{2.0};    ///< from the link to a button that can be pressed, in an editor

    /// All outlive every run.
    struct Ports {
        Pasteboard &pasteboard;
        Time &time;
        SerialQueue &pictureQueue; ///< a picture of a large screen takes a fifth of a second to become a PNG
    };
    using PngMaker = std::function<std::optional<QByteArray>()>;
    using ShowToast = std::function<void(const QString &message, const QString &icon)>;
    /// The last three are kept as long as a run: they may be called after the view is gone.
    struct Actions {
        std::function<bool()> isShown;
        std::function<QString()> script; ///< asked at the press
        /// Takes the picture as it is now. What it returns is called once, on the queue of the pictures: the PNG, or
        /// none when the picture has no such form.
        std::function<PngMaker()> picture;
        UploadRunner run;
        std::function<QString()> uploadFileName;
        ShowToast showToast;
    };

    UploadButton(Ports ports, Actions actions, AfterLink afterLink, QObject *parent = nullptr);

    [[nodiscard]] bool isShown() const { return m_actions.isShown(); }
    [[nodiscard]] UploadButtonState state() const { return m_state; }
    /// From a press until its run has ended, or its picture turned out to have no PNG.
    [[nodiscard]] bool isBusy() const { return m_isPreparing || m_state == UploadButtonState::uploading; }
    [[nodiscard]] QString title() const;
    [[nodiscard]] QString symbol() const;

    void press();

Q_SIGNALS:
    /// What the button shows: the state, or whether it is there. A view may animate what follows.
    void changed();
    /// The link is there and has been seen: time for a card to go.
    void viewDismissed();

private:
    struct Press;

    static void begin(const Press &press, const std::optional<QString> &imageBase64);
    static void complete(const Press &press, const UploadScriptRunResult &result);
    void finish(const UploadScriptRunResult &result);
    void setState(UploadButtonState state);

    Ports m_ports;
    Actions m_actions;
    AfterLink m_afterLink;
    bool m_isPreparing = false;
    UploadButtonState m_state = UploadButtonState::idle;
};

} // namespace tavrine
