#include "capture/reading/ScanningAnimationView.h"

#include "base/DesktopWords.h"
#include "look/Look.h"
#include "look/Paint.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tavrine {
namespace {

constexpr double thereAndBack = 2.4; // seconds
constexpr int veil = 96;
constexpr double glow = 72; // points behind the light

void paintCorner(QPainter &painter, QPointF corner, double right, double down, double length) {
    painter.drawPolyline(
        QPolygonF{{corner.x() + right * length, corner.y()}, corner, {corner.x(), corner.y() + down * length}});
}

} // namespace

ScanningAnimationView::ScanningAnimationView(QWidget *parent) : QWidget(parent) {
    setAccessibleName(inDesktopWords(QStringLiteral("Busy")));
}

void ScanningAnimationView::showEvent(QShowEvent *) {
    m_motion.run([this](Seconds passed) {
        m_part = std::fmod(m_part + passed.count() / thereAndBack, 1.0);
        update();
        return true;
    });
}

void ScanningAnimationView::hideEvent(QHideEvent *) {
    m_motion.stop();
}

void ScanningAnimationView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    look::preparePainter(painter);
    painter.fillRect(rect(), QColor(0, 0, 0, veil));
    const QColor light = look::themeOf(this).accent;
    const double margin = std::min({24.0, width() / 6.0, height() / 6.0});
    const QRectF frame = QRectF(rect()).adjusted(margin, margin, -margin, -margin);
    const double length = std::min({28.0, frame.width() / 3, frame.height() / 3});

    // The light: it slows down at the ends, and what it passed glows on.
    const double phase = m_part * 2 * std::numbers::pi;
    const double y = frame.center().y() - std::cos(phase) * frame.height() / 2;
    const bool goesDown = std::sin(phase) >= 0;
    const double tail = std::clamp(goesDown ? y - glow : y + glow, frame.top(), frame.bottom());
    QLinearGradient fading(0, tail, 0, y);
    QColor clear = light;
    clear.setAlpha(0);
    QColor strong = light;
    strong.setAlpha(90);
    fading.setColorAt(0, clear);
    fading.setColorAt(1, strong);
    painter.fillRect(QRectF(QPointF(frame.left(), std::min(y, tail)), QPointF(frame.right(), std::max(y, tail))),
                     fading);
    painter.setPen(QPen(look::mixed(light, Qt::white, 0.35), 2, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(frame.left(), y), QPointF(frame.right(), y));

    painter.setPen(QPen(Qt::white, 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    paintCorner(painter, frame.topLeft(), 1, 1, length);
    paintCorner(painter, frame.topRight(), -1, 1, length);
    paintCorner(painter, frame.bottomLeft(), 1, -1, length);
    paintCorner(painter, frame.bottomRight(), -1, -1, length);
}

} // namespace tavrine
