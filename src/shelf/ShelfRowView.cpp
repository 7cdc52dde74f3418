#include "shelf/ShelfRowView.h"

#include "base/DesktopWords.h"
#include "look/Look.h"
#include "look/Paint.h"
#include "ports/Pasteboard.h"
#include "ports/UrlOpener.h"
#include "shelf/NotchViewModel.h"
#include "shelf/ShelfItemDragSourceView.h"

#include <QAccessible>
#include <QKeyEvent>
#include <QLinearGradient>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

constexpr double slotWidth = ShelfItemDragSourceView::slotWidth;
constexpr double edgeWidth = 22; ///< of the shade where the row goes on
constexpr double barHeight = 3;
constexpr double shortestBar = 36;

look::Spring arrivingSpring() {
    return look::Spring::interpolating(1, 300, 20);
}

look::Spring scrollingSpring() {
    return look::Spring::responding(0.35, 1);
}

} // namespace

/// Shades over the ends at which the row goes on, and a bar that tells how far.
class ShelfRowView::Edges final : public QWidget {
public:
    explicit Edges(ShelfRowView *row) : QWidget(row), m_row(row) { setAttribute(Qt::WA_TransparentForMouseEvents); }

protected:
    void paintEvent(QPaintEvent *) override {
        const double most = m_row->maximumOffset();
        if (most <= 0)
            return;
        QPainter painter(this);
        look::preparePainter(painter);
        const double tall = ShelfItemDragSourceView::tileHeight;
        shade(painter, QRectF(0, 0, edgeWidth, tall), false, m_row->offset());
        shade(painter, QRectF(width() - edgeWidth, 0, edgeWidth, tall), true, most - m_row->offset());
        const double bar = std::max(shortestBar, double(width()) * width() / (width() + most));
        const QRectF place((width() - bar) * m_row->offset() / most, height() - barHeight, bar, barHeight);
        look::fillRounded(painter, QRectF(0, place.top(), width(), barHeight), barHeight / 2,
                          QColor(255, 255, 255, 28));
        look::fillRounded(painter, place, barHeight / 2, QColor(255, 255, 255, 120));
    }

private:
    static void shade(QPainter &painter, const QRectF &area, bool isRight, double beyond) {
        QColor black(Qt::black);
        black.setAlphaF(float(std::clamp(beyond / edgeWidth, 0.0, 1.0)));
        QLinearGradient gradient(area.topLeft(), area.topRight());
        gradient.setColorAt(isRight ? 1 : 0, black);
        gradient.setColorAt(isRight ? 0 : 1, Qt::transparent);
        painter.fillRect(area, gradient);
    }

    ShelfRowView *m_row;
};

ShelfRowView::ShelfRowView(NotchViewModel &viewModel, const ShelfPorts &ports, QWidget *parent)
    : QWidget(parent), m_viewModel(&viewModel), m_ports(ports), m_pictures(ports.icons,
                                                                           [this](const QUuid &id) {
                                                                               for (auto *tile : m_tiles)
                                                                                   if (tile->item().id == id)
                                                                                       tile->update();
                                                                           }),
      m_edges(new Edges(this)) {
    setFocusPolicy(Qt::TabFocus);
    installShelfRowAccessibility(); // before the name, of which a screen reader may be told at once
    setAccessibleName(inDesktopWords(QStringLiteral("Shelf")));
    connect(&viewModel, &NotchViewModel::itemsChanged, this, &ShelfRowView::takeItems);
    connect(&viewModel, &NotchViewModel::fileToOpen, this, [this](const QUrl &url) { m_ports.urls.openUrl(url); });
    m_items = viewModel.items();
}

ShelfRowView::~ShelfRowView() = default;

double ShelfRowView::maximumOffset() const {
    return std::max(0.0, double(m_items.size()) * slotWidth - width());
}

QRectF ShelfRowView::slot(int index) const {
    const double whole = double(m_items.size()) * slotWidth;
    const double left = whole < width() ? std::floor((width() - whole) / 2) : -m_offset;
    return {left + index * slotWidth, 0, slotWidth, double(ShelfItemDragSourceView::tileHeight)};
}

