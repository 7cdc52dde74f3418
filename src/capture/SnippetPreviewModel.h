#pragma once

#include "base/Date.h"
#include "upload/UploadButton.h"

#include <QImage>
#include <QObject>

#include <functional>
#include <memory>

namespace tavrine {

class Time;
class Timer;

/// One card with a fresh capture: what its buttons say and do, and the time that it has left.
///
/// Main thread. Lives as long as its card is on the screen, and through its fade; after `stop` it does nothing more.
///
///  1. The countdown runs from `appear` on. It holds, and keeps what is left, while the pointer is over the card or
///     the keyboard in it, the picture is being dragged out or made ready for an upload, or the card is set aside. An
///     upload that has begun ends it for good; at 0 the card is dismissed.
///  2. The capture stands on the pasteboard before there is a card, so it counts as copied from the start, and nothing
///     takes that back.
class SnippetPreviewModel : public QObject {
    Q_OBJECT

public:
    struct Actions {
        std::function<void()> onNewSnip;
        std::function<void()> onCopy;
        /// The argument is told, once, whether the picture was saved.
        std::function<void(std::function<void(bool)>)> onSave;
        std::function<void()> onEdit;
        std::function<void()> onGetText;
        std::function<void()> onDismiss;
        /// Makes the file of a picture that is dragged out, in the background; its path is known at once, and empty
        /// when there will be no file. `finish` waits for it.
        std::function<QString()> beginDragFile;
        std::function<void()> finishDragFile;
    };

    static constexpr Seconds totalDuration{7.0};
    static constexpr Seconds tickInterval{0.05};
    static constexpr Seconds dismissalAfterSave{1.0};

    SnippetPreviewModel(QImage image, Actions actions, Time &time, std::unique_ptr<UploadButton> uploadButton);
    ~SnippetPreviewModel() override;

    [[nodiscard]] const QImage &image() const { return m_image; }
    [[nodiscard]] double remaining() const { return m_remaining; }
    [[nodiscard]] double remainingPart() const { return m_remaining / totalDuration.count(); }
    [[nodiscard]] bool isCountingDown() const { return m_timer != nullptr; }
    [[nodiscard]] bool isHovering() const { return m_isHovering; }
    [[nodiscard]] bool isCopied() const { return m_isCopied; }
    [[nodiscard]] bool isSaved() const { return m_isSaved; }
    [[nodiscard]] const UploadButton &uploadButton() const { return *m_uploadButton; }

    void appear();
    void setHovering(bool isHovering) { m_isHovering = isHovering; }
    void setHoldingKeyboard(bool isHoldingKeyboard) { m_isHoldingKeyboard = isHoldingKeyboard; }
    void setDragging(bool isDragging) { m_isDragging = isDragging; }
    /// The card is off the screen for a while.
    void setAside(bool isAside) { m_isAside = isAside; }
    [[nodiscard]] bool isAside() const { return m_isAside; }
    /// The card is on its way off the screen.
    void stop();

    void pressNew();
    void pressCopy();
    void pressSave();
    void pressEdit();
    void pressGetText();
    void pressUpload();
    void pressDismiss();
    [[nodiscard]] QString beginDragFile();
    void finishDragFile();

Q_SIGNALS:
    void changed();
    void remainingChanged();

private:
    void tick();
    void followUpload();

    QImage m_image;
    Actions m_actions;
    Time &m_time;
    std::unique_ptr<UploadButton> m_uploadButton;
    double m_remaining = totalDuration.count();
    std::unique_ptr<Timer> m_timer;
    bool m_isHovering = false;
    bool m_isHoldingKeyboard = false;
    bool m_isDragging = false;
    bool m_isAside = false;
    bool m_isCopied = true;
    bool m_isSaving = false;
    bool m_isSaved = false;
    bool m_isStopped = false;
};

} // namespace tavrine
