#pragma once

#include "look/MotionClock.h"
#include "look/Theme.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QPointer>

class QPainter;

namespace tavrine::look {

/// What all things share that are pressed: hover that fades, a focus ring that only the keyboard shows, tool tips and
/// an accessible name. Takes the focus by the keyboard only, so that a click leaves it in a search field.
class Control : public QAbstractButton {
    Q_OBJECT
public:
    explicit Control(QWidget *parent = nullptr);
    ~Control() override;

    [[nodiscard]] bool showsFocus() const { return m_ring != nullptr; }

    // To a screen reader.
    [[nodiscard]] virtual QAccessible::Role accessibleRole() const;
    /// What can be done with it. The first is what a click does.
    [[nodiscard]] virtual QStringList actionNames() const;
    /// Does one of them.
    virtual void act(const QString &name);

protected:
    /// Paints within `rect()`; the painter is prepared.
    virtual void paint(QPainter &painter) = 0;
    [[nodiscard]] const Theme &theme() const { return themeOfThis(); }
    /// 0 at rest, 1 under the pointer.
    [[nodiscard]] double hoverPart() const { return isEnabled() ? m_hoverPart : 0; }
    /// What the focus ring goes round.
    [[nodiscard]] virtual QRectF body() const { return rect(); }
    [[nodiscard]] virtual qreal cornerRadius() const;
    /// The ground of a control over `rest` in its present state.
    [[nodiscard]] QColor ground(const QColor &rest) const;

    void paintEvent(QPaintEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    [[nodiscard]] const Theme &themeOfThis() const;
    void hoverTo(double part);
    void dropRing();

    Motion m_hover;
    double m_hoverPart = 0;
    QPointer<QWidget> m_ring;
    QString m_nameByToolTip;
    bool m_isByKeyboard = false; // how the focus came
};

} // namespace tavrine::look
