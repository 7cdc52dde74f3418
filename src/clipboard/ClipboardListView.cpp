#include "clipboard/ClipboardListView.h"

#include "clipboard/ClipboardManager.h"
#include "look/EmptyState.h"
#include "look/Paint.h"
#include "look/VirtualList.h"

#include <utility>

namespace tavrine {
namespace {

constexpr qsizetype longestSpoken = 200; // a screen reader that reads out a whole book helps nobody

} // namespace

ClipboardListView::ClipboardListView(ClipboardManager &manager, look::SearchField *search,
                                     look::PanelKeys::Handler keys, size_t actionCount, qreal cornerRadius,
                                     QWidget *parent)
    : ListPanel(search, std::move(keys), cornerRadius, parent), m_thumbnails(manager), m_actionCount(actionCount) {
    connect(&manager, &ClipboardManager::thumbnailMade, this, [this](const QString &fileName) {
        m_thumbnails.retry(fileName);
        list().update();
    });
}

void ClipboardListView::follow(ClipboardListModel &model) {
    m_model = &model;
    setUpList();
    connect(m_model, &ClipboardListModel::visibleItemsChanged, this, &ClipboardListView::visibleItemsChanged);
    connect(m_model, &ClipboardListModel::selectedIDChanged, this, &ClipboardListView::showSelection);
    visibleItemsChanged();
}

void ClipboardListView::setUpList() {
    look::VirtualList::Source source;
    source.count = [this] { return rowCount(); };
    source.height = [this](int row) { return rowHeight(row); };
    source.isActive = [this](int row) { return itemAt(row) != nullptr; };
    source.paint = [this](QPainter &painter, int row, const QRectF &rect, const look::RowState &state) {
        if (const ClipboardItem *item = itemAt(row))
            paintItem(painter, *item, rect, state);
        else
            paintOther(painter, row, rect);
    };
    source.accessibleText = [this](int row) { return accessibleText(row); };
    source.actionNames = [this](int row) {
        const ClipboardItem *item = itemAt(row);
        return item ? actionNames(*item) : QStringList();
    };
    source.act = [this](int row, int action) {
        if (const ClipboardItem *item = itemAt(row))
            act(QUuid(item->id), static_cast<size_t>(action)); // the list is another one after the action
    };
    source.toolTip = [this](int row, const QRectF &rect, QPointF place) -> std::pair<QString, QRectF> {
        const auto action = actionAt(rect, place);
        if (!action)
            return {};
        return {list().actionNames(row).value(static_cast<qsizetype>(*action)),
                look::rowActionRects(rect, m_actionCount)[*action]};
    };
    list().setSource(std::move(source));
    connect(&list(), &look::VirtualList::clicked, this, &ClipboardListView::clicked);
}

void ClipboardListView::visibleItemsChanged() {
    m_thumbnails.retry();
    list().reload();
    list().setSelectedRow(rowOfSelection());
    if (std::exchange(m_beginsAtTop, false))
        list().scrollTo(0, false);
    const bool isEmpty = m_model->visibleItems().empty();
    if (isEmpty)
        empty().set(m_model->emptyState().symbol, m_model->emptyState().text);
    showList(isEmpty);
}

void ClipboardListView::showSelection() {
    const int row = rowOfSelection();
    list().setSelectedRow(row);
    list().centreRow(row, true);
}

int ClipboardListView::rowOfSelection() const {
    const auto index = m_model->selectedIndex();
    return index ? rowOfItem(*index) : -1;
}

void ClipboardListView::selectRow(int row, int direction) {
    const ClipboardItem *item = itemAt(row);
    if (!item)
        item = itemAt(row + direction);
    if (!item) // a header at an end of the list
        item = itemAt(row - direction);
    if (!item)
        return;
    const auto index = static_cast<int>(item - m_model->visibleItems().data());
    m_model->moveSelection(index - static_cast<int>(m_model->selectedIndex().value_or(0)));
}

void ClipboardListView::paintOther(QPainter &, int, const QRectF &) {}

QString ClipboardListView::accessibleText(int row) const {
    QStringList words = spokenWords(row);
    if (!words.isEmpty())
        words.first().truncate(longestSpoken);
    if (!words.isEmpty() && words.first().trimmed().isEmpty())
        words.first() = QStringLiteral("White space");
    return words.join(QStringLiteral(", "));
}

std::optional<size_t> ClipboardListView::actionAt(const QRectF &row, QPointF place) const {
    const auto rects = look::rowActionRects(row, m_actionCount);
    for (size_t i = 0; i < rects.size(); ++i) {
        if (rects[i].contains(place))
            return i;
    }
    return std::nullopt;
}

void ClipboardListView::clicked(int row, QPointF place) {
    const ClipboardItem *item = itemAt(row);
    if (!item)
        return;
    const QUuid id = item->id; // the list is another one after the action
    if (const auto action = actionAt(list().rowRect(row), place))
        act(id, *action);
    else
        m_model->use(id);
}

} // namespace tavrine
