#include "look/Toggle.h"

#include "look/Metrics.h"
#include "look/Paint.h"

#include <QPainter>

namespace tavrine::look {
namespace {

constexpr int wide = 38;
constexpr int tall = 22;
constexpr qreal gap = 2; // between the knob and the track's edge

} // namespace

Toggle::Toggle(QWidget *parent) : Control(parent) {
    setCheckable(true);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(this, &QAbstractButton::toggled, this, [this](bool isOn) {
        const double from = m_place;
        const double to = isOn ? 1 : 0;
        if (!isVisible()) {
            m_motion.stop();
            m_place = to;
            return;
        }
        m_motion.start(duration::toggle, easeInOut, [this, from, to](double value) {
            m_place = from + (to - from) * value;
            update();
        });
    });
}

QSize Toggle::sizeHint() const {
    return {wide, tall};
}

QRectF Toggle::body() const {
    return {0.0, (height() - tall) / 2.0, wide, tall};
}

qreal Toggle::cornerRadius() const {
    return tall / 2.0;
}

void Toggle::paint(QPainter &painter) {
    const Theme &colours = theme();
    const QRectF track = body();
    const QColor off = over(colours.elevated, colours.isDark ? QColor(255, 255, 255, 56) : QColor(0, 0, 0, 52));
    fillRounded(painter, track, tall / 2.0, mixed(off, colours.accent, m_place));
    if (hoverPart() > 0)
        fillRounded(painter, track, tall / 2.0, mixed(Qt::transparent, colours.hover, hoverPart()));
    const qreal knob = tall - 2 * gap;
    const qreal stretch = isDown() ? 3 : 0; // under the finger the knob widens towards where it will go
    const qreal left = track.left() + gap + m_place * (wide - 2 * gap - knob - stretch);
    const QRectF place(left, track.top() + gap, knob + stretch, knob);
    fillRounded(painter, place.translated(0, 1), knob / 2, QColor(0, 0, 0, 40));
    fillRounded(painter, place, knob / 2, Qt::white);
}

} // namespace tavrine::look
