#pragma once

#include "base/NotificationCenter.h"
#include "clipboard/ClipboardListModel.h"
#include "clipboard/ClipboardSearchCategory.h"
#include "clipboard/ClipboardSearchRow.h"

#include <QHash>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace tavrine {

class Alerts;
class HistoryRead;
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
///     history changes, at once, without a delay. An answer that takes longer than `searchPatience` is not waited for:
///     the list stays as it is until it comes, what the keys do to the list waits for it in order, and an answer to an
///     older query is dropped.
///  2. `visibleItems` and `sections` are made anew for each such change and each change of the category.
///  3. Each opening begins anew: no query, all categories, the first item selected.
class ClipboardSearchModel : public ClipboardListModel {
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
    struct Ports {
        ClipboardManager &manager;
        Alerts &alerts;
        NotificationCenter &center;
        Time &time;
        /// So much of a key's time may go into a search before the letter has to stand in the field. Negative: none
        /// at all, not even for an answer that is there.
        std::chrono::milliseconds searchPatience{4};
    };
    explicit ClipboardSearchModel(Ports ports, QObject *parent = nullptr);

    void setOnDismiss(std::function<void()> onDismiss) { m_onDismiss = std::move(onDismiss); }
    void setOnPaste(std::function<void(const ClipboardItem &)> onPaste) { m_onPaste = std::move(onPaste); }

    [[nodiscard]] const QString &query() const { return m_query; }
    void setQuery(const QString &query);
    [[nodiscard]] bool hasQuery() const; ///< more than white space
    [[nodiscard]] ClipboardSearchCategory selectedCategory() const { return m_selectedCategory; }
    void setSelectedCategory(ClipboardSearchCategory category);

    [[nodiscard]] const std::vector<Section> &sections() const { return m_sections; }
    [[nodiscard]] bool isSearching() const { return m_search != nullptr; } ///< what is visible is of an older query
    [[nodiscard]] EmptyState emptyState() const override;
    [[nodiscard]] ClipboardSearchRow row(const ClipboardItem &item) const;
    [[nodiscard]] bool showsAddButton() const { return m_selectedCategory == ClipboardSearchCategory::mySave; }

    void moveCategory(int delta);

    // By keyboard, on the selected item.
    void pasteSelected();
    void togglePinOfSelected();
    void deleteSelected();
    // By mouse. The row's buttons select it first.
    void use(const QUuid &id) override; ///< pastes
    void togglePin(const QUuid &id) override;
    void toggleSaved(const QUuid &id) override;
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
    void searchFieldFocusWanted();

private:
    void open();
    void historyChanged();
    /// Fetches `diskItems`, now or later; then the selection is reset, or stays where it can.
    enum class Selection { reset, keep };
    void reload(Selection selection);
    void searchArrived();
    void takeIn(std::vector<ClipboardItem> items);
    void endSearch();
    void rebuildVisibleItems();
    [[nodiscard]] bool belongs(const ClipboardItem &item) const;
    [[nodiscard]] bool isLinkCached(const ClipboardItem &item) const;
    void perform(ClipboardSearchKeyAction action);

    Ports m_ports;
    std::function<void()> m_onDismiss;
    std::function<void(const ClipboardItem &)> m_onPaste;
    QString m_query;
    ClipboardSearchCategory m_selectedCategory = ClipboardSearchCategory::all;
    std::vector<ClipboardItem> m_diskItems;
    std::shared_ptr<HistoryRead> m_search; ///< while its answer is awaited
    int m_searchNumber = 0;
    Selection m_selectionAfterwards = Selection::keep;
    std::vector<ClipboardSearchKeyAction> m_waitingActions; ///< keys that came meanwhile
    std::vector<Section> m_sections;
    mutable QHash<QUuid, bool> m_links; ///< of `m_diskItems`, as far as anyone asked
    NotificationCenter::Token m_openedToken;
};

} // namespace tavrine
