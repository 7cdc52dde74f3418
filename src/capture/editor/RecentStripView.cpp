#include "capture/editor/RecentStripView.h"

#include "look/Metrics.h"

#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

constexpr int gap = look::space::medium;
constexpr double notch = 120;
constexpr double notchWay = 120;

} // namespace

RecentStripView::RecentStripView(int height, QWidget *parent) : QWidget(parent), m_row(new QWidget(this)) {
    setFixedHeight(height + 2 * edge);
}

void RecentStripView::setTiles(std::vector<QWidget *> tiles) {
    for (QWidget *tile : m_tiles) {
        tile->hide();
        tile->deleteLater(); // the list may change while one of them is being pressed
    }
    m_tiles = std::move(tiles);
    int x = edge;
    for (QWidget *tile : m_tiles) {
        tile->setParent(m_row);
        tile->installEventFilter(this);
        tile->move(x, edge);
        tile->show();
        x += tile->width() + gap;
    }
    m_row->resize(std::max(x - gap + edge, 0), height());
    setOffset(m_offset);
}

int RecentStripView::maximumOffset() const {
    return std::max(0, m_row->width() - width());
}

void RecentStripView::scrollTo(int offset) {
    const int from = m_offset;
    const int to = std::clamp(offset, 0, maximumOffset());
    m_motion.start(look::duration::scroll, look::easeOut,
                   [this, from, to](double part) { setOffset(from + int(std::lround((to - from) * part))); });
}

void RecentStripView::setOffset(int offset) {
    m_offset = std::clamp(offset, 0, maximumOffset());
    m_row->move(-m_offset, 0);
    Q_EMIT scrolled();
}

void RecentStripView::resizeEvent(QResizeEvent *) {
    setOffset(m_offset);
}

void RecentStripView::wheelEvent(QWheelEvent *event) {
    const QPoint pixels = event->pixelDelta();
    const QPoint angle = event->angleDelta();
    m_motion.stop();
    if (!pixels.isNull())
        setOffset(m_offset - (std::abs(pixels.x()) > std::abs(pixels.y()) ? pixels.x() : pixels.y()));
    else
        scrollTo(m_offset - int((angle.x() != 0 ? angle.x() : angle.y()) / notch * notchWay));
    event->accept();
}

bool RecentStripView::eventFilter(QObject *object, QEvent *event) {
    if (event->type() == QEvent::FocusIn) {
        const auto *tile = qobject_cast<QWidget *>(object);
        if (tile->x() - edge < m_offset)
            scrollTo(tile->x() - edge);
        else if (tile->geometry().right() + edge >= m_offset + width())
            scrollTo(tile->geometry().right() + 1 + edge - width());
    }
    return QWidget::eventFilter(object, event);
}

} // namespace tavrine
