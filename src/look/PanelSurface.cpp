#include "look/PanelSurface.h"

#include "look/Look.h"
#include "look/Paint.h"

#include <QBitmap>
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

} // namespace tavrine::look
