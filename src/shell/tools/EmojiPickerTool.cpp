#include "shell/tools/EmojiPickerTool.h"

#include "ports/Folders.h"
#include "shell/Shell.h"
#include "utilities/emoji/EmojiPickerStore.h"
#include "utilities/emoji/EmojiPickerView.h"
#include "utilities/emoji/EmojiPictures.h"

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
    const Folders &folders = m_shell.desktop().folders();
    const QString table = folders.resources + QStringLiteral("/emoji_data.json");
    EmojiPickerStore &store =
        m_store.get([&] { return std::make_unique<EmojiPickerStore>(m_shell.defaults(), table); });
    EmojiPictures &pictures = m_pictures.get([&] {
        return std::make_unique<EmojiPictures>(
            EmojiPictures::Ports{m_shell.desktop().taskLauncher(), m_shell.time(), folders.caches, table});
    });
    auto *view = new EmojiPickerView(
        {store, m_shell.center(), m_shell.time()}, [this] { m_shell.panels().dismissEmojiPanel(); },
        [this](const EmojiItem &item) { m_shell.panels().insertEmoji(item.emoji); });
    view->setDrawnBefore([&pictures](int side) { return pictures.ofSide(side); });
    return view;
}

} // namespace tavrine
