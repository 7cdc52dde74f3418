#pragma once

#include <QWidget>

class QLineEdit;

namespace tavrine::look {

class Button;

/// A search field: a magnifying glass, the text and a clear button that shows while there is text. The text itself is
/// the toolkit's line edit, so input methods, selection, undo and screen readers work as everywhere.
class SearchField : public QWidget {
    Q_OBJECT
public:
    /// hero: the large field on top of a panel, without a frame; framed: one among other controls.
    enum class Style { hero, framed };

    explicit SearchField(const QString &placeholder, Style style = Style::hero, QWidget *parent = nullptr);

    [[nodiscard]] QString text() const;
    /// Emits `textChanged` when it is another text; the same one leaves the field as it is.
    void setText(const QString &text);
    /// Gives the field the keyboard.
    void focus();
    [[nodiscard]] QLineEdit *lineEdit() const { return m_edit; }
    /// Puts a widget at the right end, behind the clear button. Takes it over.
    void addTrailing(QWidget *widget);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return {120, sizeHint().height()}; }

Q_SIGNALS:
    void textChanged(const QString &text);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    bool event(QEvent *event) override;
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void recolour();
    void place();
    void showMenu(const QPoint &place);

    Style m_style;
    QLineEdit *m_edit;
    Button *m_clear;
    QWidget *m_trailing = nullptr;
};

} // namespace tavrine::look
