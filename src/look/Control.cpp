#include "look/Control.h"

#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/ToolTip.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>

namespace tavrine::look {

Control::Control(QWidget *parent) : QAbstractButton(parent) {
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover, false);
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
    m_showsFocus = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason ||
                   event->reason() == Qt::ShortcutFocusReason;
    QAbstractButton::focusInEvent(event);
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
        ToolTip::show(this, toolTip(), rect());
        return true;
    }
    // The tool tip is what a control without words is called.
    if (event->type() == QEvent::ToolTipChange && accessibleName().isEmpty() && text().isEmpty())
        setAccessibleName(toolTip());
    return QAbstractButton::event(event);
}

} // namespace tavrine::look
