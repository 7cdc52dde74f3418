#include "look/ScrollArea.h"

#include "look/Look.h"
#include "look/Paint.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace tavrine::look {
namespace {

constexpr int barWidth = 12; // what the pointer can take hold of
constexpr qreal thinThumb = 5;
constexpr qreal wideThumb = 7;
constexpr qreal shortestThumb = 28;
constexpr qreal wheelStep = 80;    // points for one notch: more than a row, less than two
constexpr double glideTime = 0.06; // the distance left shrinks to a third in this time
constexpr Seconds lingering{0.9};
constexpr Seconds fading{0.25};

} // namespace

/// The overlay bar of a ScrollArea.
class ScrollThumb final : public QWidget {
public:
    explicit ScrollThumb(ScrollArea *area) : QWidget(area), m_area(area) {
        setAttribute(Qt::WA_Hover);
        setCursor(Qt::ArrowCursor);
        setFocusPolicy(Qt::NoFocus);
        hide();
    }

    void place() {
        setGeometry(m_area->width() - barWidth, 0, barWidth, m_area->height());
        setVisible(m_area->maximumOffset() > 0);
        raise();
        update();
    }

    /// Shows itself for a while.
    void flash() {
        if (!isVisible())
            return;
        m_opacity = 1;
        update();
        if (!Look::moves())
            return; // stays: without motion a bar that comes and goes would only flicker
        m_motion.start(
            lingering + fading, [](Seconds time) { return std::min(1.0, (lingering + fading - time) / fading); },
            [this](double opacity) {
                if (m_isHeld || underMouse())
                    opacity = 1;
                if (opacity != m_opacity) {
                    m_opacity = opacity;
                    update();
                }
            });
    }

protected:
    void paintEvent(QPaintEvent *) override {
        if (m_opacity <= 0)
            return;
        QPainter painter(this);
        preparePainter(painter);
        const bool isWide = m_isHeld || underMouse();
        const Theme &theme = themeOf(this);
        QColor colour = theme.isDark ? QColor(255, 255, 255) : QColor(0, 0, 0);
        colour.setAlphaF(float((isWide ? 0.5 : 0.32) * m_opacity));
        const QRectF place = thumb();
        const qreal wide = isWide ? wideThumb : thinThumb;
        fillRounded(painter, QRectF(width() - 2 - wide, place.top(), wide, place.height()), wide / 2, colour);
    }

    void enterEvent(QEnterEvent *) override {
        m_motion.stop();
        m_opacity = 1;
        update();
    }
    void leaveEvent(QEvent *) override { flash(); }

    void mousePressEvent(QMouseEvent *event) override {
        const QRectF place = thumb();
        const qreal y = event->position().y();
        if (y < place.top() || y > place.bottom()) // beside the thumb: bring it under the pointer
            m_area->setOffset((y - place.height() / 2) / track() * m_area->maximumOffset());
        m_grip = y - thumb().top();
        m_isHeld = true;
        m_area->m_motion.stop();
        update();
    }
    void mouseMoveEvent(QMouseEvent *event) override {
        if (m_isHeld && track() > 0)
            m_area->setOffset((event->position().y() - m_grip - margin) / track() * m_area->maximumOffset());
        m_area->m_target = m_area->m_offset;
    }
    void mouseReleaseEvent(QMouseEvent *) override {
        m_isHeld = false;
        m_area->m_target = m_area->m_offset;
        flash();
    }

private:
    static constexpr qreal margin = 3;

    [[nodiscard]] qreal thumbHeight() const {
        const qreal whole = m_area->maximumOffset() + height();
        return std::max(shortestThumb, (height() - 2 * margin) * height() / whole);
    }
    [[nodiscard]] qreal track() const { return height() - 2 * margin - thumbHeight(); }
    [[nodiscard]] QRectF thumb() const {
        const qreal most = m_area->maximumOffset();
        const qreal top = margin + (most > 0 ? m_area->offset() / most * track() : 0);
        return {0, top, qreal(width()), thumbHeight()};
    }

    ScrollArea *m_area;
    Motion m_motion;
    double m_opacity = 0;
    qreal m_grip = 0;
    bool m_isHeld = false;
};

