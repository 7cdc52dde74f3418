#include "look/Control.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/FocusRing.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/ToolTip.h"

#include <QAccessibleActionInterface>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>

#include <utility>

namespace tavrine::look {

Control::Control(QWidget *parent) : QAbstractButton(parent) {
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover, false);
    installAccessibility();
}

Control::~Control() {
    delete m_ring;
}

QAccessible::Role Control::accessibleRole() const {
    if (!isCheckable())
        return QAccessible::Button;
    return autoExclusive() ? QAccessible::RadioButton : QAccessible::CheckBox;
}

QStringList Control::actionNames() const {
    return {isCheckable() ? QAccessibleActionInterface::toggleAction() : QAccessibleActionInterface::pressAction()};
}

void Control::act(const QString &) {
    click();
}

qreal Control::cornerRadius() const {
    return radius::control;
}

const Theme &Control::themeOfThis() const {
    return themeOf(this);
}

QColor Control::ground(const QColor &rest) const {
    const Theme &colours = theme();
    if (isDown())
        return rest.alpha() == 255 ? over(rest, colours.pressed) : mixed(rest, colours.pressed, 1);
    const QColor hovered = rest.alpha() == 255 ? over(rest, colours.hover)
                           : rest.alpha() == 0 ? colours.hover
                                               : mixed(rest, colours.pressed, 0.6);
    return mixed(rest, hovered, hoverPart());
}

void Control::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    if (!isEnabled())
        painter.setOpacity(0.45);
    paint(painter);
}

void Control::hoverTo(double part) {
    const double from = m_hoverPart;
    m_hover.start(duration::hover, easeOut, [this, from, part](double value) {
        m_hoverPart = from + (part - from) * value;
        update();
    });
}

void Control::enterEvent(QEnterEvent *event) {
    m_hover.stop();
    m_hoverPart = 1; // at once: a control follows the hand
    update();
    QAbstractButton::enterEvent(event);
}

void Control::leaveEvent(QEvent *event) {
    hoverTo(0);
    ToolTip::hide();
    QAbstractButton::leaveEvent(event);
}

void Control::focusInEvent(QFocusEvent *event) {
    // A window that comes back brings the focus as it was.
    if (event->reason() != Qt::ActiveWindowFocusReason && event->reason() != Qt::PopupFocusReason)
        m_isByKeyboard = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason ||
                         event->reason() == Qt::ShortcutFocusReason;
    if (m_isByKeyboard && !m_ring)
        m_ring = new FocusRing(this, body(), cornerRadius());
    QAbstractButton::focusInEvent(event);
}

/// Not deleted at once: the ring is a child of a widget above, which may be going through its children just now.
void Control::dropRing() {
    if (QWidget *ring = std::exchange(m_ring, nullptr)) {
        ring->hide();
        ring->deleteLater();
    }
}

void Control::focusOutEvent(QFocusEvent *event) {
    dropRing();
    QAbstractButton::focusOutEvent(event);
}

void Control::hideEvent(QHideEvent *event) {
    dropRing();
    ToolTip::hide();
    QAbstractButton::hideEvent(event);
}

void Control::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
        return;
    }
    QAbstractButton::keyPressEvent(event);
}

bool Control::event(QEvent *event) {
    if (event->type() == QEvent::ToolTip && !toolTip().isEmpty()) {
        ToolTip::show(this, inDesktopWords(toolTip()), rect());
        return true;
    }
    // The tool tip is what a control without words is called, unless it was given a name.
    if (event->type() == QEvent::ToolTipChange && text().isEmpty() &&
        (accessibleName().isEmpty() || accessibleName() == m_nameByToolTip)) {
        m_nameByToolTip = inDesktopWords(toolTip());
        setAccessibleName(m_nameByToolTip);
    }
    return QAbstractButton::event(event);
}

} // namespace tavrine::look
