#pragma once

#include <QWidget>

#include <vector>

namespace tavrine {

namespace look {
class Button;
}

class EditorModel;

/// The bar over the picture: where pictures come from at its left, where they go to at its right. It shows the model's
/// state and tells it what was pressed. Where its words have no room its buttons show their symbols alone. Belongs to
/// the editor's view; lives on the main thread.
class EditorToolbarView : public QWidget {
    Q_OBJECT

public:
    static constexpr int barHeight = 52;

    /// The model outlives the view.
    explicit EditorToolbarView(EditorModel &model, QWidget *parent = nullptr);

    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    void cropPressed();
    void undoPressed();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void build();
    look::Button *addWordButton(const char *symbol, const char *word, const char *help);
    void setWord(look::Button *button, const QString &word);
    void showWords(bool areShown);
    void fitWords();
    void showCopied();
    void showUpload();
    void showMode();

    EditorModel &m_model;
    look::Button *m_crop = nullptr;
    look::Button *m_undo = nullptr;
    look::Button *m_copy = nullptr;
    look::Button *m_upload = nullptr;
    std::vector<look::Button *> m_wordButtons; ///< their accessible names are the words
};

} // namespace tavrine
