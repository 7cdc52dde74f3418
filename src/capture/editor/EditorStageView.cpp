#include "capture/editor/EditorStageView.h"

#include "look/Look.h"
#include "look/Paint.h"

#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QWheelEvent>

#include <cmath>

namespace tavrine {
namespace {

constexpr int checkSide = 8;    // of the squares under a transparent picture
constexpr double notch = 120;   // of a wheel, in eighths of a degree
constexpr double notchWay = 60; // points that a notch moves the picture
constexpr int shadowReach = 3;

/// Lets every click through that meets none of its children.
class OverlayLayer final : public QWidget {
public:
    using QWidget::QWidget;

protected:
    void childEvent(QChildEvent *event) override {
        if (event->child()->isWidgetType() && event->added())
            event->child()->installEventFilter(this);
        fit();
        QWidget::childEvent(event);
    }
    bool eventFilter(QObject *object, QEvent *event) override {
        switch (event->type()) {
        case QEvent::Move:
        case QEvent::Resize:
        case QEvent::ShowToParent:
        case QEvent::HideToParent:
            fit();
            break;
        default:
            break;
        }
        return QWidget::eventFilter(object, event);
    }

private:
    void fit() {
        QRegion covered;
        for (QObject *child : children()) {
            const auto *widget = qobject_cast<QWidget *>(child);
            if (widget && !widget->isHidden())
                covered += widget->geometry();
        }
        setVisible(!covered.isEmpty());
        setMask(covered);
    }
};

QColor groundOf(const look::Theme &theme) {
    return look::mixed(theme.surface, Qt::black, theme.isDark ? 0.3 : 0.07);
}

void paintChecks(QPainter &painter, const QRectF &rect, const look::Theme &theme) {
    const QColor light = theme.isDark ? QColor(0x48, 0x48, 0x4C) : QColor(Qt::white);
    const QColor dark = theme.isDark ? QColor(0x3A, 0x3A, 0x3E) : QColor(0xE6, 0xE6, 0xE9);
    QPixmap tile(2 * checkSide, 2 * checkSide);
    tile.fill(light);
    QPainter tiles(&tile);
    tiles.fillRect(0, 0, checkSide, checkSide, dark);
    tiles.fillRect(checkSide, checkSide, checkSide, checkSide, dark);
    tiles.end();
    painter.drawTiledPixmap(rect, tile);
}

} // namespace

EditorStageView::EditorStageView(QWidget *parent) : QWidget(parent), m_overlay(new OverlayLayer(this)) {
    setMinimumSize(200, 100); // with the bars as low as the lowest window
    m_overlay->hide();
    if (auto *look = look::Look::current())
        connect(look, &look::Look::changed, this, [this] {
            m_backdrop = {};
            update();
        });
}

EditorStageView::~EditorStageView() = default;

void EditorStageView::setImage(const QImage &image) {
    m_zoom.setImageSize(image.deviceIndependentSize());
    m_image = image;
    m_shown = m_image;
    place();
}

void EditorStageView::setPicture(const QImage &picture) {
    m_shown = picture;
    m_backdrop = {};
    update();
}

void EditorStageView::setCanvas(QWidget *canvas, Picture picture) {
    delete m_canvas;
    m_canvas = canvas;
    m_picture = picture;
    m_shown = m_image;
    m_backdrop = {};
    if (m_canvas) {
        m_canvas->setParent(this);
        m_canvas->stackUnder(m_overlay);
        m_canvas->installEventFilter(this);
        m_canvas->setGeometry(imageRect());
        m_canvas->show();
    }
}

void EditorStageView::clearOverlay() {
    for (QWidget *child : m_overlay->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
        child->hide();
        child->deleteLater(); // the button that asks for it may be one of them
    }
}

void EditorStageView::zoomToFit() {
    m_zoom.fit();
    place();
}

void EditorStageView::zoomToFullSize() {
    m_zoom.zoomTo(1, middle());
    place();
}

void EditorStageView::zoomIn() {
    m_zoom.zoomBy(ImageZoom::step, middle());
    place();
}

void EditorStageView::zoomOut() {
    m_zoom.zoomBy(1 / ImageZoom::step, middle());
    place();
}

void EditorStageView::place() {
    m_backdrop = {};
    const QRect rect = imageRect();
    if (m_canvas)
        m_canvas->setGeometry(rect);
    m_overlay->setGeometry(rect);
    update();
    Q_EMIT zoomChanged();
}

void EditorStageView::paintImage(QPainter &painter, const QRectF &target) {
    if (m_shown.hasAlphaChannel())
        paintChecks(painter, target.intersected(rect()), look::themeOf(this));
    if (m_picture == Picture::byStage)
        m_shown.paint(painter, target, rect(), devicePixelRatioF());
}

void EditorStageView::renderBackdrop() {
    const qreal ratio = devicePixelRatioF();
    m_backdrop = QPixmap((QSizeF(size()) * ratio).toSize());
    m_backdrop.setDevicePixelRatio(ratio);
    const look::Theme &theme = look::themeOf(this);
    m_backdrop.fill(groundOf(theme));
    const QRectF image = imageRect();
    if (m_shown.isNull() || image.isEmpty())
        return;
    QPainter painter(&m_backdrop);
    for (int i = shadowReach; i > 0; --i)
        look::fillRounded(painter, image.adjusted(-i, -i + 1, i, i + 1), i, QColor(0, 0, 0, theme.isDark ? 40 : 14));
    paintImage(painter, image);
}

void EditorStageView::paintEvent(QPaintEvent *event) {
    const QSize wanted = (QSizeF(size()) * devicePixelRatioF()).toSize();
    if (m_backdrop.size() != wanted)
        renderBackdrop();
    QPainter painter(this);
    painter.setClipRegion(event->region());
    painter.drawPixmap(0, 0, m_backdrop);
}

void EditorStageView::resizeEvent(QResizeEvent *) {
    m_zoom.setPlace(size());
    place();
}

void EditorStageView::wheelEvent(QWheelEvent *event) {
    if (event->modifiers() & (Qt::ControlModifier | Qt::MetaModifier)) {
        const double turn = event->angleDelta().y() / notch;
        m_zoom.zoomBy(std::pow(ImageZoom::step, turn), event->position());
    } else {
        QPointF way =
            event->hasPixelDelta() ? QPointF(event->pixelDelta()) : QPointF(event->angleDelta()) / notch * notchWay;
        if (event->modifiers() & Qt::ShiftModifier && way.x() == 0)
            way = {way.y(), 0};
        m_zoom.moveBy(way);
    }
    place();
    event->accept();
}

void EditorStageView::mousePressEvent(QMouseEvent *event) {
    if (event->button() != Qt::MiddleButton)
        return;
    m_isDragging = true;
    m_dragFrom = event->globalPosition();
    setCursor(Qt::ClosedHandCursor);
}

void EditorStageView::mouseMoveEvent(QMouseEvent *event) {
    if (!m_isDragging)
        return;
    m_zoom.moveBy(event->globalPosition() - m_dragFrom);
    m_dragFrom = event->globalPosition();
    place();
}

void EditorStageView::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() != Qt::MiddleButton)
        return;
    m_isDragging = false;
    unsetCursor();
}

bool EditorStageView::eventFilter(QObject *object, QEvent *event) {
    return (object == m_canvas && movesPicture(event)) || QWidget::eventFilter(object, event);
}

// The middle button moves the picture, whatever the canvas does with the others.
bool EditorStageView::movesPicture(QEvent *event) {
    const bool isPress = event->type() == QEvent::MouseButtonPress;
    const bool isRelease = event->type() == QEvent::MouseButtonRelease;
    if (!isPress && !isRelease && event->type() != QEvent::MouseMove)
        return false;
    auto *mouse = static_cast<QMouseEvent *>(event);
    if (isPress || isRelease ? mouse->button() != Qt::MiddleButton : !m_isDragging)
        return false;
    if (isPress)
        mousePressEvent(mouse);
    else if (isRelease)
        mouseReleaseEvent(mouse);
    else
        mouseMoveEvent(mouse);
    return true;
}

bool EditorStageView::event(QEvent *event) {
    if (event->type() == QEvent::NativeGesture) {
        const auto *gesture = static_cast<QNativeGestureEvent *>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            m_zoom.zoomBy(1 + gesture->value(), gesture->position());
            place();
            return true;
        }
    }
    return QWidget::event(event);
}

} // namespace tavrine
