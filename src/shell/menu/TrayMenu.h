#pragma once

#include "base/MadeOnce.h"
#include "ports/StatusItem.h"
#include "shell/menu/QuickActionsModel.h"
#include "shell/menu/StatusMenuPanel.h"

#include <QPoint>

namespace tavrine {

class KeepAwakeManager;
class LofiPlayerModel;
class Shell;
class StatusMenu;
class Tools;

/// The menu of the tray item as a whole: the Quick Actions over the tools, the plain entries, and the window.
/// AppDelegate owns it and makes it at the first press, or when a tray first asks for its lines; main thread.
class TrayMenu final : public QObject {
    Q_OBJECT

public:
    struct Actions {
        std::function<void()> willOpen;
        std::function<void()> openEditor;
        std::function<void()> openSettings;
        std::function<void()> bringSettingsForward;
    };
    /// All outlive it.
    TrayMenu(Shell &shell, Tools &tools, StatusMenu &entries, Actions actions, QObject *parent = nullptr);
    ~TrayMenu() override;

    void press(QPoint place, Seconds ago) { panel().press(place, ago); }
    void cancelTracking();
    [[nodiscard]] StatusMenuPanel &panel(); ///< made when it is first asked for

    // For a tray that draws menus itself.
    /// The quick actions, a card as a line or two, and under them the plain entries.
    [[nodiscard]] std::vector<StatusMenuLine> lines();
    /// What a press on the line does, in a later turn.
    void choose(int id);

    [[nodiscard]] QuickActionsModel &quickActions() { return m_model; }

private:
    [[nodiscard]] QuickActionsModel::Actions modelActions();
    [[nodiscard]] StatusMenuPanel::Ports panelPorts();
    [[nodiscard]] StatusMenuView *makeView(QuickActionsHeight &height);
    [[nodiscard]] QWidget *makeCard(QuickAction action);
    [[nodiscard]] bool isBuilt(QuickAction action);
    [[nodiscard]] std::vector<StatusMenuLine> linesOf(QuickAction action);
    [[nodiscard]] std::vector<StatusMenuLine> musicLines();
    [[nodiscard]] std::vector<StatusMenuLine> awakeLines();
    [[nodiscard]] LofiPlayerModel &music();
    [[nodiscard]] KeepAwakeManager &awake();
    void run(QuickAction action);
    void tellOfCards();
    void tellSoon();
    void animateHeight();
    void toggleCleaning();

    Shell &m_shell;
    Tools &m_tools;
    StatusMenu &m_entries;
    Actions m_actions;
    QuickActionsModel m_model;
    bool m_isTelling = false;
    MadeOnce<StatusMenuPanel> m_panel;
    // Of the cards' lines, for trays that draw menus themselves.
    MadeOnce<LofiPlayerModel> m_music;
    QMetaObject::Connection m_awakeChanges;
    std::vector<StatusMenuLine> m_toldMusic;
    std::vector<StatusMenuLine> m_toldAwake;
};

} // namespace tavrine
