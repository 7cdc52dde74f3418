#pragma once

#include "ports/Alerts.h"

#include <QDialog>

class QPlainTextEdit;
class QWidget;

namespace tavrine::look {

/// One modal question: a heading, words, room for text where that is asked for, and the buttons, the first one at the
/// right end. Escape takes the last button. Return takes the first, and Ctrl+Return where Return writes a line.
class AlertWindow : public QDialog {
    Q_OBJECT
public:
    /// A null size is a question without text.
    AlertWindow(const Alert &alert, const QSize &textArea, QWidget *parent = nullptr);

    [[nodiscard]] QPlainTextEdit *textEdit() const { return m_text; }
    using QWidget::create;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void recolour();

    QWidget *m_field = nullptr;
    QPlainTextEdit *m_text = nullptr;
};

/// Modal questions as windows of our own look.
class ModalAlerts final : public Alerts {
public:
    bool runModal(const Alert &alert) override;
    std::optional<QString> runModalForText(const Alert &alert, int width, int height) override;
};

} // namespace tavrine::look
