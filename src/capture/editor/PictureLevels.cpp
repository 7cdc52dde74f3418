#include "capture/editor/PictureLevels.h"

#include "capture/editor/Paintable.h"

#include <QPainter>

#include <algorithm>

namespace tavrine {
namespace {

constexpr double sharpFrom = 3; // from this many dots on a pixel shows as a square
constexpr double paintedMargin =
    2;                           // so much more is painted, so that the smoothing at the edges of what is seen is right
constexpr int smallestLevel = 4; // pixels of its shorter side

} // namespace

PictureLevels::PictureLevels(const QImage &picture) {
    QImage own = paintable(picture);
    if (own.isNull())
        return;
    own.setDevicePixelRatio(1);
    m_levels = std::make_shared<Levels>(Levels{std::move(own)});
}

bool PictureLevels::hasAlphaChannel() const {
    return m_levels && m_levels->front().hasAlphaChannel();
}

const QImage &PictureLevels::levelFor(double dotsPerPixel) const {
    size_t level = 0;
    for (double left = dotsPerPixel; left < 0.5; left *= 2, ++level) {
        if (level + 1 < m_levels->size())
            continue;
        const QImage &last = m_levels->back();
        if (std::min(last.width(), last.height()) < smallestLevel)
            break;
        QImage half = last.scaled(last.width() / 2, last.height() / 2, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        if (half.isNull())
            break;
        m_levels->push_back(std::move(half));
    }
    return (*m_levels)[std::min(level, m_levels->size() - 1)];
}

void PictureLevels::paint(QPainter &painter, const QRectF &whole, const QRectF &seen, double dots) const {
    const QRectF target = whole & seen.adjusted(-paintedMargin, -paintedMargin, paintedMargin, paintedMargin);
    if (!m_levels || target.isEmpty())
        return;
    const double dotsPerPixel = whole.width() * dots / m_levels->front().width();
    const QImage &level = levelFor(dotsPerPixel);
    const double across = level.width() / whole.width();
    const double down = level.height() / whole.height();
    const QRectF source((target.x() - whole.x()) * across, (target.y() - whole.y()) * down, target.width() * across,
                        target.height() * down);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, dotsPerPixel < sharpFrom);
    painter.drawImage(target, level, source);
}

} // namespace tavrine
