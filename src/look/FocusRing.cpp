#include "look/FocusRing.h"

#include "look/Look.h"
#include "look/Paint.h"

#include <QEvent>
#include <QPainter>

namespace tavrine::look {
namespace {

constexpr int reach = 4; // a gap of 1 point, a ring of 2, and its smoothed edge

// Near enough to be clipped and moved with the control, large enough to show the whole ring.
QWidget *groundFor(const QWidget *control, const QRect &ring) {
    QWidget *place = control->parentWidget();
    while (place && !place->isWindow() &&
           !place->rect().contains(QRect(control->mapTo(place, ring.topLeft()), ring.size())))
        place = place->parentWidget();
    return place;
}

} // namespace

FocusRing::FocusRing(QWidget *control, const QRectF &body, qreal cornerRadius)
    : QWidget(groundFor(control, body.toAlignedRect().adjusted(-reach, -reach, reach, reach))), m_control(control),
      m_body(body), m_radius(cornerRadius) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    control->installEventFilter(this);
    connect(control, &QObject::destroyed, this, &QObject::deleteLater);
    place();
    show();
}

void FocusRing::place() {
    if (!m_control || !parentWidget() || !parentWidget()->isAncestorOf(m_control))
        return;
    const QRect ring = m_body.toAlignedRect().adjusted(-reach, -reach, reach, reach);
    setGeometry(QRect(m_control->mapTo(parentWidget(), ring.topLeft()), ring.size()));
    raise();
}

void FocusRing::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    paintFocusRing(painter, QRectF(rect()).adjusted(reach, reach, -reach, -reach), m_radius,
                   themeOf(m_control ? m_control.data() : this));
}

bool FocusRing::eventFilter(QObject *object, QEvent *event) {
    if (object == m_control && (event->type() == QEvent::Move || event->type() == QEvent::Resize))
        place();
    return QWidget::eventFilter(object, event);
}

} // namespace tavrine::look
