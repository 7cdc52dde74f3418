#pragma once

#include "base/NotificationCenter.h"
#include "clipboard/ClipboardItem.h"
#include "clipboard/ClipboardSearchCategory.h"
#include "clipboard/ClipboardSearchRow.h"

#include <QHash>
#include <QObject>

#include <functional>
#include <optional>
#include <vector>

namespace tavrine {

class Alerts;
class ClipboardManager;
class Time;

enum class ClipboardSearchKeyAction {
    moveUp,
    moveDown,
    previousCategory,
    nextCategory,
    paste,
    dismiss,
    togglePin,
    deleteItem
};

/// What the clipboard search panel shows, selects and does. The view paints it and hands over keys and clicks.
///
/// Belongs to the panel's view; lives on the main thread.
///
///  1. `diskItems` is the manager's answer to `query` and nothing else; it is fetched anew when the query or the
///     history changes, at once, without a delay.
///  2. `visibleItems` and `sections` are made once for each such change and each change of the category, never for a
///     paint. Selection and keys work on `visibleItems`.
///  3. Each opening begins anew: no query, all categories, the first item selected.
///  4. An action on an item that is not visible any more does nothing.
class ClipboardSearchModel : public QObject {
    Q_OBJECT

public:
    static constexpr auto openedNotification = "clipboardSearchPanelOpened";
    static constexpr auto windowTitle = "Clipboard Search";
    static constexpr int savedTextWidth = 360;
    static constexpr int savedTextHeight = 120;

    /// A run of `count` visible items under one header.
    struct Section {
        QString header;
        size_t first = 0;
        size_t count = 0;
        bool operator==(const Section &) const = default;
    };
    struct EmptyState {
        QString text;
        QString symbol;
    };
    struct Ports {
        ClipboardManager &manager;
        Alerts &alerts;
        NotificationCenter &center;
        Time &time;
    };
    explicit ClipboardSearchModel(Ports ports, QObject *parent = nullptr);

    void setOnDismiss(std::function<void()> onDismiss) { m_onDismiss = std::move(onDismiss); }
    void setOnPaste(std::function<void(const ClipboardItem &)> onPaste) { m_onPaste = std::move(onPaste); }

    [[nodiscard]] const QString &query() const { return m_query; }
    void setQuery(const QString &query);
    [[nodiscard]] bool hasQuery() const; ///< more than white space
    [[nodiscard]] ClipboardSearchCategory selectedCategory() const { return m_selectedCategory; }
    void setSelectedCategory(ClipboardSearchCategory category);
    [[nodiscard]] const std::optional<QUuid> &selectedID() const { return m_selectedID; }

    [[nodiscard]] const std::vector<ClipboardItem> &visibleItems() const { return m_visibleItems; }
    [[nodiscard]] const std::vector<Section> &sections() const { return m_sections; }
    [[nodiscard]] EmptyState emptyState() const; ///< shown when nothing is visible
    [[nodiscard]] ClipboardSearchRow row(const ClipboardItem &item) const;
    [[nodiscard]] bool showsAddButton() const { return m_selectedCategory == ClipboardSearchCategory::mySave; }

    void moveSelection(int delta);
    void moveCategory(int delta);

    // By keyboard, on the selected item.
    void pasteSelected();
    void togglePinOfSelected();
    void deleteSelected();
    // By mouse, on the item with that `id`: a click on the row, and its buttons, which select the row first.
    void paste(const QUuid &id);
    void togglePin(const QUuid &id);
    void toggleSaved(const QUuid &id);
    void deleteItem(const QUuid &id);
    /// Asks for a text and keeps it in My Saved.
    void addToMySaved();

    /// What a key does while the panel has the keyboard; none for a key that goes to the search field.
    [[nodiscard]] static std::optional<ClipboardSearchKeyAction> keyAction(int keyCode, bool isCommandHeld);
    /// True when the event is swallowed.
    bool handleKeyDown(const QString &keyWindowTitle, int keyCode, bool isCommandHeld);

Q_SIGNALS:
    void queryChanged();
    void selectedCategoryChanged();
    void visibleItemsChanged();
    void selectedIDChanged(); ///< the list scrolls so that the row stands at the centre
    void searchFieldFocusWanted();

private:
    void open();
    void historyChanged();
    void reload();
    void rebuildVisibleItems();
    [[nodiscard]] bool belongs(const ClipboardItem &item) const;
    [[nodiscard]] bool isLinkCached(const ClipboardItem &item) const;
    void select(const std::optional<QUuid> &id);
    void resetSelection();
    [[nodiscard]] const ClipboardItem *visibleItem(const std::optional<QUuid> &id) const;
    void perform(ClipboardSearchKeyAction action);

    Ports m_ports;
    std::function<void()> m_onDismiss;
    std::function<void(const ClipboardItem &)> m_onPaste;
    QString m_query;
    ClipboardSearchCategory m_selectedCategory = ClipboardSearchCategory::all;
    std::optional<QUuid> m_selectedID;
    std::vector<ClipboardItem> m_diskItems;
    std::vector<ClipboardItem> m_visibleItems;
    std::vector<Section> m_sections;
    mutable QHash<QUuid, bool> m_links; ///< of `m_diskItems`, as far as anyone asked
    NotificationCenter::Token m_openedToken;
};

} // namespace tavrine
