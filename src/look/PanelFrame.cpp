#include "look/PanelFrame.h"

#include "look/Look.h"
#include "look/Paint.h"
#include "look/Shadow.h"

#include <QBitmap>
#include <QMouseEvent>
#include <QPainter>
#include <QWindow>

namespace tavrine::look {

PanelFrame::PanelFrame(const QSize &panelSize, qreal cornerRadius, QWidget *parent)
    : QWidget(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint), m_panelSize(panelSize),
      m_radius(cornerRadius), m_isComposited(Look::composites()) {
    setAttribute(Qt::WA_AlwaysShowToolTips); // a panel may take keys without being the active window
    setAttribute(Qt::WA_TranslucentBackground, m_isComposited);
    if (Look *look = Look::current())
        connect(look, &Look::changed, this, &PanelFrame::adopt);
    fit();
}

void PanelFrame::setContent(QWidget *content) {
    delete m_content;
    m_content = content;
    if (m_content) {
        m_content->setParent(this);
        m_content->setGeometry(rect().marginsRemoved(panelMargins()));
        m_content->show();
    }
}

void PanelFrame::setPanelSize(const QSize &size) {
    m_panelSize = size;
    fit();
}

QMargins PanelFrame::panelMargins() const {
    return m_isComposited ? shadowMargins : QMargins();
}

QRect PanelFrame::panelGeometry() const {
    return geometry().marginsRemoved(panelMargins());
}

void PanelFrame::movePanel(const QPoint &topLeft) {
    const QMargins margins = panelMargins();
    move(topLeft - QPoint(margins.left(), margins.top()));
}

void PanelFrame::setMovableByBackground(bool isMovable) {
    m_isMovable = isMovable;
}

void PanelFrame::setGround(const QColor &colour) {
    m_ground = colour;
    update();
}

void PanelFrame::fit() {
    const QMargins margins = panelMargins();
    setFixedSize(m_panelSize.grownBy(margins));
}

// A compositor came or went: the window must be made anew with another kind of pixels, and the panel stays in its
// place.
void PanelFrame::adopt() {
    if (m_isComposited == Look::composites())
        return;
    const QPoint place = panelGeometry().topLeft();
    const bool wasVisible = isVisible();
    m_isComposited = Look::composites();
    if (wasVisible)
        hide();
    setAttribute(Qt::WA_TranslucentBackground, m_isComposited);
    setAttribute(Qt::WA_NoSystemBackground, m_isComposited);
    if (windowHandle())
        setWindowFlags(windowFlags()); // the window is destroyed, and made anew when it is shown
    clearMask();
    fit();
    movePanel(place);
    if (wasVisible)
        show();
}

void PanelFrame::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    if (m_content)
        m_content->setGeometry(rect().marginsRemoved(panelMargins()));
    if (m_isComposited)
        return;
    QBitmap mask(size());
    mask.fill(Qt::color0);
    QPainter painter(&mask);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::color1);
    painter.drawRoundedRect(rect(), m_radius, m_radius);
    painter.end();
    setMask(mask);
}

void PanelFrame::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    const QColor ground = m_ground.isValid() ? m_ground : theme.surface;
    const QRectF panel = QRectF(rect()).marginsRemoved(QMarginsF(panelMargins()));
    if (m_isComposited) {
        paintShadow(painter, panel, m_radius, theme.shadow);
        if (theme.isDark) // a dark panel on a dark desktop needs an edge on both sides
            strokeHairline(painter, panel.adjusted(-1, -1, 1, 1), m_radius + 1, QColor(0, 0, 0, 120));
    } else {
        painter.fillRect(rect(), ground);
    }
    fillRounded(painter, panel, m_radius, ground);
    strokeHairline(painter, panel, m_radius, theme.outline);
}

void PanelFrame::mousePressEvent(QMouseEvent *event) {
    if (m_isMovable && event->button() == Qt::LeftButton && windowHandle())
        windowHandle()->startSystemMove();
    QWidget::mousePressEvent(event);
}

} // namespace tavrine::look
