#include "shell/settings/AppIconView.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/ApplicationIcon.h"
#include "look/Paint.h"
#include "look/Symbols.h"

#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

namespace tavrine {

AppIconView::AppIconView(int side, qreal cornerRadius, QWidget *parent)
    : QWidget(parent), m_cornerRadius(cornerRadius), m_icon(look::applicationIcon()) {
    setFixedSize(side, side);
    look::setRole(*this, QAccessible::Graphic);
    setAccessibleName(inDesktopWords(QStringLiteral("Tavrine")));
}

void AppIconView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    look::preparePainter(painter);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    if (!m_icon.isNull()) {
        m_icon.paint(&painter, rect());
        return;
    }
    QPainterPath shape;
    shape.addRoundedRect(rect(), m_cornerRadius, m_cornerRadius);
    QLinearGradient gradient(rect().topLeft(), rect().bottomRight());
    gradient.setColorAt(0, QColor(175, 82, 222)); // the system's purple and blue
    gradient.setColorAt(1, QColor(0, 122, 255));
    painter.fillPath(shape, gradient);
    look::paintSymbol(painter, rect(), QStringLiteral("hammer.fill"), width() / 2.0, Qt::white);
}

void AppIconView::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton && rect().contains(event->pos()))
        Q_EMIT tapped();
}

} // namespace tavrine
