#include "look/OutcomeView.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Button.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"
#include "look/Unfolding.h"

#include <QAccessible>
#include <QPainter>

#include <cmath>

namespace tavrine::look {

OutcomeView::OutcomeView(Button *button, const QString &doneText, QWidget *parent)
    : QWidget(parent), m_button(button), m_doneText(inDesktopWords(doneText)) {
    button->setParent(this);
    setRole(*this, QAccessible::Grouping);
}

void OutcomeView::setDone(bool isDone) {
    if (isDone == m_isDone)
        return;
    m_isDone = isDone;
    const bool hadKeyboard = m_button->hasFocus();
    m_button->setVisible(!isDone);
    if (!isDone && hadKeyboard)
        m_button->setFocus();
    setRole(*this, isDone ? QAccessible::StaticText : QAccessible::Grouping);
    setAccessibleName(isDone ? m_doneText : QString());
    QAccessibleEvent event(this, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&event);
    if (isDone) {
        m_opacity = 0;
        m_appearing.start(Unfolding::length, defaultTiming, [this](double part) {
            m_opacity = part;
            update();
        });
    }
    update();
}

QSize OutcomeView::sizeHint() const {
    const double done = symbolsize::medium + space::tiny + lineWidth(m_doneText, TextRole::body);
    const QSize button = m_button->sizeHint();
    return {std::max(button.width(), int(std::ceil(done))), button.height()};
}

void OutcomeView::resizeEvent(QResizeEvent *) {
    const QSize size = m_button->sizeHint();
    m_button->setGeometry(QRect(QPoint(width() - size.width(), (height() - size.height()) / 2), size));
}

void OutcomeView::paintEvent(QPaintEvent *) {
    if (!m_isDone)
        return;
    QPainter painter(this);
    preparePainter(painter);
    painter.setOpacity(m_opacity);
    const Theme &theme = themeOf(this);
    const double text = lineWidth(m_doneText, TextRole::body);
    const double left = width() - text - space::tiny - symbolsize::medium;
    paintSymbol(painter, QRectF(left, 0, symbolsize::medium, height()), QLatin1String(doneSymbol), symbolsize::medium,
                theme.success);
    paintLine(painter, QRectF(width() - text, 0, text + 1, height()), m_doneText, TextRole::body, theme.successText);
}

} // namespace tavrine::look
