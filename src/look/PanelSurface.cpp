#include "look/PanelSurface.h"

#include "base/VirtualKeys.h"
#include "look/Look.h"
#include "look/Paint.h"

#include <QApplication>
#include <QBitmap>
#include <QKeyEvent>
#include <QPainter>

namespace tavrine::look {

PanelSurface::PanelSurface(qreal cornerRadius, QWidget *parent) : QWidget(parent), m_radius(cornerRadius) {
    if (Look *look = Look::current())
        connect(look, &Look::changed, this, &PanelSurface::shapeWindow);
}

void PanelSurface::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    if (!Look::composites()) // the mask cuts pixels whole, so none may be half covered
        painter.fillRect(rect(), theme.surface);
    fillRounded(painter, rect(), m_radius, theme.surface);
    strokeHairline(painter, rect(), m_radius, theme.outline);
}

void PanelSurface::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    shapeWindow();
}

void PanelSurface::showEvent(QShowEvent *event) {
    QWidget::showEvent(event);
    shapeWindow();
}

void PanelSurface::shapeWindow() {
    QWidget *window = this->window();
    if (window->size() != size())
        return; // part of a larger window, whose shape is its own
    if (Look::composites()) {
        if (!window->mask().isEmpty())
            window->clearMask();
        m_masked = {};
        return;
    }
    if (m_masked == size() && !window->mask().isEmpty())
        return; // a mask is drawn and measured out anew each time that it is set
    m_masked = size();
    QBitmap mask(size());
    mask.fill(Qt::color0);
    QPainter painter(&mask);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::color1);
    painter.drawRoundedRect(rect(), m_radius, m_radius);
    painter.end();
    window->setMask(mask);
}

PanelKeys::PanelKeys(QWidget *view, Handler handler) : QObject(view), m_view(view), m_handler(std::move(handler)) {}

void PanelKeys::setOn(bool isOn) {
    if (isOn == m_isOn)
        return;
    m_isOn = isOn;
    if (isOn)
        qApp->installEventFilter(this);
    else
        qApp->removeEventFilter(this);
}

bool PanelKeys::eventFilter(QObject *object, QEvent *event) {
    if (event->type() != QEvent::KeyPress || !object->isWidgetType())
        return false;
    const QWidget *window = static_cast<QWidget *>(object)->window();
    if (window != m_view->window())
        return false;
    const auto &key = static_cast<const QKeyEvent &>(*event);
    const bool isCommandHeld = key.modifiers() & (Qt::ControlModifier | Qt::MetaModifier);
    return m_handler(window->windowTitle(), virtualKeyOf(key), isCommandHeld);
}

int virtualKeyOf(const QKeyEvent &event) {
    const bool isKeypad = event.modifiers() & Qt::KeypadModifier; // its arrows are other keys than the arrows
    switch (event.key()) {
    case Qt::Key_Return:
        return virtualKey::enter;
    case Qt::Key_Enter:
        return virtualKey::keypadEnter;
    case Qt::Key_Escape:
        return virtualKey::escape;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return virtualKey::tab;
    case Qt::Key_Backspace:
        return virtualKey::backspace;
    case Qt::Key_Left:
        return isKeypad ? -1 : virtualKey::left;
    case Qt::Key_Right:
        return isKeypad ? -1 : virtualKey::right;
    case Qt::Key_Down:
        return isKeypad ? -1 : virtualKey::down;
    case Qt::Key_Up:
        return isKeypad ? -1 : virtualKey::up;
    default:
        break;
    }
    if (event.nativeScanCode() != 0)
        return virtualKeyOfXKeycode(static_cast<int>(event.nativeScanCode())).value_or(-1);
    // An event that no keyboard made, as a screen reader or a remote hand sends it, has no place.
    switch (event.key()) {
    case Qt::Key_A:
        return virtualKey::a;
    case Qt::Key_P:
        return virtualKey::p;
    case Qt::Key_V:
        return virtualKey::v;
    default:
        return -1;
    }
}

} // namespace tavrine::look
