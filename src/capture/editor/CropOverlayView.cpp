#include "capture/editor/CropOverlayView.h"

#include "base/DesktopWords.h"
#include "capture/editor/EditorModel.h"
#include "look/ArrowKeys.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QResizeEvent>

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

constexpr QColor dimming(0, 0, 0, 140);
constexpr QColor lightLine(255, 255, 255, 230);
constexpr QColor plate(0, 0, 0, 190);
constexpr double cornerLength = 14;
constexpr double cornerWidth = 3;
constexpr double plateHeight = 30;
constexpr double sizeHeight = 22;
constexpr double manyPixels = 10;

void paintPlate(QPainter &painter, const QRectF &rect, const QString &text, look::TextRole role) {
    look::fillRounded(painter, rect, rect.height() / 2, plate);
    look::paintLine(painter, rect, text, role, Qt::white, Qt::AlignHCenter);
}

void paintCorners(QPainter &painter, const QRectF &selected) {
    const double length = std::min({cornerLength, selected.width() / 2, selected.height() / 2});
    painter.setPen(QPen(Qt::white, cornerWidth, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
    painter.setBrush(Qt::NoBrush);
    for (const bool isRight : {false, true}) {
        for (const bool isBottom : {false, true}) {
            const QPointF corner(isRight ? selected.right() : selected.left(),
                                 isBottom ? selected.bottom() : selected.top());
            const double x = isRight ? -length : length;
            const double y = isBottom ? -length : length;
            painter.drawPolyline(QPolygonF({corner + QPointF(x, 0), corner, corner + QPointF(0, y)}));
        }
    }
}

} // namespace

CropOverlayView::CropOverlayView(EditorModel &model, QWidget *parent) : QWidget(parent), m_model(model) {
    setCursor(Qt::CrossCursor);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(inDesktopWords(QStringLiteral("Crop image area")));
    connect(&model, &EditorModel::cropChanged, this, &CropOverlayView::refresh);
    refresh();
}

void CropOverlayView::refresh() {
    setAccessibleDescription(
        m_model.crop().isEmpty()
            ? inDesktopWords(QStringLiteral("Arrow keys select an area and move it, with Shift they change its size"))
            : inDesktopWords(QStringLiteral("Area of %1").arg(sizeText())));
    update();
}

QString CropOverlayView::sizeText() const {
    const QRectF part = m_model.crop().rect();
    const QSize image = m_model.shownImage().size();
    return QStringLiteral("%1 × %2")
        .arg(std::lround(part.width() * image.width()))
        .arg(std::lround(part.height() * image.height()));
}

void CropOverlayView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    look::preparePainter(painter);
    if (m_model.crop().isEmpty()) {
        painter.fillRect(rect(), QColor(0, 0, 0, 70));
        paintHint(painter);
        return;
    }
    const QRectF part = m_model.crop().rect();
    const QRectF selected =
        QRectF(part.x() * width(), part.y() * height(), part.width() * width(), part.height() * height())
            .intersected(rect());
    QPainterPath outside;
    outside.setFillRule(Qt::OddEvenFill);
    outside.addRect(rect());
    outside.addRect(selected);
    painter.fillPath(outside, dimming);
    painter.setPen(QPen(lightLine, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(selected.adjusted(0.5, 0.5, -0.5, -0.5));
    paintCorners(painter, selected);
    paintSize(painter, selected);
}

void CropOverlayView::paintHint(QPainter &painter) {
    const QString hint = inDesktopWords(QStringLiteral("Drag on the image to select crop area"));
    const double wide = std::ceil(look::lineWidth(hint, look::TextRole::bodyStrong)) + 2 * look::space::large;
    const QRectF seen = visibleRegion().boundingRect();
    QRectF place(0, 0, std::min(wide, seen.width()), plateHeight);
    place.moveCenter(seen.center());
    paintPlate(painter, QRectF(place.toRect()), hint, look::TextRole::bodyStrong);
}

// How many pixels are left: above the selection, or within it where there is no room above.
void CropOverlayView::paintSize(QPainter &painter, const QRectF &selected) {
    const QString text = sizeText();
    const double wide = std::ceil(look::lineWidth(text, look::TextRole::captionStrong)) + 2 * look::space::small;
    double top = selected.top() - sizeHeight - look::space::tiny;
    if (top < 0)
        top = selected.top() + look::space::small;
    const double left = std::clamp(selected.left(), 0.0, std::max(0.0, width() - wide));
    paintPlate(painter, QRectF(std::round(left), std::round(top), wide, sizeHeight), text,
               look::TextRole::captionStrong);
}

void CropOverlayView::mousePressEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton)
        return;
    m_from = event->position();
    m_isDragging = true;
    m_model.dragCrop(m_from, m_from, size());
}

void CropOverlayView::mouseMoveEvent(QMouseEvent *event) {
    if (m_isDragging)
        m_model.dragCrop(m_from, event->position(), size());
}

// A drag that is under way keeps the place on the picture where it began.
void CropOverlayView::resizeEvent(QResizeEvent *event) {
    const QSizeF before = event->oldSize();
    if (m_isDragging && !before.isEmpty())
        m_from = {m_from.x() * width() / before.width(), m_from.y() * height() / before.height()};
    QWidget::resizeEvent(event);
}

void CropOverlayView::keyPressEvent(QKeyEvent *event) {
    const QPointF by = look::arrowDirection(event->key()) * (event->modifiers() & Qt::ControlModifier ? manyPixels : 1);
    if (by.isNull() || m_isDragging)
        return QWidget::keyPressEvent(event);
    const QSizeF whole(m_model.shownImage().size());
    const CropSelection &crop = m_model.crop();
    const QRectF part = crop.isEmpty() ? QRectF(0.25, 0.25, 0.5, 0.5) : crop.rect();
    QRectF area(part.x() * whole.width(), part.y() * whole.height(), part.width() * whole.width(),
                part.height() * whole.height());
    if (!crop.isEmpty() && event->modifiers() & Qt::ShiftModifier) {
        const QPointF corner = area.bottomRight() + by;
        area.setBottomRight({std::clamp(corner.x(), area.left() + 1, std::max(area.left() + 1, whole.width())),
                             std::clamp(corner.y(), area.top() + 1, std::max(area.top() + 1, whole.height()))});
    } else if (!crop.isEmpty()) {
        area.moveTo(std::clamp(area.x() + by.x(), 0.0, std::max(0.0, whole.width() - area.width())),
                    std::clamp(area.y() + by.y(), 0.0, std::max(0.0, whole.height() - area.height())));
    }
    m_model.dragCrop(area.topLeft(), area.bottomRight(), whole);
}

void CropOverlayView::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton)
        m_isDragging = false;
}

} // namespace tavrine
