#include "shell/tools/KeepAwakeTool.h"

#include "shell/Shell.h"
#include "utilities/awake/KeepAwakeControlView.h"

namespace tavrine {

KeepAwakeTool::KeepAwakeTool(Shell &shell) : m_shell(shell) {}
KeepAwakeTool::~KeepAwakeTool() = default;

KeepAwakeManager &KeepAwakeTool::manager() {
    return m_manager.get([this] {
        Desktop &desktop = m_shell.desktop();
        auto manager = std::make_unique<KeepAwakeManager>(
            KeepAwakeManager::Ports{desktop.time(), m_shell.defaults(), desktop.calendar(), desktop.powerAssertions(),
                                    desktop.powerSource(), desktop.userNotifications()});
        connect(manager.get(), &KeepAwakeManager::awakeStateChanged, this, &KeepAwakeTool::stateChanged);
        connect(manager.get(), &KeepAwakeManager::showAdvancedPanelChanged, this,
                &KeepAwakeTool::showAdvancedPanelChanged);
        if (!m_shell.flags().isOn(Feature::keepAwake))
            manager->setFeatureOn(false);
        return manager;
    });
}

void KeepAwakeTool::launch(bool isOn) {
    if (isOn)
        static_cast<void>(manager());
}

void KeepAwakeTool::setOn(bool isOn) {
    if (KeepAwakeManager *made = m_manager.ifMade())
        made->setFeatureOn(isOn);
    else if (isOn)
        static_cast<void>(manager());
}

KeepAwakeState KeepAwakeTool::state() const {
    const KeepAwakeManager *made = m_manager.ifMade();
    if (!made)
        return {};
    return {.isAwake = made->isAwake(), .modeName = QLatin1String(rowOf(made->selectedMode()).statusName)};
}

void KeepAwakeTool::menuWillOpen() {
    if (KeepAwakeManager *made = m_manager.ifMade())
        made->setShowAdvancedPanel(false);
}

KeepAwakeControlView *KeepAwakeTool::makeControlView(std::function<void()> beforeAlert) {
    return new KeepAwakeControlView(std::make_unique<KeepAwakeControlModel>(
        KeepAwakeControlModel::Parts{manager(), m_shell.desktop().alerts(), m_shell.time(), std::move(beforeAlert)}));
}

} // namespace tavrine
