#pragma once

#include "clipboard/ClipboardListModel.h"
#include "clipboard/RowThumbnails.h"
#include "look/ListPanel.h"

#include <QPointF>
#include <QRectF>
#include <QStringList>

class QPainter;

namespace tavrine {

namespace look {
struct RowState;
} // namespace look

/// What the views of both clipboard panels share: a list whose rows are the model's items, with buttons on the row that
/// the pointer or the selection is on, their tool tips, and what a screen reader says of them.
///
/// Base of the panels' views; lives on the main thread. The view that derives from it owns the model, and calls
/// `follow` at the end of its making.
class ClipboardListView : public look::ListPanel {
    Q_OBJECT

protected:
    ClipboardListView(ClipboardManager &manager, look::SearchField *search, look::PanelKeys::Handler keys,
                      size_t actionCount, qreal cornerRadius, QWidget *parent);
    /// The model lives as long as the view.
    void follow(ClipboardListModel &model);

    [[nodiscard]] virtual int rowCount() const = 0;
    /// Null for a row that is no item's.
    [[nodiscard]] virtual const ClipboardItem *itemAt(int row) const = 0;
    [[nodiscard]] virtual int rowOfItem(size_t index) const = 0;
    [[nodiscard]] virtual int rowHeight(int row) const = 0;
    virtual void paintItem(QPainter &painter, const ClipboardItem &item, const QRectF &rect,
                           const look::RowState &state) = 0;
    virtual void paintOther(QPainter &painter, int row, const QRectF &rect);
    /// What a screen reader says of the row: first its title, then what stands under it.
    [[nodiscard]] virtual QStringList spokenWords(int row) const = 0;
    /// The buttons of an item's row, by their tool tips.
    [[nodiscard]] virtual QStringList actionNames(const ClipboardItem &item) const = 0;
    virtual void act(const QUuid &id, size_t action) = 0;

    /// The next list is another one, not the same one changed: it begins at the top.
    void beginAtTop() { m_beginsAtTop = true; }
    [[nodiscard]] RowThumbnails &thumbnails() { return m_thumbnails; }

    void selectRow(int row, int direction) override;

private:
    void setUpList();
    void visibleItemsChanged();
    void showSelection();
    [[nodiscard]] int rowOfSelection() const;
    [[nodiscard]] QString accessibleText(int row) const;
    /// The button of a row at a place.
    [[nodiscard]] std::optional<size_t> actionAt(const QRectF &row, QPointF place) const;
    void clicked(int row, QPointF place);

    ClipboardListModel *m_model = nullptr;
    RowThumbnails m_thumbnails;
    size_t m_actionCount;
    bool m_beginsAtTop = false;
};

} // namespace tavrine
