#include "shell/tools/LofiTool.h"

#include "ports/Folders.h"
#include "shell/Shell.h"
#include "utilities/lofi/LofiManager.h"
#include "utilities/lofi/LofiMiniPlayer.h"
#include "utilities/lofi/LofiPlayerModel.h"
#include "utilities/lofi/LofiSettingsView.h"
#include "utilities/lofi/LofiTracks.h"

#include <QRandomGenerator>

namespace tavrine {

LofiTool::LofiTool(Shell &shell) : m_shell(shell) {}
LofiTool::~LofiTool() = default;

void LofiTool::setOn(bool isOn) {
    LofiManager *const manager = m_manager.ifMade();
    if (!isOn && manager)
        manager->stop();
}

LofiManager &LofiTool::manager() {
    return m_manager.get([this] {
        Desktop &desktop = m_shell.desktop();
        return std::make_unique<LofiManager>(
            LofiManager::Ports{.time = desktop.time(),
                               .defaults = m_shell.defaults(),
                               .players = desktop.audioPlayers(),
                               .devices = desktop.audioDevices(),
                               .downloads = desktop.downloads(),
                               .filePanels = desktop.filePanels(),
                               .fileQueue = m_fileQueue,
                               .applicationSupport = desktop.folders().applicationSupport,
                               .trackUrls = lofiTracks::urls(desktop.folders().resources),
                               .anyOf = [](int count) { return QRandomGenerator::global()->bounded(count); },
                               .mayPlay = [this] { return m_shell.flags().isOn(Feature::loFi); }});
    });
}

std::unique_ptr<LofiPlayerModel> LofiTool::makeModel(std::function<void()> beforeLeaving) {
    return std::make_unique<LofiPlayerModel>(
        LofiPlayerModel::Ports{manager(), m_shell.center(), m_shell.desktop().urlOpener(), std::move(beforeLeaving)});
}

QWidget *LofiTool::makeMiniPlayer(std::function<void()> beforeLeaving) {
    return new LofiMiniPlayer(makeModel(std::move(beforeLeaving)));
}

QWidget *LofiTool::makeSettingsView() {
    return new LofiSettingsView(makeModel());
}

} // namespace tavrine
