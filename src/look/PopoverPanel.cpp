#include "look/PopoverPanel.h"

#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"

#include <QApplication>
#include <QBitmap>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>

#include <algorithm>

namespace tavrine {
namespace {

constexpr int gap = 6;
constexpr int screenMargin = 4;

} // namespace

PopoverPanel::PopoverPanel(QWidget *anchor)
    : QWidget(anchor, Qt::Popup | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint), m_anchor(anchor) {
    setAttribute(Qt::WA_TranslucentBackground, look::Look::composites());
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(look::space::small, look::space::small, look::space::small, look::space::small);
}

void PopoverPanel::setContent(QWidget *content) {
    layout()->addWidget(content);
}

void PopoverPanel::open() {
    if (!m_anchor)
        return;
    adjustSize();
    const QRect anchor(m_anchor->mapToGlobal(QPoint()), m_anchor->size());
    const QRect screen = m_anchor->screen()->availableGeometry();
    const QWidget *window = m_anchor->window();
    const bool isLow = m_anchor->mapTo(window, QPoint()).y() > window->height() / 2;
    const int below = anchor.bottom() + 1 + gap;
    const int above = anchor.top() - gap - height();
    const bool fitsBelow = below + height() <= screen.bottom();
    const bool fitsAbove = above >= screen.top();
    const int y = (isLow && fitsAbove) || !fitsBelow ? above : below;
    const int furthest = std::max(screen.left() + screenMargin, screen.right() - screenMargin - width());
    move(std::clamp(anchor.center().x() - width() / 2, screen.left() + screenMargin, furthest), y);
    show();
}

void PopoverPanel::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    look::preparePainter(painter);
    const look::Theme &theme = look::themeOf(m_anchor ? m_anchor.data() : this);
    look::fillRounded(painter, rect(), look::radius::card, theme.elevated);
    look::strokeHairline(painter, rect(), look::radius::card, theme.outline);
}

void PopoverPanel::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    if (testAttribute(Qt::WA_TranslucentBackground))
        return;
    QBitmap shape(size());
    shape.fill(Qt::color0);
    QPainter painter(&shape);
    painter.setBrush(Qt::color1);
    painter.drawRoundedRect(rect().adjusted(0, 0, -1, -1), look::radius::card, look::radius::card);
    painter.end();
    setMask(shape);
}

void PopoverPanel::hideEvent(QHideEvent *event) {
    QWidget::hideEvent(event);
    Q_EMIT closed();
}

void PopoverPanel::mousePressEvent(QMouseEvent *event) {
    if (rect().contains(event->pos()))
        return QWidget::mousePressEvent(event);
    setAttribute(Qt::WA_NoMouseReplay); // the toolkit's own is only for some window systems
    QWidget::mousePressEvent(event);    // closes it
    const QPoint place = event->globalPosition().toPoint();
    if (!m_anchor || m_anchor->rect().contains(m_anchor->mapFromGlobal(place)))
        return; // it would open it again
    // Beside the popover the press does what it does without one: the first stroke of a tool that was just chosen.
    QWindow *window = m_anchor->window()->windowHandle();
    if (!window || QApplication::topLevelAt(place) != m_anchor->window())
        return;
    // At once: posted, it would come after a release that waits already.
    QMouseEvent press(event->type(), window->mapFromGlobal(event->globalPosition()), event->globalPosition(),
                      event->button(), event->buttons(), event->modifiers());
    QCoreApplication::sendEvent(window, &press);
}

void PopoverPanel::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}

} // namespace tavrine
