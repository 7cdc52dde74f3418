#include "shell/tools/CleaningModeTool.h"

#include "shell/Shell.h"

namespace tavrine {

void CleaningModeTool::setOn(bool isOn) {
    KeyboardCleanerManager *const manager = m_manager.ifMade();
    if (!isOn && manager && (manager->isCleaning() || manager->isStarting()))
        manager->stopCleaning();
}

KeyboardCleanerManager &CleaningModeTool::manager() {
    return m_manager.get([this] {
        Desktop &desktop = m_shell.desktop();
        return std::make_unique<KeyboardCleanerManager>(
            KeyboardCleanerManager::Ports{desktop.eventTaps(), desktop.alerts(), desktop.urlOpener(), desktop.time()});
    });
}

} // namespace tavrine
