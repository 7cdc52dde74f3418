#include "shell/menu/TrayMenu.h"

#include "shell/Shell.h"
#include "shell/StatusMenu.h"
#include "shell/menu/QuickActionsGridView.h"
#include "shell/menu/StatusMenuView.h"
#include "shell/tools/Tools.h"

namespace tavrine {

TrayMenu::TrayMenu(Shell &shell, Tools &tools, StatusMenu &entries, Actions actions, QObject *parent)
    : QObject(parent), m_shell(shell), m_tools(tools), m_entries(entries), m_actions(std::move(actions)),
      m_model(shell.flags(), shell.defaults(), shell.center(), shell.time(), modelActions()),
      m_panel(
          panelPorts(), [this](QuickActionsHeight &height) { return makeView(height); }, m_actions.willOpen) {
    connect(&m_model, &QuickActionsModel::changed, this, [this] {
        if (m_panel.isOpen())
            m_panel.height().setSoon();
    });
}

TrayMenu::~TrayMenu() = default;

StatusMenuPanel::Ports TrayMenu::panelPorts() {
    Desktop &desktop = m_shell.desktop();
    return {m_shell.panelWindows(),         desktop.screens(),   desktop.eventMonitors(),
            desktop.applicationActivator(), m_shell.pasteBack(), m_shell.time()};
}

QuickActionsModel::Actions TrayMenu::modelActions() {
    return {.isBuilt = [this](QuickAction action) { return isBuilt(action); },
            .mayCaptureScreen = [this] { return m_shell.windowManager().mayCaptureScreen(); },
            .startSnip = [this] { m_tools.snipping().startCapture(); },
            .startScreenRecording = [] {},
            .startQrScan = [this] { m_tools.snipping().startQrScan(); },
            .openEditor = m_actions.openEditor,
            .openSettings = m_actions.openSettings,
            .bringSettingsForward = m_actions.bringSettingsForward,
            .isCleaning = [] { return false; },
            .toggleCleaning = [] {},
            .onDismissMenu = [this] { cancelTracking(); }};
}

/// A place whose tool there is not yet stays out of the menu.
bool TrayMenu::isBuilt(QuickAction action) {
    switch (action) {
    case QuickAction::loFi:
        return m_tools[Feature::loFi] != nullptr;
    case QuickAction::keepAwake:
        return m_tools[Feature::keepAwake] != nullptr;
    case QuickAction::screenRecord:
        return m_tools[Feature::screenRecorder] != nullptr;
    case QuickAction::cleanMode:
        return m_tools[Feature::cleaningMode] != nullptr;
    case QuickAction::screenshot:
    case QuickAction::qrScan:
    case QuickAction::settings:
    case QuickAction::editor:
        break;
    }
    return true;
}

QWidget *TrayMenu::makeCard(QuickAction /*action*/) {
    return nullptr;
}

StatusMenuView *TrayMenu::makeView(QuickActionsHeight &height) {
    auto *grid = new QuickActionsGrid(m_model, [this](QuickAction action) { return makeCard(action); });
    return new StatusMenuView(m_entries, grid, height);
}

} // namespace tavrine
