// The keys of the clipboard search panel.

#include "base/VirtualKeys.h"
#include "clipboard/ClipboardSearchModel.h"

namespace tavrine {

// Only Command counts: Shift and Option with these keys act the same.
std::optional<ClipboardSearchKeyAction> ClipboardSearchModel::keyAction(int keyCode, bool isCommandHeld) {
    if (isCommandHeld) {
        switch (keyCode) {
        case virtualKey::backspace:
            return ClipboardSearchKeyAction::deleteItem;
        case virtualKey::p:
            return ClipboardSearchKeyAction::togglePin;
        default:
            return std::nullopt;
        }
    }
    switch (keyCode) {
    case virtualKey::enter:
    case virtualKey::keypadEnter:
        return ClipboardSearchKeyAction::paste;
    case virtualKey::escape:
        return ClipboardSearchKeyAction::dismiss;
    case virtualKey::left:
        return ClipboardSearchKeyAction::previousCategory;
    case virtualKey::right:
        return ClipboardSearchKeyAction::nextCategory;
    case virtualKey::down:
        return ClipboardSearchKeyAction::moveDown;
    case virtualKey::up:
        return ClipboardSearchKeyAction::moveUp;
    default:
        return std::nullopt;
    }
}

bool ClipboardSearchModel::handleKeyDown(const QString &keyWindowTitle, int keyCode, bool isCommandHeld) {
    const auto action = keyWindowTitle == QLatin1String(windowTitle) ? keyAction(keyCode, isCommandHeld) : std::nullopt;
    if (action)
        perform(*action);
    return action.has_value();
}

void ClipboardSearchModel::perform(ClipboardSearchKeyAction action) {
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
