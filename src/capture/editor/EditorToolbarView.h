#pragma once

#include <QWidget>

namespace tavrine {

namespace look {
class Button;
}

class EditorModel;

/// The bar over the picture: where pictures come from at its left, where they go to at its right. It shows the model's
/// state and tells it what was pressed. Belongs to the editor's view; lives on the main thread.
class EditorToolbarView : public QWidget {
    Q_OBJECT

public:
    static constexpr int barHeight = 52;

    /// The model outlives the view.
    explicit EditorToolbarView(EditorModel &model, QWidget *parent = nullptr);

Q_SIGNALS:
    void cropPressed();
    void undoPressed();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void build();
    void showCopied();
    void showUpload();
    void showMode();

    EditorModel &m_model;
    look::Button *m_crop = nullptr;
    look::Button *m_undo = nullptr;
    look::Button *m_copy = nullptr;
    look::Button *m_upload = nullptr;
};

} // namespace tavrine
