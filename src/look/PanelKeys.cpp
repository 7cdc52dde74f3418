#include "look/PanelKeys.h"

#include "base/VirtualKeys.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>

namespace tavrine::look {
namespace {

constexpr auto chordModifiers = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;

/// Whether a field would write something by the key, or erase by it. The blank presses the control that has the focus.
bool isTyped(const QKeyEvent &key) {
    if (key.key() == Qt::Key_Backspace || key.matches(QKeySequence::Paste))
        return true;
    if (key.modifiers() & chordModifiers || key.key() == Qt::Key_Space)
        return false;
    return !key.text().isEmpty() && key.text().front().isPrint();
}

} // namespace

PanelKeys::PanelKeys(QWidget *view, QLineEdit *field, Handler handler)
    : QObject(view), m_view(view), m_field(field), m_handler(std::move(handler)) {}

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
    if (static_cast<QWidget *>(object)->window() != m_view->window())
        return false;
    auto &key = static_cast<QKeyEvent &>(*event);
    if (!isFieldsChord(key) && isTakenByPanel(key))
        return true;
    return object != m_field && isTyped(key) && typeIntoField(key);
}

// Ctrl+Backspace in an empty field too: whoever clears it word by word presses once too often.
bool PanelKeys::isFieldsChord(const QKeyEvent &key) const {
    if ((key.modifiers() & chordModifiers) != Qt::ControlModifier)
        return false;
    const bool isByWord = key.key() == Qt::Key_Left || key.key() == Qt::Key_Right;
    return key.key() == Qt::Key_Backspace || (isByWord && !m_field->text().isEmpty());
}

bool PanelKeys::isTakenByPanel(const QKeyEvent &key) const {
    const QString title = m_view->window()->windowTitle();
    if (key.key() == Qt::Key_Delete && key.modifiers() == Qt::ShiftModifier && !m_field->hasSelectedText())
        return m_handler(title, virtualKey::backspace, true);
    return m_handler(title, virtualKeyOf(key), key.modifiers() & (Qt::ControlModifier | Qt::MetaModifier));
}

bool PanelKeys::typeIntoField(QKeyEvent &key) {
    m_field->setFocus(Qt::OtherFocusReason);
    QCoreApplication::sendEvent(m_field, &key);
    return true;
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
