#include "look/VirtualList.h"

#include "look/Look.h"
#include "look/ToolTip.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>

#include <algorithm>

namespace tavrine::look {
namespace {

constexpr int rowsPerMark = 64;

} // namespace

VirtualList::VirtualList(QWidget *parent) : ScrollArea(parent) {
    setMouseTracking(true);
    setFocusPolicy(Qt::NoFocus);
    installVirtualListAccessibility();
}

void VirtualList::setSource(Source source) {
    m_source = std::move(source);
    reload();
}

void VirtualList::setPadding(const QMargins &padding) {
    m_padding = padding;
    contentChanged();
    update();
}

void VirtualList::reload() {
    m_count = m_source.count ? std::max(0, m_source.count()) : 0;
    m_tops.clear();
    m_height = 0;
    if (m_source.uniformHeight > 0) {
        m_height = qint64(m_count) * m_source.uniformHeight;
    } else {
        m_tops.reserve(size_t(m_count) / rowsPerMark + 1);
        for (int row = 0; row < m_count; ++row) {
            if (row % rowsPerMark == 0)
                m_tops.push_back(m_height);
            m_height += heightOf(row);
        }
    }
    if (m_selected >= m_count)
        m_selected = -1;
    m_pressed = -1;
    m_isReloadedSincePress = true;
    contentChanged();
    hoverAt(m_pointer);
    update();
    if (QAccessible::isActive()) {
        QAccessibleTableModelChangeEvent reset(this, QAccessibleTableModelChangeEvent::ModelReset);
        QAccessible::updateAccessibility(&reset);
    }
}

int VirtualList::heightOf(int row) const {
    return m_source.uniformHeight > 0 ? m_source.uniformHeight
                                      : std::max(1, m_source.height ? m_source.height(row) : 1);
}

qint64 VirtualList::topOf(int row) const {
    if (m_source.uniformHeight > 0)
        return qint64(row) * m_source.uniformHeight;
    qint64 top = m_tops[size_t(row) / rowsPerMark];
    for (int other = row - row % rowsPerMark; other < row; ++other)
        top += heightOf(other);
    return top;
}

qreal VirtualList::contentHeight() const {
    return qreal(m_height) + m_padding.top() + m_padding.bottom();
}

int VirtualList::rowAt(qreal y) const {
    const qreal place = y + offset() - m_padding.top();
    if (place < 0 || place >= qreal(m_height))
        return -1;
    if (m_source.uniformHeight > 0)
        return int(place / m_source.uniformHeight);
    const auto mark = std::upper_bound(m_tops.begin(), m_tops.end(), qint64(place)) - 1;
    int row = int(mark - m_tops.begin()) * rowsPerMark;
    for (qint64 bottom = *mark + heightOf(row); qreal(bottom) <= place && row + 1 < m_count;)
        bottom += heightOf(++row);
    return row;
}

QRectF VirtualList::rowRect(int row) const {
    if (row < 0 || row >= m_count)
        return {};
    return {qreal(m_padding.left()), qreal(topOf(row)) + m_padding.top() - offset(),
            qreal(width() - m_padding.left() - m_padding.right()), qreal(heightOf(row))};
}

int VirtualList::pageFrom(int row, int direction) const {
    if (row < 0 || row >= m_count)
        return m_count > 0 ? 0 : -1;
    const qreal farthest = height() - heightOf(row); // from one top to the other
    int found = row;
    for (int next = row + direction; next >= 0 && next < m_count; next += direction) {
        const qreal reach = direction > 0 ? qreal(topOf(next) + heightOf(next) - topOf(row) - heightOf(row))
                                          : qreal(topOf(row) - topOf(next));
        if (reach > farthest && found != row)
            break;
        found = next;
    }
    return found;
}

QString VirtualList::accessibleText(int row) const {
    return m_source.accessibleText && row >= 0 && row < m_count ? m_source.accessibleText(row) : QString();
}

QStringList VirtualList::actionNames(int row) const {
    return m_source.actionNames && row >= 0 && row < m_count ? m_source.actionNames(row) : QStringList();
}

void VirtualList::act(int row, int action) {
    if (m_source.act && action >= 0 && action < actionNames(row).size())
        m_source.act(row, action);
}

bool VirtualList::isActive(int row) const {
    return row >= 0 && row < m_count && (!m_source.isActive || m_source.isActive(row));
}

void VirtualList::setSelectedRow(int row) {
    const int wanted = row >= 0 && row < m_count ? row : -1;
    if (wanted == m_selected)
        return;
    updateRow(m_selected);
    m_selected = wanted;
    updateRow(m_selected);
    if (m_selected >= 0 && QAccessible::isActive()) {
        QAccessibleEvent event(this, QAccessible::Focus);
        event.setChild(m_selected);
        QAccessible::updateAccessibility(&event);
    }
}

void VirtualList::centreRow(int row, bool isAnimated) {
    if (row < 0 || row >= m_count)
        return;
    scrollTo(qreal(topOf(row)) + m_padding.top() + heightOf(row) / 2.0 - height() / 2.0, isAnimated);
}

void VirtualList::updateRow(int row) {
    if (row >= 0 && row < m_count)
        update(rowRect(row).toAlignedRect());
}

void VirtualList::moved() {
    hoverAt(m_pointer);
    update();
}

void VirtualList::paintEvent(QPaintEvent *event) {
    if (m_count == 0 || !m_source.paint)
        return;
    QPainter painter(this);
    preparePainter(painter);
    const QRect area = event->rect();
    int row = rowAt(std::max(area.top(), int(m_padding.top() - offset())));
    if (row < 0)
        return;
    for (QRectF place = rowRect(row); row < m_count && place.top() <= area.bottom();) {
        RowState state;
        state.isSelected = row == m_selected;
        state.isHovered = row == m_hovered;
        state.isPressed = row == m_pressed && row == m_hovered;
        if (state.isHovered)
            state.pointer = m_pointer;
        m_source.paint(painter, row, place, state);
        if (++row < m_count) {
            place.moveTop(place.bottom());
            place.setHeight(heightOf(row));
        }
    }
}

void VirtualList::hoverAt(const std::optional<QPointF> &place) {
    m_pointer = place;
    int row = place ? rowAt(place->y()) : -1;
    if (!isActive(row))
        row = -1;
    if (row != m_hovered) {
        updateRow(m_hovered);
        m_hovered = row;
        ToolTip::hide();
    }
    updateRow(row); // what stands under the pointer within the row may be another
}

void VirtualList::mouseMoveEvent(QMouseEvent *event) {
    hoverAt(event->position());
}

void VirtualList::leaveEvent(QEvent *) {
    hoverAt({});
}

void VirtualList::mousePressEvent(QMouseEvent *event) {
    ToolTip::hide();
    hoverAt(event->position());
    if (event->button() == Qt::LeftButton)
        m_pressed = m_hovered;
    m_isReloadedSincePress = false;
    updateRow(m_pressed);
}

void VirtualList::mouseDoubleClickEvent(QMouseEvent *event) {
    if (!m_isReloadedSincePress)
        mousePressEvent(event);
}

void VirtualList::mouseReleaseEvent(QMouseEvent *event) {
    hoverAt(event->position());
    const int row = std::exchange(m_pressed, -1);
    updateRow(row);
    if (event->button() == Qt::LeftButton && row >= 0 && row == m_hovered && rect().contains(event->pos()))
        Q_EMIT clicked(row, event->position());
}

void VirtualList::contextMenuEvent(QContextMenuEvent *event) {
    const int row = rowAt(event->pos().y());
    if (isActive(row))
        Q_EMIT contextMenuRequested(row, event->globalPos());
}

bool VirtualList::event(QEvent *event) {
    if (event->type() == QEvent::ToolTip && m_source.toolTip) {
        const QPointF place = static_cast<QHelpEvent *>(event)->pos();
        const int row = rowAt(place.y());
        if (isActive(row)) {
            const auto [text, area] = m_source.toolTip(row, rowRect(row), place);
            if (!text.isEmpty())
                ToolTip::show(this, text, area.toAlignedRect());
        }
        return true;
    }
    return ScrollArea::event(event);
}

} // namespace tavrine::look
