#include "look/ListPanel.h"

#include "look/EmptyState.h"
#include "look/Look.h"
#include "look/Paint.h"
#include "look/SearchField.h"
#include "look/VirtualList.h"

#include <QKeyEvent>
#include <QPainter>
#include <QWheelEvent>

namespace tavrine::look {

ListPanel::ListPanel(SearchField *search, PanelKeys::Handler keys, qreal cornerRadius, QWidget *parent)
    : PanelSurface(cornerRadius, parent), m_search(search), m_list(new VirtualList(this)),
      m_empty(new EmptyState(QString(), QString(), QString(), this)),
      m_keys(new PanelKeys(this, search->lineEdit(), std::move(keys))) {
    search->setParent(this);
    setFocusProxy(search);
    connect(m_list, &VirtualList::scrolled, this, [this] { update(0, m_list->y() - 1, width(), 1); });
}

void ListPanel::showList(bool isEmpty) {
    m_list->setVisible(!isEmpty);
    m_empty->setVisible(isEmpty);
}

void ListPanel::paintEvent(QPaintEvent *event) {
    PanelSurface::paintEvent(event);
    QPainter painter(this);
    const Theme &theme = themeOf(this);
    constexpr int edge = 1; // the panel's hairline, which no other line may cross
    if (m_search->y() == 0)
        paintSeparator(painter, QRectF(edge, 0, width() - 2 * edge, m_search->height()), theme);
    if (m_list->isVisible() && m_list->offset() > 0)
        paintSeparator(painter, QRectF(edge, 0, width() - 2 * edge, m_list->y()), theme);
}

void ListPanel::showEvent(QShowEvent *event) {
    PanelSurface::showEvent(event);
    m_keys->setOn(true);
}

void ListPanel::hideEvent(QHideEvent *event) {
    m_keys->setOn(false);
    PanelSurface::hideEvent(event);
}

void ListPanel::wheelEvent(QWheelEvent *event) {
    m_list->scrollBy(event);
}

// The field has no use for the page keys, so they come here.
void ListPanel::keyPressEvent(QKeyEvent *event) {
    const int direction = event->key() == Qt::Key_PageDown ? 1 : event->key() == Qt::Key_PageUp ? -1 : 0;
    if (direction == 0 || m_list->count() == 0)
        return PanelSurface::keyPressEvent(event);
    selectRow(m_list->pageFrom(m_list->selectedRow(), direction), direction);
}

} // namespace tavrine::look
