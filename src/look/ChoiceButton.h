#pragma once

#include "look/Control.h"

#include <QStringList>

namespace tavrine::look {

/// One of several choices, with a menu of all of them behind a press. To a screen reader its name is the row's, and the
/// choice its value.
class ChoiceButton : public Control {
    Q_OBJECT
public:
    explicit ChoiceButton(const QStringList &texts, QWidget *parent = nullptr);

    [[nodiscard]] int current() const { return m_current; }
    /// Does not emit.
    void setCurrent(int index);
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

    [[nodiscard]] QAccessible::Role accessibleRole() const override { return QAccessible::ButtonMenu; }
    /// Besides the menu, which is a window that screen readers do not see.
    [[nodiscard]] QStringList actionNames() const override;
    void act(const QString &name) override;

Q_SIGNALS:
    /// A person chose another one.
    void chosen(int index);

protected:
    void paint(QPainter &painter) override;
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void open();
    void choose(int index);

    QStringList m_texts;
    int m_current = 0;
};

} // namespace tavrine::look
