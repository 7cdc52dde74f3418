#pragma once

#include "base/NotificationCenter.h"
#include "clipboard/ClipboardListModel.h"

#include <QList>
#include <QSet>

#include <chrono>
#include <functional>
#include <memory>

namespace tavrine {

class HistoryRead;

enum class ClassicPanelKeyAction { useItem, moveUp, moveDown };

/// What a row of the classic panel reads.
struct ClassicPanelRow {
    QString title;          ///< the whole text: the view cuts it
    QString fallbackSymbol; ///< of a file without a thumbnail; empty on a text item
    bool showsPlayBadge = false;
    struct Label {
        QString text;
        QString symbol;
        bool operator==(const Label &) const = default;
    };
    QList<Label> labels; ///< "Pinned", "My Saved", both or none
    QString savedToolTip;
    QString pinToolTip;
    bool operator==(const ClassicPanelRow &) const = default;
};

/// What the classic clipboard panel shows, selects and does: a plain list of the history. It is filtered in
/// memory; only what a long text holds behind its beginning is looked up in the database, and where that takes longer
/// than `patience` its row joins the list when it is known.
///
/// Belongs to the panel's view; lives on the main thread.
///
///  1. Typing moves no selection: one that was filtered out is replaced at the next arrow key.
///  2. Keys count only between `open` and `close`.
class ClassicPanelModel : public ClipboardListModel {
    Q_OBJECT

public:
    static constexpr auto openedNotification = "floatingPanelOpened";
    static constexpr auto settingsNotification = "openClipboardSettingsRequested";
    static constexpr auto windowTitle = "Classic Clipboard";
    static constexpr std::chrono::milliseconds patience{4}; ///< for a key, whose letter has to stand in the field

    /// `orderOutAllWindows` takes every window of the program off the screen.
    ClassicPanelModel(ClipboardManager &manager, NotificationCenter &center, std::function<void()> orderOutAllWindows,
                      QObject *parent = nullptr);

    /// The normal way to use an item. Without it the item is copied, and every window goes.
    void setOnPaste(std::function<void(const ClipboardItem &)> onPaste) { m_onPaste = std::move(onPaste); }

    [[nodiscard]] const QString &searchText() const { return m_searchText; }
    void setSearchText(const QString &text);
    [[nodiscard]] bool isPanelOpen() const { return m_isPanelOpen; }
    [[nodiscard]] EmptyState emptyState() const override;
    [[nodiscard]] static ClassicPanelRow row(const ClipboardItem &item);

    void close();
    void useSelected();
    void use(const QUuid &id) override;
    void orderOutAllWindows() { m_orderOutAllWindows(); } ///< the header's button
    void requestSettings();                               ///< the gear

    [[nodiscard]] static std::optional<ClassicPanelKeyAction> keyAction(int keyCode);
    /// True when the event is swallowed.
    bool handleKeyDown(const QString &keyWindowTitle, int keyCode);

Q_SIGNALS:
    void searchTextChanged();
    void isPanelOpenChanged(); ///< the view's key monitor stands while it is open

private:
    void open();
    void rebuildVisibleItems();
    void showItems();
    void lookIntoLongTexts();
    bool takeLook(std::chrono::milliseconds longest);

    NotificationCenter &m_center;
    std::function<void()> m_orderOutAllWindows;
    std::function<void(const ClipboardItem &)> m_onPaste;
    QString m_searchText;
    bool m_isPanelOpen = false;
    std::shared_ptr<HistoryRead> m_look; ///< into long texts, while its answer is awaited
    int m_lookNumber = 0;
    QSet<QUuid> m_foundInWhole; ///< what it found for the present text
    NotificationCenter::Token m_openedToken;
};

} // namespace tavrine
