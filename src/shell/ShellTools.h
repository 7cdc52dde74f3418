#pragma once

#include "capture/SnipFlow.h"
#include "capture/editor/EditorFlow.h"
#include "panels/ToastManager.h"
#include "shell/HotKeyCenter.h"
#include "shell/OnboardingFlow.h"
#include "shell/PanelController.h"
#include "shell/ToolHooks.h"
#include "shell/WindowManager.h"

#include <QObject>

#include <functional>
#include <optional>

namespace tavrine {

class AppDelegate;
class CaptureServices;

/// The tools of the shell as AppDelegate reaches them: global triggers, floating panels, paste-back, toasts,
/// permissions, the welcome window, captures of the screen and the editor. Every other tool does nothing yet.
///
/// Lives on the main thread, as long as the process. Nothing that a panel needs is made before its first use: until
/// then there are hot keys and no more.
class ShellTools final : public QObject, public ToolHooks {
public:
    /// What only panels and toasts need of the desktop.
    struct Desktop {
        PanelController::Ports panels;
        ToastWindows &toastWindows;
    };
    struct Ports {
        Time &time;
        UserDefaults &defaults;
        Application &application;
        HotKeys &hotKeys;
        EventMonitors &monitors;
        Access &access;
        Alerts &alerts;
        UrlOpener &urlOpener;
        std::function<Desktop()> desktop;           ///< called once, at the first use
        ScreenSnipper *snipper = nullptr;           ///< null: there are no captures
        CaptureServices *captureServices = nullptr; ///< null: a capture can be looked at, and no more
        /// Called once, when the first capture is presented, started or asked for. The actions that other tools answer
        /// are still empty and may be filled.
        std::function<std::unique_ptr<SnipFlow>(const Desktop &, SnipFlow::Actions)> snipFlow = {};
    };
    /// What stands in the windows, each made when its window is. The closures that are handed over outlive the views.
    struct Views {
        using Dismiss = std::function<void()>;
        using Paste = std::function<void(const ClipboardItem &)>;
        using Insert = std::function<void(const QString &)>;
        /// `Dismiss` takes every window of the program off the screen.
        std::function<QWidget *(Dismiss, Paste)> classic;
        std::function<QWidget *(Dismiss, Paste)> search;
        std::function<QWidget *(Dismiss, Insert)> emoji;
        /// A window of its own that is not on the screen yet; `onClose` comes when the person has finished.
        std::function<QWidget *(std::function<void()> onClose)> welcome;
        /// The same for the editor.
        std::function<QWidget *(const EditorFlow::Window &, Dismiss close)> editor;
    };

    ShellTools(Ports ports, Views views);
    ~ShellTools() override;

    /// Before the launch. The delegate and its parts outlive every call that is made here afterwards.
    void setDelegate(AppDelegate *delegate) { m_delegate = delegate; }

    void showToast(const QString &message, const QString &icon);
    void openEditorDirectly(const QImage &image) { m_editor.openEditorDirectly(image); }
    void openEditorForItem(const ClipboardItem &item);
    [[nodiscard]] WindowManager &windowManager() { return m_windowManager; }

    // ToolHooks.
    void registerHotkeys() override;
    void toggleClipboardPanel() override { m_hotKeyCenter.onHotKeyPressed(); }
    void toggleEmojiPanel() override { m_hotKeyCenter.onEmojiPickerHotKeyPressed(); }
    void removePanelMonitors() override;
    void orderOutClipboardPanels() override;
    void orderOutFloatingPanels() override;
    void unloadClipboardPanels() override;
    void unloadEmojiPanel() override;
    void showPreviewCard(const ClipboardItem &item) override;
    void setOnSnipComplete(const std::function<void(const QImage &)> &onSnipComplete) override;
    void presentSnip(const QImage &image) override;
    void startSnip() override; ///< nothing while its switch is off
    void startCapture() override;
    void pickColor() override;
    void openEditor(const std::optional<QImage> &image) override { m_editor.openTavrineEditor(image); }
    void showOnboarding() override { m_onboarding.showOnboarding(); }
    [[nodiscard]] bool accessibilityTrusted(bool promptAllowed) override;

private:
    Desktop &desktop();
    PanelController &panels();
    SnipFlow *snip(); ///< null: there are no captures
    void getTextFromSnip(const QImage &image);
    [[nodiscard]] bool isFeatureOn(Trigger trigger) const;
    [[nodiscard]] HotKeyCenter::Actions hotKeyActions();
    [[nodiscard]] PanelController::Contents panelContents();
    [[nodiscard]] PanelController::Actions panelActions();
    [[nodiscard]] OnboardingFlow::Windows onboardingWindows();
    [[nodiscard]] EditorFlow::Windows editorWindows();
    void orderOutAllWindows();

    Ports m_ports;
    Views m_views;
    AppDelegate *m_delegate = nullptr;
    std::optional<Desktop> m_desktop;
    WindowManager m_windowManager;
    HotKeyCenter m_hotKeyCenter;
    OnboardingFlow m_onboarding;
    EditorFlow m_editor;
    std::unique_ptr<ToastManager> m_toasts;
    std::unique_ptr<PanelController> m_panels;
    std::unique_ptr<SnipFlow> m_snip;
};

} // namespace tavrine
