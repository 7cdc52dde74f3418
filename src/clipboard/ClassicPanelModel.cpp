#include "clipboard/ClassicPanelModel.h"

#include "base/CaseInsensitiveText.h"
#include "base/DesktopWords.h"
#include "base/KeyTable.h"
#include "base/VirtualKeys.h"
#include "clipboard/ClipboardManager.h"
#include "clipboard/HistoryRead.h"

#include <algorithm>

namespace tavrine {
namespace {

constexpr auto keys = std::to_array<KeyRow<ClassicPanelKeyAction>>({
    {virtualKey::enter, Command::either, ClassicPanelKeyAction::useItem},
    {virtualKey::keypadEnter, Command::either, ClassicPanelKeyAction::useItem},
    {virtualKey::down, Command::either, ClassicPanelKeyAction::moveDown},
    {virtualKey::up, Command::either, ClassicPanelKeyAction::moveUp},
});

} // namespace

ClassicPanelModel::ClassicPanelModel(ClipboardManager &manager, NotificationCenter &center,
                                     std::function<void()> orderOutAllWindows, QObject *parent)
    : ClipboardListModel(manager, parent), m_center(center), m_orderOutAllWindows(std::move(orderOutAllWindows)) {
    connect(&manager, &ClipboardManager::historyChanged, this, &ClassicPanelModel::rebuildVisibleItems);
    m_openedToken = center.addObserver(QLatin1String(openedNotification), [this](const Notification &) { open(); });
    rebuildVisibleItems();
}

void ClassicPanelModel::open() {
    setSearchText(QString());
    m_isPanelOpen = true;
    Q_EMIT isPanelOpenChanged();
    selectFirst();
}

void ClassicPanelModel::close() {
    m_isPanelOpen = false;
    Q_EMIT isPanelOpenChanged();
}

void ClassicPanelModel::setSearchText(const QString &text) {
    if (text == m_searchText)
        return;
    m_searchText = text;
    m_foundInWhole.clear();
    Q_EMIT searchTextChanged();
    rebuildVisibleItems();
}

void ClassicPanelModel::rebuildVisibleItems() {
    lookIntoLongTexts();
    showItems();
}

void ClassicPanelModel::lookIntoLongTexts() {
    if (m_look)
        m_look->drop();
    m_look.reset();
    const CaseInsensitiveText wanted(m_searchText);
    std::vector<ClipboardItem> unknown;
    std::ranges::copy_if(manager().history(), std::back_inserter(unknown),
                         [&](const ClipboardItem &item) { return item.cut && !wanted.isIn(item.content); });
    if (unknown.empty())
        return;
    m_look = manager().beginFilter(std::move(unknown), m_searchText, this, [this, number = ++m_lookNumber] {
        if (number == m_lookNumber && takeLook(std::chrono::milliseconds(0)))
            showItems();
    });
    takeLook(patience);
}

bool ClassicPanelModel::takeLook(std::chrono::milliseconds longest) {
    const auto found = m_look ? m_look->take(longest) : std::nullopt;
    if (!found)
        return false;
    m_look.reset();
    m_foundInWhole.clear();
    for (const ClipboardItem &item : *found)
        m_foundInWhole.insert(item.id);
    return true;
}

void ClassicPanelModel::showItems() {
    const CaseInsensitiveText wanted(m_searchText);
    std::vector<ClipboardItem> found;
    std::ranges::copy_if(manager().history(), std::back_inserter(found), [&](const ClipboardItem &item) {
        return wanted.isIn(item.content) || (item.cut && m_foundInWhole.contains(item.id));
    });
    setVisibleItems(std::move(found));
}

ClassicPanelModel::EmptyState ClassicPanelModel::emptyState() const {
    if (m_searchText.isEmpty())
        return {QStringLiteral("History is empty"), QStringLiteral("clipboard")};
    return {QStringLiteral("No results found"), QStringLiteral("magnifyingglass")};
}

ClassicPanelRow ClassicPanelModel::row(const ClipboardItem &item) {
    ClassicPanelRow row;
    row.title = item.content;
    if (item.imageFileName) {
        row.showsPlayBadge = isRecordingFileName(*item.imageFileName);
        row.title = inDesktopWords(row.showsPlayBadge ? QStringLiteral("Screen Recording") : QStringLiteral("Image"));
        row.fallbackSymbol = row.showsPlayBadge ? QStringLiteral("video") : QStringLiteral("photo");
    }
    if (item.isPinned)
        row.labels.append({inDesktopWords(QStringLiteral("Pinned")), QStringLiteral("pin.fill")});
    if (item.isSaved)
        row.labels.append({inDesktopWords(QStringLiteral("My Saved")), QStringLiteral("bookmark.fill")});
    row.pinToolTip = inDesktopWords(item.isPinned ? QStringLiteral("Remove pin") : QStringLiteral("Pin snippet"));
    row.savedToolTip =
        inDesktopWords(item.isSaved ? QStringLiteral("Remove from My Saved") : QStringLiteral("Add to My Saved"));
    return row;
}

void ClassicPanelModel::useSelected() {
    if (selectedID())
        use(QUuid(*selectedID()));
}

void ClassicPanelModel::use(const QUuid &id) {
    const ClipboardItem *shown = visibleItem(id);
    if (!shown)
        return;
    const ClipboardItem item = *shown; // the list may change while it is used
    if (m_onPaste)
        return m_onPaste(item);
    manager().copyToPasteboard(item);
    m_orderOutAllWindows();
}

void ClassicPanelModel::requestSettings() {
    m_center.post(QLatin1String(settingsNotification));
}

std::optional<ClassicPanelKeyAction> ClassicPanelModel::keyAction(int keyCode) {
    return actionOf(keys, keyCode, false);
}

bool ClassicPanelModel::handleKeyDown(const QString &keyWindowTitle, int keyCode) {
    if (!m_isPanelOpen || keyWindowTitle != inDesktopWords(QLatin1String(windowTitle))) // as the window shows it
        return false;
    const auto action = keyAction(keyCode);
    if (!action)
        return false;
    switch (*action) {
    case ClassicPanelKeyAction::useItem:
        useSelected();
        break;
    case ClassicPanelKeyAction::moveDown:
        moveSelection(+1);
        break;
    case ClassicPanelKeyAction::moveUp:
        moveSelection(-1);
        break;
    }
    return true;
}

} // namespace tavrine
