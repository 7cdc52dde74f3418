#pragma once

#include "capture/reading/OCRNotepadModel.h"
#include "look/PanelSurface.h"

#include <functional>

namespace tavrine {

namespace look {
class Button;
class EmptyState;
class Label;
} // namespace look

class EditableTextView;

/// The notepad: the text of a capture, to be read, selected and copied. It paints its model; what is copied when is the
/// model's. Belongs to its panel; main thread.
class OCRNotepadView : public look::PanelSurface {
    Q_OBJECT

public:
    /// The pasteboard and the clock outlive the view; the state need not. `onDismiss` comes with Escape and the button.
    OCRNotepadView(OCRNotepadState &state, Pasteboard &pasteboard, Time &time, std::function<void()> onDismiss,
                   QWidget *parent = nullptr);
    ~OCRNotepadView() override;

    [[nodiscard]] OCRNotepadModel &model() { return m_model; }
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void build();
    [[nodiscard]] QLayout *makeHeader();
    void showState();
    void showCopied();

    OCRNotepadModel m_model;
    std::function<void()> m_onDismiss;
    QWidget *m_loading = nullptr;
    look::EmptyState *m_error = nullptr;
    EditableTextView *m_text = nullptr;
    QWidget *m_footer = nullptr;
    look::Label *m_count = nullptr;
    look::Button *m_copy = nullptr;
};

} // namespace tavrine
