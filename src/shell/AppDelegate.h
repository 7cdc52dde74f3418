#pragma once

#include "base/NotificationCenter.h"
#include "shell/HotKeyCenter.h"
#include "shell/OnboardingFlow.h"
#include "shell/Shell.h"
#include "shell/StartActions.h"
#include "shell/StatusDisplay.h"
#include "shell/menu/TrayMenu.h"
#include "shell/settings/SettingsWindow.h"
#include "shell/tools/Tools.h"
#include "shell/updates/SoftwareUpdater.h"

#include <QObject>

#include <functional>
#include <memory>
#include <vector>

namespace tavrine {

class FlagReactions;
class StatusMenu;

/// The spine of the program: it owns the shell and the tools, brings them up in one fixed order, and is where menus,
/// hot keys and notices arrive.
///
/// One instance lives as long as the process, on the main thread. There is nothing to do when the program ends: every
/// preference and every row was written when it changed.
class AppDelegate : public QObject {
    Q_OBJECT

public:
    /// What the launch does not need is not made yet.
    explicit AppDelegate(const Shell::Parts &parts, QObject *parent = nullptr);
    ~AppDelegate() override;

    /// The launch. Called once, when the main queue runs or is about to.
    void applicationDidFinishLaunching();

    // Entries of menus, hot keys and notices.
    void openTavrineEditorFromMenu() { openEditor({}); }
    void handleOpenTavrineEditorRequested() { openEditor({}); }
    void handleRestartSnip();
    bool applicationShouldHandleReopen(bool hasVisibleWindows); ///< always true
    /// The program was started, for something that a start can ask for; for all else it comes forward. On a desktop
    /// that has yet to say what it grants, once it has.
    void startedAgain(const QString &action);
    void handleOpenClipboardSettingsRequested();
    void handleOpenLofiSettingsRequested();
    void menuWillOpen();
    void bringSettingsForward();
    void checkForUpdates();
    void startSnip();
    void pickColor();
    void quitApp();
    void openSettings();
    void onHotKeyPressed();
    void onEmojiPickerHotKeyPressed();

    /// The only way into the settings window: makes it where there is none, and brings it forward. A new one shows the
    /// first page, and one that is there stays on its page, whatever `item` is; but the pages of the clipboard and of
    /// the music are gone to.
    void openMainWindow(SidebarItem item);
    void openEditor(const std::optional<QImage> &image); ///< nothing while its switch is off
    void showOnboarding();
    void updateStatusItem() { m_display.updateStatusItem(); }

    [[nodiscard]] Shell &shell() { return m_shell; }
    [[nodiscard]] Tools &tools() { return m_tools; }
    [[nodiscard]] StatusDisplay &display() { return m_display; }
    [[nodiscard]] StatusMenu &statusMenu() { return *m_statusMenu; } ///< from the third step of the launch on
    [[nodiscard]] TrayMenu &trayMenu();                              ///< made when it is first asked for

private:
    [[nodiscard]] PanelController::Contents panelContents();
    [[nodiscard]] HotKeyCenter::Actions hotKeyActions();
    void launch(Feature feature);
    void open(Trigger trigger);
    [[nodiscard]] bool isFeatureOn(Trigger trigger);
    void setupStatusItem();
    void startUpdater();
    void showAbout();
    void secondaryPress(QPoint place, Seconds ago);
    void startSpeedObservers();
    void updateStatusItemSoon();
    void subscribeToHistory();
    void showFreshCapture(const std::optional<ClipboardItem> &newest);
    void decideOnboarding();
    void restartSnip();
    void dismissFloatingPanels();
    void observe(NotificationCenter &center, const char *name, NotificationCenter::Handler handler);
    void after(Seconds delay, std::function<void()> work);

    Shell m_shell;
    Tools m_tools;
    StatusDisplay m_display;
    HotKeyCenter m_hotKeys;
    StartActions m_startActions;
    SettingsWindow m_settingsWindow;
    OnboardingFlow m_onboarding;
    std::unique_ptr<SoftwareUpdater> m_updaterController; ///< from the second step of the launch on
    std::unique_ptr<StatusMenu> m_statusMenu;
    MadeOnce<TrayMenu> m_trayMenu;
    std::unique_ptr<FlagReactions> m_flagReactions;
    std::vector<NotificationCenter::Token> m_observers;
    bool m_isUpdateDue = false;
};

} // namespace tavrine
