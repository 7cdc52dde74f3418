#include "shell/StartActions.h"

#include "capture/ColorPickerManager.h"
#include "ports/Instance.h"
#include "shell/HotKeyCenter.h"
#include "shell/tools/Tools.h"

namespace tavrine {

bool StartActions::run(const QString &action) {
    if (action == startAction::clipboard)
        return press(Trigger::clipboard);
    if (action == startAction::emoji)
        return press(Trigger::emojiPicker);
    if (action == startAction::capture)
        return press(Trigger::capture);
    if (action == startAction::record)
        return press(Trigger::screenRecorder);
    if (action == startAction::shelf)
        return openShelf();
    if (action == startAction::qrScan)
        m_tools.snipping().startQrScan();
    else if (action == startAction::card)
        m_tools.snipping().giveCardKeyboard();
    else if (action == startAction::color)
        m_tools.colorPicker().pickColor();
    else if (action == startAction::settings)
        m_actions.openSettings();
    else if (action == startAction::altTap)
        m_hotKeys.optionTapped();
    else
        return false;
    return true;
}

bool StartActions::press(Trigger trigger) {
    if (!m_actions.isOn(featureOf(trigger)))
        return false;
    // Nobody keeps what is typed meanwhile for our window: the key was not ours.
    static_cast<void>(m_hotKeys.handleHotKey(traits(trigger).hotKeyId));
    return true;
}

bool StartActions::openShelf() {
    if (!m_actions.isOn(Feature::notchShelf))
        return false;
    m_tools.notchShelf().openWithKeyboard();
    return true;
}

} // namespace tavrine
