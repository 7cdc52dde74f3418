#include "shell/settings/KeyFieldView.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/PanelKeys.h"
#include "shell/Triggers.h"

#include <QKeyEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

using namespace look;

const QString modifiers = QStringLiteral("⌘⇧");

/// A letter or digit by its key, also under modifiers that take its text away; a digit also by its place, where the
/// key or Shift writes something else; else the text.
QString textOf(const QKeyEvent &event) {
    const int key = event.key();
    if ((key >= Qt::Key_A && key <= Qt::Key_Z) || (key >= Qt::Key_0 && key <= Qt::Key_9))
        return QString(QChar(key));
    const int place = virtualKeyOf(event);
    for (char16_t digit = u'0'; digit <= u'9'; ++digit)
        if (keyCode(QString(QChar(digit))) == place)
            return QString(QChar(digit));
    const QString text = event.text();
    return !text.isEmpty() && text.front().isPrint() && !text.front().isSpace() ? text : QString();
}

} // namespace

KeyFieldView::KeyFieldView(QWidget *parent) : QWidget(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setRole(*this, QAccessible::HotkeyField);
    setCursor(Qt::PointingHandCursor);
    setToolTip(inDesktopWords(QStringLiteral("Press a key")));
}

void KeyFieldView::setKey(const QString &key) {
    if (key == m_key)
        return;
    m_key = key;
    setAccessibleName(inDesktopWords(QStringLiteral("Shortcut Key")));
    setAccessibleDescription(inDesktopWords(modifiers + key));
    updateGeometry();
    update();
}

QSize KeyFieldView::sizeHint() const {
    constexpr int narrowest = 96;
    return {std::max(narrowest, int(std::ceil(keyCapWidth(modifiers + m_key))) + 2 * space::small), height::control};
}

void KeyFieldView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    fillRounded(painter, rect(), radius::control, theme.field);
    if (hasFocus())
        paintFocusRing(painter, QRectF(rect()).adjusted(3, 3, -3, -3), radius::badge, theme);
    else
        strokeHairline(painter, rect(), radius::control, theme.outline);
    const QString shown = modifiers + m_key;
    const qreal wide = keyCapWidth(shown);
    paintKeyCap(painter, QRectF(std::round((width() - wide) / 2), 0, wide, height()), shown, theme);
}

void KeyFieldView::keyPressEvent(QKeyEvent *event) {
    const auto pressed = event->modifiers();
    const bool isWholeChord =
        pressed.testFlags(Qt::ControlModifier | Qt::ShiftModifier); // typed as it is pressed later
    const bool isOurs =                                             // a shortcut of the window
        pressed.testFlag(Qt::AltModifier) || (pressed.testFlag(Qt::ControlModifier) && !isWholeChord);
    const QString text = isOurs ? QString() : textOf(*event);
    if (text.isEmpty())
        QWidget::keyPressEvent(event);
    else
        Q_EMIT typed(text);
}

void KeyFieldView::mousePressEvent(QMouseEvent *) {
    setFocus(Qt::MouseFocusReason);
}

void KeyFieldView::focusInEvent(QFocusEvent *event) {
    update();
    QWidget::focusInEvent(event);
}

void KeyFieldView::focusOutEvent(QFocusEvent *event) {
    update();
    QWidget::focusOutEvent(event);
}

} // namespace tavrine