int ShelfRowView::itemAt(const QPointF &place) const {
    const double along = place.x() - slot(0).left();
    const bool isInside = rect().contains(place.toPoint()) && place.y() < slot(0).bottom() && along >= 0;
    const auto index = static_cast<qsizetype>(along / slotWidth);
    return isInside && index < m_items.size() ? static_cast<int>(index) : -1;
}

/// Those that stay go to their new places, those that are new grow where they belong.
void ShelfRowView::takeItems() {
    m_before.clear();
    for (const auto *tile : m_tiles)
        if (tile->isVisibleTo(this))
            m_before.insert(tile->item().id, tile->x());
    const bool isLonger = m_viewModel->items().size() > m_items.size();
    m_items = m_viewModel->items();
    if (m_current >= m_items.size())
        m_current = static_cast<int>(m_items.size()) - 1;
    m_scrolling.stop();
    m_offset = m_target = isLonger ? maximumOffset() : std::min(m_offset, maximumOffset());
    if (isVisible()) {
        m_arrived = 0;
        m_arriving.start(arrivingSpring(), [this](double part) {
            m_arrived = part;
            place();
        });
    } else {
        m_arriving.stop();
        m_arrived = 1;
    }
    place();
    if (QAccessible::isActive()) {
        QAccessibleTableModelChangeEvent reset(this, QAccessibleTableModelChangeEvent::ModelReset);
        QAccessible::updateAccessibility(&reset);
        tellCurrent();
    }
}

/// One tile for each of the items, the same as before where there was one.
std::vector<ShelfItemDragSourceView *> ShelfRowView::tilesFor(int first, int count) {
    std::vector<ShelfItemDragSourceView *> tiles(static_cast<size_t>(count), nullptr);
    std::vector<ShelfItemDragSourceView *> free;
    for (auto *tile : m_tiles) {
        int index = first;
        while (index < first + count && m_items.at(index).id != tile->item().id)
            ++index;
        if (index < first + count)
            tiles[static_cast<size_t>(index - first)] = tile;
        else
            free.push_back(tile);
    }
    for (auto &tile : tiles) {
        if (tile)
            continue;
        if (!free.empty()) {
            tile = free.back();
            free.pop_back();
            continue;
        }
        tile = new ShelfItemDragSourceView({.viewModel = m_viewModel,
                                            .dragging = m_ports.dragging,
                                            .pictures = m_pictures,
                                            .open = [this](const ShelfItem &item) { openItem(item); }},
                                           this);
        m_tiles.push_back(tile);
    }
    for (auto *tile : free)
        tile->hide();
    return tiles;
}

void ShelfRowView::placeTile(ShelfItemDragSourceView &tile, int index) {
    const ShelfItem &item = m_items.at(index);
    if (tile.item().id != item.id)
        tile.setItem(item);
    const double target = slot(index).left();
    const auto before = m_before.constFind(item.id);
    const bool isNew = m_arrived != 1 && before == m_before.constEnd();
    const double from = before == m_before.constEnd() ? target : *before;
    tile.move(int(std::round(from + (target - from) * m_arrived)), 0);
    tile.setArrived(isNew ? m_arrived : 1);
    tile.setCurrent(index == m_current && hasFocus());
    tile.show();
}

void ShelfRowView::place() {
    if (m_arrived == 1)
        m_before.clear();
    const double left = slot(0).left();
    const int count = static_cast<int>(m_items.size());
    const int first = std::clamp(static_cast<int>(std::floor(-left / slotWidth)), 0, count);
    const int last = std::clamp(static_cast<int>(std::ceil((width() - left) / slotWidth)), first, count);
    const auto tiles = tilesFor(first, last - first);
    for (int index = first; index < last; ++index)
        placeTile(*tiles[static_cast<size_t>(index - first)], index);
    m_edges->setGeometry(rect());
    m_edges->raise();
    m_edges->update();
}

