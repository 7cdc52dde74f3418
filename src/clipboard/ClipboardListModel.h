#pragma once

#include "clipboard/ClipboardItem.h"

#include <QObject>

#include <optional>
#include <vector>

namespace tavrine {

class ClipboardManager;

/// What the models of both clipboard panels share: the items that are shown, the one of them that is selected, and what
/// is done to a row.
///
/// Base of the panels' models; lives on the main thread.
///
///  1. `visibleItems` is made once for each change of what is shown, never for a paint.
///  2. An action on an item that is not visible any more does nothing.
class ClipboardListModel : public QObject {
    Q_OBJECT

public:
    struct EmptyState {
        QString text;
        QString symbol;
    };

    [[nodiscard]] const std::vector<ClipboardItem> &visibleItems() const { return m_visibleItems; }
    [[nodiscard]] const std::optional<QUuid> &selectedID() const { return m_selectedID; }
    /// Where the selected item stands among the visible ones; none while it is not among them.
    [[nodiscard]] std::optional<size_t> selectedIndex() const;
    [[nodiscard]] virtual EmptyState emptyState() const = 0; ///< shown when nothing is visible

    /// By keyboard: as far as there are items. A selection that is not visible is reset.
    void moveSelection(int delta);
    // By mouse, on the item with that `id`.
    virtual void use(const QUuid &id) = 0; ///< a click on the row
    virtual void togglePin(const QUuid &id);
    virtual void toggleSaved(const QUuid &id);

Q_SIGNALS:
    void visibleItemsChanged();
    void selectedIDChanged(); ///< the list scrolls so that the row stands at the centre

protected:
    ClipboardListModel(ClipboardManager &manager, QObject *parent);

    [[nodiscard]] ClipboardManager &manager() const { return m_manager; }
    void setVisibleItems(std::vector<ClipboardItem> items);
    void select(const std::optional<QUuid> &id);
    void selectFirst(); ///< or nothing, where there is nothing
    [[nodiscard]] const ClipboardItem *visibleItem(const std::optional<QUuid> &id) const;

private:
    ClipboardManager &m_manager;
    std::vector<ClipboardItem> m_visibleItems;
    std::optional<QUuid> m_selectedID;
};

} // namespace tavrine
