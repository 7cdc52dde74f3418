#include "panels/TakenCorner.h"

namespace tavrine {

QRectF TakenCorner::clearOf(const QRectF &usable, const QRectF &frame, double gap) const {
    if (!m_frame || !m_frame->intersects(frame))
        return frame;
    const QPointF above(frame.left(), m_frame->bottom() + gap); // y goes upwards
    const QPointF beside(m_frame->right() + gap, frame.top());
    for (const QPointF corner : {above, beside})
        if (const QRectF moved(corner, frame.size()); usable.contains(moved))
            return moved;
    return frame;
}

} // namespace tavrine
