#include "look/SegmentedControl.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Control.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavrine::look {
namespace {

constexpr int inset = 2;
constexpr int padding = 14;
constexpr int least = 6; // of padding, where there is little room

/// Neighbours share their edge and no pixel.
QRect wholePixels(const QRectF &rect) {
    return {QPoint(qRound(rect.left()), qRound(rect.top())),
            QPoint(qRound(rect.right()) - 1, qRound(rect.bottom()) - 1)};
}

class Segment final : public Control {
public:
    Segment(const QString &text, QWidget *parent) : Control(parent) {
        setText(inDesktopWords(text));
        setCheckable(true);
        setAutoExclusive(true);
    }
    [[nodiscard]] QSize sizeHint() const override {
        return {int(std::ceil(lineWidth(text(), TextRole::callout))), height::control - 2 * inset};
    }

protected:
    void paint(QPainter &painter) override {
        const Theme &colours = theme();
        const QColor ink = isChecked() ? colours.text : mixed(colours.secondaryText, colours.text, hoverPart());
        paintLine(painter, rect(), text(), TextRole::callout, ink, Qt::AlignHCenter);
    }
};

/// Tab comes to what is chosen, and not to what would be chosen next; the arrows go on from there.
void keepOneTabStop(const std::vector<Control *> &segments, int current) {
    for (size_t i = 0; i < segments.size(); ++i)
        segments[i]->setFocusPolicy(int(i) == std::max(current, 0) ? Qt::TabFocus : Qt::NoFocus);
}

} // namespace

SegmentedControl::SegmentedControl(const QStringList &texts, QWidget *parent) : QWidget(parent) {
    for (const QString &text : texts) {
        auto *one = new Segment(text, this);
        const int index = int(m_segments.size());
        one->setChecked(index == 0);
        connect(one, &QAbstractButton::clicked, this, [this, index] {
            if (index != m_current) {
                setCurrent(index);
                Q_EMIT chosen(index);
            }
            Q_EMIT pressed(index);
        });
        m_segments.push_back(one);
    }
    keepOneTabStop(m_segments, m_current);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setRole(*this, QAccessible::Grouping);
}

void SegmentedControl::setCurrent(int index) {
    if (index < none || index >= int(m_segments.size()) || index == m_current)
        return;
    const int before = std::exchange(m_current, index);
    keepOneTabStop(m_segments, index);
    if (index == none) {
        Control &last = *m_segments[size_t(before)];
        last.setAutoExclusive(false); // which keeps one of them checked
        last.setChecked(false);
        last.setAutoExclusive(true);
        m_motion.stop();
        update();
        return;
    }
    m_segments[size_t(index)]->setChecked(true);
    if (!isVisible() || before == none) { // what nobody has seen elsewhere does not come from there
        m_motion.stop();
        m_plate = index;
        update();
        return;
    }
    const double from = m_plate;
    m_motion.start(Spring::responding(0.3, 0.825), [this, from, index](double value) {
        m_plate = from + (index - from) * value;
        update();
    });
}

QSize SegmentedControl::sizeHint() const {
    qreal widest = 0;
    for (const Control *one : m_segments)
        widest = std::max(widest, lineWidth(one->text(), TextRole::callout));
    const int each = int(std::ceil(widest)) + 2 * padding;
    return {each * int(m_segments.size()) + 2 * inset, height::control};
}

QRectF SegmentedControl::segment(double index) const {
    const QRectF track = QRectF(rect()).adjusted(inset, inset, -inset, -inset);
    const auto count = qreal(std::max<size_t>(1, m_segments.size()));
    const qreal each = track.width() / count;
    qreal needed = 0;
    qreal widest = 0;
    for (const Control *one : m_segments) {
        needed += one->sizeHint().width();
        widest = std::max(widest, qreal(one->sizeHint().width()));
    }
    // All as wide as each other where the widest has its room; else each gets what it needs.
    const qreal spare = (track.width() - needed) / count;
    const auto width = [&](size_t i) {
        return widest + 2 * least <= each ? each : m_segments[i]->sizeHint().width() + spare;
    };
    qreal left = track.left();
    const auto whole = size_t(std::clamp(std::floor(index), 0.0, count - 1));
    for (size_t i = 0; i < whole; ++i)
        left += width(i);
    const double part = index - double(whole); // on its way to the next, or beyond an end
    const size_t next = std::min(whole + 1, m_segments.size() - 1);
    const qreal own = width(whole);
    return {left + part * own, track.top(), own + std::clamp(part, 0.0, 1.0) * (width(next) - own), track.height()};
}

void SegmentedControl::resizeEvent(QResizeEvent *event) {
    for (size_t i = 0; i < m_segments.size(); ++i)
        m_segments[i]->setGeometry(wholePixels(segment(double(i))));
    QWidget::resizeEvent(event);
}

void SegmentedControl::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    const QRectF track = rect();
    fillRounded(painter, track, radius::control, theme.control);
    if (m_current == none)
        return;
    const QRectF plate = segment(m_plate);
    const qreal corner = radius::control - inset;
    if (!theme.isDark)
        fillRounded(painter, plate.translated(0, 1), corner, QColor(0, 0, 0, 22));
    fillRounded(painter, plate, corner, theme.isDark ? QColor(255, 255, 255, 44) : theme.elevated);
    strokeHairline(painter, plate, corner, theme.separator);
}

} // namespace tavrine::look
