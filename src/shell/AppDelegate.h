#pragma once

#include "base/Date.h"
#include "base/NotificationCenter.h"
#include "clipboard/ClipboardItem.h"
#include "ports/Workspace.h"

#include <QImage>
#include <QObject>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tavrine {

class Application;
class ClipboardExperienceSettings;
class ClipboardManager;
class FeatureFlags;
class FlagReactions;
class StatusItem;
class StatusMenu;
class Time;
class ToolHooks;
class Updater;
class UserDefaults;

/// The spine of the program: it brings the tools up in one fixed order, owns the large windows and the tray item, and
/// carries the switches of the tools to them.
///
/// One instance lives as long as the process, on the main thread. There is nothing to do when the program ends: every
/// preference and every row was written when it changed.
class AppDelegate : public QObject {
    Q_OBJECT

public:
    struct Ports {
        Time &time;
        UserDefaults &defaults;
        NotificationCenter &center;
        Workspace &workspace;
        StatusItem &statusItem;
        Application &application;
        Updater &updater;
        ClipboardManager &clipboardManager;
        FeatureFlags &flags;
        ClipboardExperienceSettings &experienceSettings;
        ToolHooks &hooks;
    };

    static constexpr auto bundleIdentifier = "com.veltrane.Tavrine";

    explicit AppDelegate(Ports ports, QObject *parent = nullptr);
    ~AppDelegate() override;

    /// The launch. Called once, when the main queue runs or is about to.
    void applicationDidFinishLaunching();

    // Entries of menus, hot keys and notices.
    void openTavrineEditorFromMenu() { openEditor({}); }
    void handleOpenTavrineEditorRequested() { openEditor({}); }
    void handleRestartSnip();
    void appDidDeactivate(const Notification &notification);
    bool applicationShouldHandleReopen(bool hasVisibleWindows); ///< always true
    void windowWillClose(QWidget *window);
    void handleOpenClipboardSettingsRequested();
    void handleOpenLofiSettingsRequested();
    void menuWillOpen();
    void checkForUpdates();
    void startSnip();
    void pickColor();
    void quitApp();
    void openSettings();
    void onHotKeyPressed();
    void onEmojiPickerHotKeyPressed();

    void openMainWindow(const QString &sidebarItem);
    void openEditor(const std::optional<QImage> &image); ///< nothing while its switch is off
    void showOnboarding();
    /// Leaves the task bar again when none of the large windows is visible.
    void restoreAccessoryPolicy();
    void refreshClipboardMenuItem();
    void refreshEmojiMenuItem();

    // The large windows. A window that is set is deleted when it closes, and its field is cleared.
    [[nodiscard]] QWidget *editorWindow() const { return m_editorWindow; }
    [[nodiscard]] QWidget *mainWindow() const { return m_mainWindow; }
    [[nodiscard]] QWidget *onboardingWindow() const { return m_onboardingWindow; }
    void setEditorWindow(QWidget *window) { keep(m_editorWindow, window); }
    void setMainWindow(QWidget *window) { keep(m_mainWindow, window); }
    void setOnboardingWindow(QWidget *window) { keep(m_onboardingWindow, window); }

    /// The program that the person left last for this one: where a paste goes.
    [[nodiscard]] const std::optional<RunningApplication> &previouslyActiveApplication() const {
        return m_previouslyActiveApplication;
    }

    [[nodiscard]] Time &time() { return m_ports.time; }
    [[nodiscard]] UserDefaults &defaults() { return m_ports.defaults; }
    [[nodiscard]] FeatureFlags &flags() { return m_ports.flags; }
    [[nodiscard]] ClipboardExperienceSettings &experienceSettings() { return m_ports.experienceSettings; }
    [[nodiscard]] ClipboardManager &clipboardManager() { return m_ports.clipboardManager; }
    [[nodiscard]] StatusItem &statusItem() { return m_ports.statusItem; }
    [[nodiscard]] StatusMenu &statusMenu() { return *m_statusMenu; } ///< from the third step of the launch on
    [[nodiscard]] ToolHooks &hooks() { return m_ports.hooks; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void setupStatusItem();
    void subscribeToHistory();
    void showFreshCapture(const std::optional<ClipboardItem> &newest);
    void decideOnboarding();
    void restartSnip();
    void tearDownEditor();
    void dismissFloatingPanels();
    void keep(QPointer<QWidget> &field, QWidget *window);
    void observe(NotificationCenter &center, const char *name, NotificationCenter::Handler handler);
    void after(Seconds delay, std::function<void()> work);

    Ports m_ports;
    QPointer<QWidget> m_editorWindow;
    QPointer<QWidget> m_mainWindow;
    QPointer<QWidget> m_onboardingWindow;
    std::optional<RunningApplication> m_previouslyActiveApplication;
    std::unique_ptr<StatusMenu> m_statusMenu;
    std::unique_ptr<FlagReactions> m_flagReactions;
    std::vector<NotificationCenter::Token> m_observers;
};

} // namespace tavrine
