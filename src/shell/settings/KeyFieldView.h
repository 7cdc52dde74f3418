#pragma once

#include <QWidget>

namespace tavrine {

/// One key behind the modifiers of a global shortcut, as key caps in a field. What is typed while it has the keyboard
/// becomes the key, alone or together with the modifiers. Main thread.
class KeyFieldView final : public QWidget {
    Q_OBJECT

public:
    explicit KeyFieldView(QWidget *parent = nullptr);

    void setKey(const QString &key);
    [[nodiscard]] const QString &key() const { return m_key; }
    [[nodiscard]] QSize sizeHint() const override;

Q_SIGNALS:
    /// What was typed; the key itself is the owner's to set.
    void typed(const QString &text);

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    QString m_key;
};

} // namespace tavrine
