#pragma once

#include "look/PanelSurface.h"

#include <memory>
#include <vector>

namespace tavrine {

class PreviewActionButton;
class SnippetPreviewModel;

/// The card with a fresh capture: its picture, the time that it has left and what can be done with it. It shows its
/// model and tells it of presses, of the pointer and of the keyboard. The picture can be dragged into another program.
/// In a window that takes the keyboard, Tab and the arrow keys go through it, Return presses and Escape dismisses.
///
/// Main thread; owned by its window.
class SnippetPreviewCard final : public look::PanelSurface {
    Q_OBJECT
public:
    explicit SnippetPreviewCard(std::shared_ptr<SnippetPreviewModel> model);
    ~SnippetPreviewCard() override;

protected:
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool event(QEvent *event) override;

private:
    class DismissButton;
    class Thumbnail;
    class TimeBar;

    void addButtons();
    void refresh();

    std::shared_ptr<SnippetPreviewModel> m_model;
    Thumbnail *m_thumbnail;
    TimeBar *m_timeBar;
    QWidget *m_row = nullptr;                     ///< of the buttons
    std::vector<PreviewActionButton *> m_buttons; ///< left to right
    PreviewActionButton *m_copy = nullptr;
    PreviewActionButton *m_save = nullptr;
    PreviewActionButton *m_upload = nullptr;
};

} // namespace tavrine
