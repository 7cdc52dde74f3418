// The keys of the clipboard search panel.

#include "base/DesktopWords.h"
#include "base/KeyTable.h"
#include "base/VirtualKeys.h"
#include "clipboard/ClipboardSearchModel.h"

namespace tavrine {

namespace {

constexpr auto keys = [] {
    using enum ClipboardSearchKeyAction;
    return std::to_array<KeyRow<ClipboardSearchKeyAction>>({
        {virtualKey::backspace, Command::isHeld, deleteItem},
        {virtualKey::p, Command::isHeld, togglePin},
        {virtualKey::enter, Command::isUp, paste},
        {virtualKey::keypadEnter, Command::isUp, paste},
        {virtualKey::escape, Command::isUp, dismiss},
        {virtualKey::left, Command::isUp, previousCategory},
        {virtualKey::right, Command::isUp, nextCategory},
        {virtualKey::down, Command::isUp, moveDown},
        {virtualKey::up, Command::isUp, moveUp},
    });
}();

} // namespace

std::optional<ClipboardSearchKeyAction> ClipboardSearchModel::keyAction(int keyCode, bool isCommandHeld) {
    return actionOf(keys, keyCode, isCommandHeld);
}

bool ClipboardSearchModel::handleKeyDown(const QString &keyWindowTitle, int keyCode, bool isCommandHeld) {
    const bool isOwn = keyWindowTitle == inDesktopWords(QLatin1String(windowTitle)); // as the window shows it
    const auto action = isOwn ? keyAction(keyCode, isCommandHeld) : std::nullopt;
    if (action)
        perform(*action);
    return action.has_value();
}

void ClipboardSearchModel::perform(ClipboardSearchKeyAction action) {
    if (m_search && action != ClipboardSearchKeyAction::dismiss) {
        m_waitingActions.push_back(action); // the list that it is meant for is still to come
        return;
    }
    switch (action) {
    case ClipboardSearchKeyAction::moveUp:
        return moveSelection(-1);
    case ClipboardSearchKeyAction::moveDown:
        return moveSelection(+1);
    case ClipboardSearchKeyAction::previousCategory:
        return moveCategory(-1);
    case ClipboardSearchKeyAction::nextCategory:
        return moveCategory(+1);
    case ClipboardSearchKeyAction::paste:
        return pasteSelected();
    case ClipboardSearchKeyAction::togglePin:
        return togglePinOfSelected();
    case ClipboardSearchKeyAction::deleteItem:
        return deleteSelected();
    case ClipboardSearchKeyAction::dismiss:
        if (m_onDismiss)
            m_onDismiss();
        return;
    }
}

} // namespace tavrine
