#pragma once

#include "base/Date.h"
#include "clipboard/ClipboardItem.h"

#include <QImage>
#include <QString>

#include <functional>
#include <optional>

namespace tavrine {

/// What the tip of the tray item tells of Keep Awake.
struct KeepAwakeState {
    bool isAwake = false;
    QString modeName; ///< "Display Awake", "System Awake" or "Lid Closed"
};

/// The tools as AppDelegate calls them, one operation for each thing that it asks of a tool.
///
/// Lives on the main thread, as long as the process. AppDelegate owns the order, the moments and the conditions of
/// these calls; what they do belongs to the tools. A tool that is not there does nothing: that is what each operation
/// does here. Callbacks that are handed over may be kept; they do nothing once AppDelegate is gone.
class ToolHooks {
public:
    virtual ~ToolHooks();

    // The shelf.
    [[nodiscard]] virtual bool hasNotch() const { return false; }
    virtual void showNotch() {} ///< makes the controller and shows its window
    virtual void closeNotch() {}

    // Triggers.
    virtual void registerHotkeys() {}
    virtual void toggleClipboardPanel() {}
    virtual void toggleEmojiPanel() {}

    // Panels.
    virtual void removePanelMonitors() {}
    virtual void orderOutClipboardPanels() {}
    virtual void orderOutFloatingPanels() {} ///< all three; the classic one's alpha is 1.0 again
    virtual void unloadClipboardPanels() {}
    virtual void unloadEmojiPanel() {}

    // The speed meter.
    virtual void startSpeedObservers() {}
    virtual void startMeter() {}
    virtual void stopMeter() {}
    virtual void updateStatusItem() {} ///< draws the tray item with the meter's present values

    // Captures and recordings.
    [[nodiscard]] virtual bool isWaitingForCapture() const { return false; }
    virtual void clearWaitingForCapture() {}
    virtual void showPreviewCard(const ClipboardItem &) {}
    virtual void setOnSnipComplete(const std::function<void(const QImage &)> &) {}
    virtual void presentSnip(const QImage &) {} ///< pasteboard, image file and card of a fresh capture
    virtual void startSnip() {}                 ///< the permission path included
    virtual void startCapture() {}              ///< without it, for who was in a capture already
    virtual void unloadScreenRecorder() {}

    // Keep Awake.
    [[nodiscard]] virtual KeepAwakeState keepAwakeState() const { return {}; }
    virtual void setOnKeepAwakeChange(const std::function<void()> &) {} ///< its state or its mode
    virtual void setOnShowAdvancedPanelChange(const std::function<void()> &) {}
    virtual void hideAdvancedPanel() {}
    virtual void turnOffKeepAwakeIfAwake() {} ///< clears `autoDisabledForBattery` as well

    // The small tools.
    virtual void stopCleaningIfCleaning() {}
    virtual void stopLofi() {}
    virtual void pickColor() {}

    // Windows and the menu's grid.
    virtual void openMainWindow(const QString & /*sidebarItem*/) {} ///< the page by its text in the side bar
    virtual void openEditor(const std::optional<QImage> &) {}
    virtual void showOnboarding() {}
    virtual void remeasureQuickActions() {}
    virtual void animateQuickActionsHeight(Seconds) {}

    /// True when the program may send keystrokes to others. Asks the person when it may not and a prompt is allowed.
    [[nodiscard]] virtual bool accessibilityTrusted(bool /*promptAllowed*/) { return true; }
};

} // namespace tavrine
