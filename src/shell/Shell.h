#pragma once

#include "base/MadeOnce.h"
#include "clipboard/ClipboardExperienceSettings.h"
#include "clipboard/ClipboardManager.h"
#include "ports/Desktop.h"
#include "shell/FeatureFlags.h"
#include "shell/LargeWindows.h"
#include "shell/PanelController.h"
#include "shell/PasteBack.h"
#include "shell/WindowManager.h"

namespace tavrine {

class ClipboardDatabase;
class NotificationCenter;
class Reading;
class ToastManager;
class Uploads;
class UserDefaults;

/// What the tools share: the desktop, the history, the switches, permissions, windows, panels, toasts. AppDelegate owns
/// the one instance, which outlives the tools. Lives on the main thread.
///
/// What a launch does not need is made when it is first asked for. No manager sees the shell: a tool hands each the few
/// parts that it uses.
class Shell {
public:
    /// What is there before the shell, and after it.
    struct Parts {
        Desktop &desktop;
        UserDefaults &defaults;
        NotificationCenter &center;
        ClipboardDatabase &database;
    };

    /// `contents` make what stands in the floating panels.
    Shell(const Parts &parts, PanelController::Contents contents);
    ~Shell();
    Shell(const Shell &) = delete;
    Shell &operator=(const Shell &) = delete;

    [[nodiscard]] Desktop &desktop() { return m_parts.desktop; }
    [[nodiscard]] Time &time() { return m_parts.desktop.time(); }
    [[nodiscard]] UserDefaults &defaults() { return m_parts.defaults; }
    [[nodiscard]] NotificationCenter &center() { return m_parts.center; }

    [[nodiscard]] ClipboardManager &clipboardManager() { return m_clipboardManager; }
    [[nodiscard]] FeatureFlags &flags() { return m_flags; }
    [[nodiscard]] ClipboardExperienceSettings &experienceSettings() { return m_experienceSettings; }
    [[nodiscard]] WindowManager &windowManager() { return m_windowManager; }
    /// What an alert calls that would lie under the recorder's overlay; empty for none.
    void setClearSelectionWindow(std::function<void()> clear) { m_clearSelectionWindow = std::move(clear); }
    [[nodiscard]] LargeWindows &largeWindows() { return m_largeWindows; }

    [[nodiscard]] PanelController &panels();
    /// Null until a panel was asked for: there is nothing to take off the screen.
    [[nodiscard]] PanelController *panelsIfMade() const { return m_panels.ifMade(); }
    /// Makes panels, on a desktop whose looks are followed from then on.
    [[nodiscard]] PanelWindows &panelWindows();
    void showToast(const QString &message, const QString &icon);
    void activateApplication();

    [[nodiscard]] Uploads &uploads();
    [[nodiscard]] Reading &reading();

    /// The program that was left last, where a paste goes.
    [[nodiscard]] PasteBack &pasteBack() { return m_pasteBack; }

private:
    Parts m_parts;
    PanelController::Contents m_contents;
    ClipboardManager m_clipboardManager;
    FeatureFlags m_flags;
    ClipboardExperienceSettings m_experienceSettings;
    WindowManager m_windowManager;
    LargeWindows m_largeWindows;
    PasteBack m_pasteBack;
    std::function<void()> m_clearSelectionWindow;
    bool m_watchesCompositing = false;
    MadeOnce<ToastManager> m_toasts;
    MadeOnce<PanelController> m_panels;
    MadeOnce<Uploads> m_uploads;
    MadeOnce<Reading> m_reading;
};

} // namespace tavrine
