#pragma once

#include <QPlainTextEdit>

namespace tavrine {

/// A text that can be edited, or only selected, in the look's colours. A text of any length costs only what is seen of
/// it. Belongs to the view that it stands in; main thread.
class EditableTextView : public QPlainTextEdit {
    Q_OBJECT

public:
    enum class Kind { editable, selectable };
    explicit EditableTextView(Kind kind, QWidget *parent = nullptr);

    /// To the letter; `toPlainText` turns spaces that do not break into others.
    [[nodiscard]] QString text() const;
    /// What is there already is left alone, with its selection.
    void setText(const QString &wanted);

Q_SIGNALS:
    void textEdited(const QString &text); ///< by the person or by `setText`

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;
    [[nodiscard]] QMimeData *createMimeDataFromSelection() const override; ///< to the letter as well

private:
    void recolour();

    bool m_isRecolouring = false;
};

} // namespace tavrine
