#pragma once

#include "base/NotificationCenter.h"
#include "utilities/emoji/EmojiGrid.h"
#include "utilities/emoji/EmojiPickerStore.h"

#include <QObject>

#include <functional>

namespace tavrine {

class Time;

enum class EmojiPickerKeyAction {
    moveLeft,
    moveRight,
    moveUp,
    moveDown,
    previousCategory,
    nextCategory,
    copy,
    dismiss,
    togglePin
};

/// What the emoji picker shows, selects and does. The view paints it and hands over keys and clicks.
///
/// Belongs to the picker's view; lives on the main thread.
///
///  1. `sections` is made once for each change of the query, the category, the recents or the pins, never for a paint.
///  2. Each opening begins anew: no query, all categories, the first item selected.
class EmojiPickerModel : public QObject {
    Q_OBJECT

public:
    static constexpr auto openedNotification = "emojiPickerPanelOpened";
    static constexpr auto windowTitle = "Emoji Picker";

    struct Ports {
        EmojiPickerStore &store;
        NotificationCenter &center;
        Time &time;
    };
    explicit EmojiPickerModel(Ports ports, QObject *parent = nullptr);

    void setOnDismiss(std::function<void()> onDismiss) { m_onDismiss = std::move(onDismiss); }
    /// Puts the chosen item into the program that was in front.
    void setOnCopy(std::function<void(const EmojiItem &)> onCopy) { m_onCopy = std::move(onCopy); }

    [[nodiscard]] const EmojiPickerStore &store() const { return m_store; }
    [[nodiscard]] const QString &query() const { return m_query; }
    void setQuery(const QString &query);
    [[nodiscard]] bool hasQuery() const; ///< more than white space
    [[nodiscard]] EmojiCategory selectedCategory() const { return m_selectedCategory; }
    void setSelectedCategory(EmojiCategory category);
    [[nodiscard]] const std::optional<QString> &selectedID() const { return m_selectedID; }
    void setSelectedID(const std::optional<QString> &emoji);
    [[nodiscard]] const std::vector<EmojiSection> &sections() const { return m_sections; }
    [[nodiscard]] bool isEmpty() const; ///< no section holds an item

    void move(EmojiMove move);
    void moveCategory(int delta);
    /// Uses the selected item; nothing when the table does not hold it.
    void chooseSelected();
    void choose(const QString &emoji); ///< a click on a cell
    void togglePinOfSelected();

    /// What a key does while the picker has the keyboard; none for a key that goes to the search field.
    [[nodiscard]] static std::optional<EmojiPickerKeyAction> keyAction(int keyCode, bool isCommandHeld);
    /// True when the event is swallowed.
    bool handleKeyDown(const QString &keyWindowTitle, int keyCode, bool isCommandHeld);

Q_SIGNALS:
    void queryChanged();
    void selectedCategoryChanged();
    void sectionsChanged();
    void selectedIDChanged(); ///< the grid scrolls to it
    void searchFieldFocusWanted();

private:
    void open();
    void rebuildSections();
    void selectFirst() { setSelectedID(emojiGrid::first(m_sections)); }
    void keepSelection();
    void perform(EmojiPickerKeyAction action);
    [[nodiscard]] std::vector<const EmojiItem *> itemsOf(const QStringList &emojis) const;

    EmojiPickerStore &m_store;
    Time &m_time;
    std::function<void()> m_onDismiss;
    std::function<void(const EmojiItem &)> m_onCopy;
    QString m_query;
    EmojiCategory m_selectedCategory = EmojiCategory::all;
    std::optional<QString> m_selectedID;
    std::vector<EmojiSection> m_sections;
    NotificationCenter::Token m_openedToken;
};

} // namespace tavrine
