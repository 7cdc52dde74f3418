#pragma once

#include "shell/ShortcutEditor.h"
#include "shell/settings/SidebarItem.h"

#include <QWidget>

#include <functional>
#include <memory>

namespace tavrine {

class ClearAndDisable;
class HotKeyCenter;
class Shell;
class SoftwareUpdater;
class Tools;

/// The one place where the pages of the settings are made: each over the manager that owns what it shows. AppDelegate
/// owns it; main thread.
class SettingsWindow {
public:
    /// All outlive it, and the windows that it makes.
    struct Parts {
        Shell &shell;
        Tools &tools;
        HotKeyCenter &hotKeys;
        std::function<SoftwareUpdater &()> updater; ///< there is one once the program is launched
    };
    explicit SettingsWindow(Parts parts) : m_parts(std::move(parts)) {}

    /// The window with its first page, not shown yet.
    [[nodiscard]] std::unique_ptr<QWidget> makeWindow();
    /// Leads to a page of such a window.
    static void select(QWidget &window, SidebarItem item);

private:
    [[nodiscard]] std::unique_ptr<QWidget> make(SidebarItem item, ClearAndDisable &clearAndDisable);
    [[nodiscard]] std::unique_ptr<QWidget> makeClipboard();
    [[nodiscard]] std::unique_ptr<QWidget> makeHome();
    [[nodiscard]] std::unique_ptr<QWidget> makeSnipper();
    [[nodiscard]] std::unique_ptr<QWidget> makeCloudUpload();
    [[nodiscard]] std::unique_ptr<ShortcutEditor> makeEditor(Trigger trigger);

    Parts m_parts;
};

} // namespace tavrine
