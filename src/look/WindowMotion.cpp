#include "look/WindowMotion.h"

#include "look/Look.h"

#include <QPainter>
#include <QPixmap>

#include <cmath>

namespace tavrine::look {
namespace {

bool canMove() {
    return Look::moves() && Look::composites();
}

// The window's picture, painted smaller and smaller in a window of its own: the real one is never laid out anew.
class Picture final : public QWidget {
public:
    explicit Picture(QWidget *window)
        : QWidget(nullptr, Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowTransparentForInput |
                               Qt::WindowDoesNotAcceptFocus | Qt::NoDropShadowWindowHint),
          m_picture(window->grab()) {
        setAttribute(Qt::WA_TranslucentBackground);
        setAttribute(Qt::WA_ShowWithoutActivating);
        setGeometry(window->geometry());
    }

    void show(double part, double opacity) {
        m_part = part;
        m_opacity = opacity;
        update();
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.setOpacity(m_opacity);
        const QSizeF size = QSizeF(this->size()) * m_part;
        const QPointF origin((width() - size.width()) / 2, (height() - size.height()) / 2);
        painter.drawPixmap(QRectF(origin, size), m_picture, QRectF(m_picture.rect()));
    }

private:
    QPixmap m_picture;
    double m_part = 1;
    double m_opacity = 1;
};

} // namespace

WindowMotion::~WindowMotion() {
    endShrink();
}

void WindowMotion::stop() {
    m_motion.stop();
    endShrink();
}

void WindowMotion::endShrink() {
    if (m_picture)
        m_picture->deleteLater();
    m_picture.clear();
}

void WindowMotion::fadeTo(double opacity, Seconds length, Motion::Done done) {
    fadeAndSlide(opacity, {}, length, std::move(done));
}

void WindowMotion::fadeAndSlide(double opacity, QPoint by, Seconds length, Motion::Done done) {
    stop();
    if (!m_window)
        return;
    const double fromOpacity = m_window->windowOpacity();
    const QPoint from = m_window->pos();
    const auto step = [window = m_window, fromOpacity, opacity, from, by](double value) {
        if (!window)
            return;
        window->setWindowOpacity(fromOpacity + (opacity - fromOpacity) * value);
        if (!by.isNull())
            window->move(from + QPoint(int(std::lround(by.x() * value)), int(std::lround(by.y() * value))));
    };
    m_motion.start(canMove() ? length : Seconds(0), defaultTiming, step, std::move(done));
}

void WindowMotion::shrinkAway(double part, Seconds length, Motion::Done done) {
    stop();
    if (!m_window)
        return;
    if (!canMove()) {
        m_window->hide();
        if (done)
            done();
        return;
    }
    auto *picture = new Picture(m_window);
    picture->show(1, m_window->windowOpacity());
    picture->QWidget::show();
    m_picture = picture;
    m_window->hide();
    m_motion.start(
        length, easeIn,
        [shown = QPointer<Picture>(picture), part](double value) {
            if (shown)
                shown->show(1 + (part - 1) * value, 1 - value);
        },
        [this, done = std::move(done)] {
            endShrink();
            if (done)
                done();
        });
}

} // namespace tavrine::look