ScrollArea::ScrollArea(QWidget *parent) : QWidget(parent), m_thumb(new ScrollThumb(this)) {}

ScrollArea::~ScrollArea() = default;

qreal ScrollArea::maximumOffset() const {
    return std::max(0.0, contentHeight() - height());
}

void ScrollArea::setOffset(qreal offset) {
    // Whole device pixels, or text would be laid between them and shimmer.
    const qreal scale = devicePixelRatioF();
    const qreal place = std::round(std::clamp(offset, 0.0, maximumOffset()) * scale) / scale;
    if (place == m_offset)
        return;
    m_offset = place;
    moved();
    m_thumb->update();
    m_thumb->flash();
    Q_EMIT scrolled(m_offset);
}

void ScrollArea::scrollTo(qreal offset, bool isAnimated) {
    m_target = std::clamp(offset, 0.0, maximumOffset());
    if (isAnimated && isVisible() && Look::moves()) {
        glide();
        return;
    }
    m_motion.stop();
    setOffset(m_target);
}

void ScrollArea::glide() {
    if (m_motion.isRunning())
        return;             // it follows the target
    qreal place = m_offset; // finer than the pixels that are shown
    m_motion.run([this, place](Seconds passed) mutable {
        m_target = std::clamp(m_target, 0.0, maximumOffset());
        place += (m_target - place) * (1 - std::exp(-passed.count() / glideTime));
        const bool isThere = std::abs(m_target - place) < 0.5;
        setOffset(isThere ? m_target : place);
        return !isThere;
    });
}

void ScrollArea::scrollBy(QWheelEvent *event) {
    if (!event->pixelDelta().isNull()) {
        m_motion.stop();
        setOffset(m_offset - event->pixelDelta().y());
        m_target = m_offset;
    } else {
        if (!m_motion.isRunning())
            m_target = m_offset;
        scrollTo(m_target - event->angleDelta().y() / 120.0 * wheelStep, true);
    }
    event->accept();
}

void ScrollArea::wheelEvent(QWheelEvent *event) {
    if (maximumOffset() <= 0) {
        event->ignore();
        return;
    }
    scrollBy(event);
}

void ScrollArea::contentChanged() {
    const qreal most = maximumOffset();
    m_target = std::clamp(m_target, 0.0, most);
    if (m_offset > most)
        setOffset(most);
    m_thumb->place();
}

void ScrollArea::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    contentChanged();
}

ScrollPane::ScrollPane(QWidget *content, QWidget *parent) : ScrollArea(parent), m_content(content) {
    content->setParent(this);
    content->installEventFilter(this);
    content->lower();
}

qreal ScrollPane::contentHeight() const {
    const int wanted =
        m_content->hasHeightForWidth() ? m_content->heightForWidth(width()) : m_content->sizeHint().height();
    return std::max(wanted, m_content->minimumHeight());
}

void ScrollPane::moved() {
    m_content->move(0, -int(std::round(offset())));
}

void ScrollPane::place() {
    m_content->setGeometry(0, -int(std::round(offset())), width(), std::max(height(), int(contentHeight())));
    contentChanged();
}

void ScrollPane::resizeEvent(QResizeEvent *event) {
    ScrollArea::resizeEvent(event);
    place();
}

bool ScrollPane::eventFilter(QObject *object, QEvent *event) {
    if (object == m_content && event->type() == QEvent::LayoutRequest)
        place();
    return ScrollArea::eventFilter(object, event);
}

bool ScrollPane::focusNextPrevChild(bool next) {
    const bool isMoved = ScrollArea::focusNextPrevChild(next);
    // What has the keyboard must be in sight.
    const QWidget *focused = QApplication::focusWidget();
    if (isMoved && focused)
        reveal(*focused);
    return isMoved;
}

void ScrollPane::reveal(const QWidget &widget) {
    if (!m_content->isAncestorOf(&widget))
        return;
    const QRect area(widget.mapTo(m_content, QPoint(0, 0)), widget.size());
    if (area.top() < offset() || area.bottom() > offset() + height())
        scrollTo(area.center().y() - height() / 2.0, true);
}

} // namespace tavrine::look
