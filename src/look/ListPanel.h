#pragma once

#include "look/PanelKeys.h"
#include "look/PanelSurface.h"

namespace tavrine::look {

class EmptyState;
class SearchField;
class VirtualList;

/// A panel that is a search field over a list: the clipboard panels and the emoji picker. Here stands what a hand may
/// expect of each of them, while it is shown:
///
///  1. keys reach the panel's model first (`PanelKeys`), and what is typed arrives in the field, whatever has the
///  focus;
///  2. the page keys move the selection by what the list shows at once;
///  3. the wheel scrolls the list wherever in the panel the pointer is;
///  4. a hairline parts a large field from the rest, and another one the rows that went on under what is above the
///  list.
///
/// Belongs to its panel's window; lives on the main thread. The view that derives from it lays the three parts out.
class ListPanel : public PanelSurface {
    Q_OBJECT

protected:
    ListPanel(SearchField *search, PanelKeys::Handler keys, qreal cornerRadius = radius::panel,
              QWidget *parent = nullptr);

    [[nodiscard]] SearchField &search() const { return *m_search; }
    [[nodiscard]] VirtualList &list() const { return *m_list; }
    [[nodiscard]] EmptyState &empty() const { return *m_empty; }
    /// Shows the list, or in its place why it is empty.
    void showList(bool isEmpty);
    /// Moves the selection to `row`, or the nearest row that can have it, away from the present one in `direction`,
    /// which is -1 or +1.
    virtual void selectRow(int row, int direction) = 0;

    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    SearchField *m_search;
    VirtualList *m_list;
    EmptyState *m_empty;
    PanelKeys *m_keys;
};

} // namespace tavrine::look
