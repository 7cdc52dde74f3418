#include "shell/tools/ClipboardTool.h"

#include "clipboard/ClipboardSearchView.h"
#include "clipboard/ContentView.h"
#include "shell/Shell.h"

namespace tavrine {

void ClipboardTool::launch(bool isOn) {
    if (!isOn)
        m_shell.clipboardManager().pauseMonitoring();
}

void ClipboardTool::setOn(bool isOn) {
    ClipboardManager &manager = m_shell.clipboardManager();
    if (isOn) {
        manager.setPaused(false);
        manager.reloadHistory();
        manager.startMonitoring();
    } else {
        manager.pauseMonitoring();
        if (PanelController *panels = m_shell.panelsIfMade())
            panels->unloadClipboardPanels();
    }
}

void ClipboardTool::open(Trigger /*trigger*/) {
    m_shell.panels().toggleClipboardPanel();
}

QWidget *ClipboardTool::makeClassicView() {
    return new ContentView(
        m_shell.clipboardManager(), m_shell.center(), [this] { orderOutAllWindows(); },
        [this](const ClipboardItem &item) { m_shell.panels().pasteFromClassic(item); });
}

QWidget *ClipboardTool::makeSearchView() {
    return new ClipboardSearchView(
        {m_shell.clipboardManager(), m_shell.desktop().alerts(), m_shell.center(), m_shell.time()},
        [this] { m_shell.panels().dismissSearchPanel(); },
        [this](const ClipboardItem &item) { m_shell.panels().pasteFromSearch(item); });
}

/// The classic panel's own way off the screen takes the program's windows along, but for a card, a question or a
/// recording on its way: nothing would bring these back.
void ClipboardTool::orderOutAllWindows() {
    m_shell.panels().orderOutAllPanels();
    m_shell.largeWindows().orderOutAll();
}

} // namespace tavrine