void ShelfRowView::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    m_offset = std::clamp(m_offset, 0.0, maximumOffset());
    m_target = m_offset;
    place();
}

void ShelfRowView::scrollTo(double offset, bool isAnimated) {
    m_target = std::clamp(offset, 0.0, maximumOffset());
    const double from = m_offset;
    const auto step = [this, from](double part) {
        m_offset = std::round(from + (m_target - from) * part);
        place();
    };
    m_scrolling.stop();
    if (isAnimated && isVisible())
        m_scrolling.start(scrollingSpring(), step);
    else
        step(1);
}

void ShelfRowView::wheelEvent(QWheelEvent *event) {
    const QPoint pixels = event->pixelDelta();
    const QPoint angle = event->angleDelta();
    const auto along = [](const QPoint &delta) {
        return std::abs(delta.x()) > std::abs(delta.y()) ? delta.x() : delta.y();
    };
    if (!pixels.isNull())
        scrollTo(m_offset - along(pixels), false);
    else
        scrollTo(m_target - along(angle) / 120.0 * slotWidth, true);
    event->accept();
}

void ShelfRowView::reveal(int index) {
    const double left = index * slotWidth;
    if (left < m_target)
        scrollTo(left, true);
    else if (left + slotWidth > m_target + width())
        scrollTo(left + slotWidth - width(), true);
}

void ShelfRowView::setCurrent(int index) {
    m_current = std::clamp(index, m_items.isEmpty() ? -1 : 0, static_cast<int>(m_items.size()) - 1);
    if (m_current >= 0)
        reveal(m_current);
    place();
    tellCurrent();
}

void ShelfRowView::tellCurrent() {
    if (!hasFocus() || m_current < 0 || !QAccessible::isActive())
        return;
    QAccessibleEvent event(this, QAccessible::Focus);
    event.setChild(m_current);
    QAccessible::updateAccessibility(&event);
}

void ShelfRowView::focusInEvent(QFocusEvent *event) {
    QWidget::focusInEvent(event);
    setCurrent(std::max(m_current, 0));
}

void ShelfRowView::focusOutEvent(QFocusEvent *event) {
    QWidget::focusOutEvent(event);
    place();
}

void ShelfRowView::keyPressEvent(QKeyEvent *event) {
    const int page = std::max(1, static_cast<int>(width() / slotWidth));
    const bool isCommand = event->modifiers() & (Qt::ControlModifier | Qt::MetaModifier);
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Up:
        setCurrent(m_current - 1);
        return;
    case Qt::Key_Right:
    case Qt::Key_Down:
        setCurrent(m_current + 1);
        return;
    case Qt::Key_Home:
        setCurrent(0);
        return;
    case Qt::Key_End:
        setCurrent(static_cast<int>(m_items.size()) - 1);
        return;
    case Qt::Key_PageUp:
        setCurrent(m_current - page);
        return;
    case Qt::Key_PageDown:
        setCurrent(m_current + page);
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        open(m_current);
        return;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        remove(m_current);
        return;
    default:
        break;
    }
    if (event->key() == Qt::Key_C && isCommand)
        copy(m_current);
    else
        QWidget::keyPressEvent(event);
}

void ShelfRowView::openItem(const ShelfItem &item) {
    if (m_viewModel)
        m_viewModel->openItem(item);
}

void ShelfRowView::open(int index) {
    if (index >= 0 && index < m_items.size())
        openItem(m_items.at(index));
}

void ShelfRowView::remove(int index) {
    if (index >= 0 && index < m_items.size() && m_viewModel)
        m_viewModel->removeItem(QUuid(m_items.at(index).id));
}

void ShelfRowView::copy(int index) {
    if (index < 0 || index >= m_items.size())
        return;
    const ShelfItem &item = m_items.at(index);
    m_ports.pasteboard.clearContents();
    if (item.url)
        m_ports.pasteboard.writeFileUrls({*item.url});
    else if (item.text)
        m_ports.pasteboard.setString(*item.text);
    else if (item.image)
        m_ports.pasteboard.writeImage(*item.image);
}

} // namespace tavrine
