#include "shell/tools/EmojiPickerTool.h"

#include "ports/Folders.h"
#include "shell/Shell.h"
#include "utilities/emoji/EmojiPickerStore.h"
#include "utilities/emoji/EmojiPickerView.h"

namespace tavrine {

EmojiPickerTool::EmojiPickerTool(Shell &shell) : m_shell(shell) {}
EmojiPickerTool::~EmojiPickerTool() = default;

void EmojiPickerTool::setOn(bool isOn) {
    PanelController *const panels = m_shell.panelsIfMade();
    if (!isOn && panels)
        panels->unloadEmojiPanel();
}

void EmojiPickerTool::open(Trigger /*trigger*/) {
    m_shell.panels().toggleEmojiPanel();
}

QWidget *EmojiPickerTool::makeView() {
    EmojiPickerStore &store = m_store.get([this] {
        return std::make_unique<EmojiPickerStore>(m_shell.defaults(), m_shell.desktop().folders().resources +
                                                                          QStringLiteral("/emoji_data.json"));
    });
    return new EmojiPickerView(
        {store, m_shell.center(), m_shell.time()}, [this] { m_shell.panels().dismissEmojiPanel(); },
        [this](const EmojiItem &item) { m_shell.panels().insertEmoji(item.emoji); });
}

} // namespace tavrine
