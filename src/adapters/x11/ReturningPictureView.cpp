#include "adapters/x11/ReturningPictureView.h"

#include "adapters/x11/X11WindowDescription.h"

#include <QPainter>
#include <QWindow>

namespace tavrine {

void ReturningPictureView::fly(const QPixmap &picture, QPoint from, QPoint to, std::chrono::milliseconds length) {
    auto *flying = new ReturningPictureView(picture);
    flying->move(from);
    flying->show();
    shapeInput(*flying->windowHandle(), true, {}); // which the toolkit has made whole for the showing
    xcb_flush(qtConnection());
    auto &flight = flying->m_flight;
    connect(&flight, &QVariantAnimation::valueChanged, flying,
            [flying](const QVariant &place) { flying->move(place.toPoint()); });
    connect(&flight, &QVariantAnimation::finished, flying, &QObject::deleteLater);
    flight.setStartValue(from);
    flight.setEndValue(to);
    flight.setEasingCurve(QEasingCurve::InOutQuad);
    flight.setDuration(static_cast<int>(length.count()));
    flight.start();
}

ReturningPictureView::ReturningPictureView(const QPixmap &picture)
    : QWidget(nullptr,
              Qt::ToolTip | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint | Qt::WindowDoesNotAcceptFocus),
      m_picture(picture) {
    setWindowTitle(QStringLiteral("Returning"));
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_QuitOnClose, false);
    resize(picture.deviceIndependentSize().toSize());
}

void ReturningPictureView::paintEvent(QPaintEvent *) {
    QPainter(this).drawPixmap(0, 0, m_picture);
}

} // namespace tavrine
