#include "recording/RecordingBorderView.h"

#include "base/DesktopWords.h"
#include "look/Paint.h"

#include <QPainter>

namespace tavrine {
namespace {

constexpr double lineWidth = 2;
constexpr double wider = 6; ///< than the area: the line lies outside of the recorded pixels
constexpr QColor red(0xFF, 0x3B, 0x30);

} // namespace

RecordingBorderView::RecordingBorderView(const QRectF &rect, double screenHeight) {
    const QPointF middle(rect.x() + rect.width() * 0.5, screenHeight - rect.y() - rect.height() + rect.height() * 0.5);
    const QSizeF size(rect.width() + wider, rect.height() + wider);
    m_outline = QRectF(middle - QPointF(size.width() / 2, size.height() / 2), size);
    setAccessibleName(inDesktopWords(QStringLiteral("Recorded area")));
}

/// The window is no more than the line: nothing has to be composed over the recorded area, and a desktop without
/// translucent windows shows it too.
void RecordingBorderView::showEvent(QShowEvent *event) {
    QWidget::showEvent(event);
    const double half = lineWidth / 2;
    const QRegion outer(m_outline.adjusted(-half, -half, half, half).toAlignedRect());
    window()->setMask(outer - QRegion(m_outline.adjusted(half, half, -half, -half).toAlignedRect()));
}

void RecordingBorderView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setPen(QPen(red, lineWidth, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(m_outline);
}

} // namespace tavrine
