#pragma once

#include <QPlainTextEdit>

#include <memory>
#include <optional>

namespace tavrine {

class ScriptHighlighter;

/// An editor for a script: line numbers, colours, brackets that find each other, and the line of an error. Belongs to
/// its page; main thread. Follows the theme.
///
/// Return keeps the indentation; Tab and Shift+Tab move the selected lines. Escape, or Control with Tab, hands the
/// keyboard on, so that nobody is caught in the editor.
class ScriptEditorView final : public QPlainTextEdit {
    Q_OBJECT

public:
    explicit ScriptEditorView(QWidget *parent = nullptr);
    ~ScriptEditorView() override;

    /// Counted from 1; none: no error is marked.
    void setErrorLine(std::optional<int> line);
    /// Replaces the text as one step that can be undone, with the cursor at its start.
    void replaceText(const QString &text);
    /// The text as it was typed; `toPlainText` turns spaces that do not break into others.
    [[nodiscard]] QString script() const;

    [[nodiscard]] QSize sizeHint() const override { return {480, 200}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {200, 120}; }
    [[nodiscard]] int gutterWidth() const;

Q_SIGNALS:
    void edited(); ///< by the person
    void focusChanged();

protected:
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void refreshTheme();
    void refreshMarks();
    void refreshGutter();
    void paintGutter(QPaintEvent *event);
    void breakLine();
    void indent();
    void outdent();
    void closeBrace();
    /// The cursor's selection, stretched to whole lines.
    [[nodiscard]] QTextCursor selectedLines() const;
    [[nodiscard]] bool hasSelectedLines() const;

    QWidget *m_gutter;
    std::unique_ptr<ScriptHighlighter> m_highlighter;
    std::optional<int> m_errorLine;
    int m_gutterDigits = 0;
    bool m_isReplacing = false;
};

} // namespace tavrine
