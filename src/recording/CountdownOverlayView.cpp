#include "recording/CountdownOverlayView.h"

#include "base/DesktopWords.h"
#include "look/Look.h"
#include "look/Paint.h"
#include "recording/CountdownModel.h"

#include <QPainter>
#include <QRegion>

namespace tavrine {
namespace {

constexpr double discSide = 176;
constexpr int digitPixels = 92;
constexpr Seconds appearance{0.35};
constexpr double smallScale = 0.5;
constexpr double fullScale = 1.15;

} // namespace

CountdownOverlayView::CountdownOverlayView(std::shared_ptr<CountdownModel> model) : m_model(std::move(model)) {
    connect(m_model.get(), &CountdownModel::ticked, this, &CountdownOverlayView::animate);
    if (const look::Look *look = look::Look::current())
        connect(look, &look::Look::changed, this, &CountdownOverlayView::shapeWindow);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

QRectF CountdownOverlayView::disc() const {
    return {(width() - discSide) / 2, (height() - discSide) / 2, discSide, discSide};
}

void CountdownOverlayView::animate() {
    setAccessibleName(inDesktopWords(QStringLiteral("Recording starts in %1").arg(m_model->currentCount())));
    m_motion.start(appearance, look::easeOut, [this](double part) {
        m_scale = smallScale + (fullScale - smallScale) * part;
        m_opacity = part;
        update(disc().toAlignedRect());
    });
}

void CountdownOverlayView::showEvent(QShowEvent *event) {
    QWidget::showEvent(event);
    shapeWindow();
    animate();
}

void CountdownOverlayView::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    shapeWindow();
}

/// Where nothing shows through a window it is no larger than what it shows. That may come to be so meanwhile: what it
/// covers would be black from then on.
void CountdownOverlayView::shapeWindow() {
    if (!isVisible() || window()->size() != size())
        return;
    if (look::Look::composites())
        window()->clearMask();
    else
        window()->setMask(QRegion(disc().toAlignedRect(), QRegion::Ellipse));
}

void CountdownOverlayView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    look::preparePainter(painter);
    const bool isClear = look::Look::composites();
    if (!isClear) // the mask cuts pixels whole, so none may be half covered
        painter.fillRect(disc(), QColor(24, 24, 27));
    look::fillRounded(painter, disc(), discSide / 2, QColor(24, 24, 27, isClear ? 205 : 255));
    look::strokeHairline(painter, disc().adjusted(1, 1, -1, -1), discSide / 2, QColor(255, 255, 255, 46));
    QFont font = look::fontFor(look::TextRole::hero);
    font.setPixelSize(digitPixels);
    font.setWeight(QFont::DemiBold);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.setOpacity(m_opacity);
    painter.translate(disc().center());
    painter.scale(m_scale, m_scale);
    const QString digits = QString::number(m_model->currentCount());
    const QRectF ink = QFontMetricsF(font).tightBoundingRect(digits);
    painter.drawText(QPointF(-ink.center().x(), -ink.center().y()), digits);
}

} // namespace tavrine
