#pragma once

#include "capture/reading/OCRResultModel.h"

#include <QWidget>

#include <functional>

class QLayout;

namespace tavrine {

namespace look {
class Button;
class Label;
} // namespace look

class EditableTextView;

/// The editor's sheet with the text of the picture, to be edited, searched for and copied. It paints its model. Belongs
/// to the editor's view; main thread.
class OCRResultView : public QWidget {
    Q_OBJECT

public:
    struct Actions {
        std::function<void()> onCopy; ///< after the copying; may be empty
        std::function<void()> onCancel;
    };
    /// The ports outlive the view.
    OCRResultView(const QString &text, Pasteboard &pasteboard, UrlOpener &urlOpener, Time &time, Actions actions,
                  QWidget *parent = nullptr);
    ~OCRResultView() override;

    [[nodiscard]] OCRResultModel &model() { return m_model; }
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    [[nodiscard]] QLayout *makeHeader();
    [[nodiscard]] QLayout *makeFooter();
    void showText();
    void showCopied();

    OCRResultModel m_model;
    Actions m_actions;
    EditableTextView *m_text = nullptr;
    look::Label *m_count = nullptr;
    look::Button *m_copy = nullptr;
};

} // namespace tavrine
