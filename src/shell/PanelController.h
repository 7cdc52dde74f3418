#pragma once

#include "panels/PanelAnimator.h"
#include "ports/EventMonitors.h"
#include "ports/Workspace.h"

#include <QObject>
#include <QRectF>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class QWidget;

namespace tavrine {

class ApplicationActivator;
class EventPoster;
class NotificationCenter;
class PanelWindow;
class PanelWindows;
class Pasteboard;
class Screens;
class UserDefaults;
struct ClipboardItem;
struct PanelTraits;

/// The three floating panels, and the paste into the program that the person came from.
///
/// Lives on the main thread; owned by the application's delegate. A panel is absent, ordered out or visible; it is
/// built at first use. What stands in a panel is made by the closures in `Contents`.
class PanelController : public QObject {
    Q_OBJECT

public:
    /// All of them outlive the controller.
    struct Ports {
        PanelWindows &windows;
        EventMonitors &monitors;
        EventPoster &poster;
        Screens &screens;
        Workspace &workspace;
        ApplicationActivator &activator;
        Pasteboard &pasteboard;
        UserDefaults &defaults;
        NotificationCenter &center;
        Time &time;
    };
    struct Contents {
        std::function<QWidget *()> classic;
        std::function<QWidget *()> search;
        std::function<QWidget *()> emoji;
    };
    struct Actions {
        std::function<bool()> opensSearchPanel; ///< which of the two clipboard panels the person chose
        std::function<void(const ClipboardItem &)> copyToPasteboard;
        std::function<void(const QString &message, const QString &icon)> showToast;
        std::function<bool()> isAccessibilityTrusted; ///< with a prompt allowed
    };

    PanelController(const Ports &ports, Contents contents, Actions actions, QObject *parent = nullptr);
    ~PanelController() override;

    /// The triggers: on the next turn of the main queue.
    void toggleClipboardPanel();
    void toggleEmojiPanel();

    void ensureClassicPanel();
    void ensureSearchPanel();
    void ensureEmojiPanel();
    void toggleClassicPanel();
    void toggleSearchPanel();
    void showOrDismissEmojiPanel();
    void dismissClassicPanel();
    void dismissSearchPanel();
    void dismissEmojiPanel();

    void pasteFromClassic(const ClipboardItem &item);
    void pasteFromSearch(const ClipboardItem &item);
    void insertEmoji(const QString &text);

    /// The selector of `didDeactivateApplicationNotification`: the program that is left becomes the target.
    void appDidDeactivate(const RunningApplication &application);

    void removePanelMonitors();
    void unloadClipboardPanels();
    void unloadEmojiPanel();
    /// When the other clipboard panel was chosen: both go, and the monitors.
    void orderOutClipboardPanels();
    /// Before a window of the settings opens: all three go, and the monitors.
    void orderOutAllPanels();

    [[nodiscard]] PanelWindow *classicPanel() const { return m_classic.get(); }
    [[nodiscard]] PanelWindow *searchPanel() const { return m_search.get(); }
    [[nodiscard]] PanelWindow *emojiPanel() const { return m_emoji.get(); }

private:
    using Panel = std::unique_ptr<PanelWindow>;

    void make(Panel &panel, const PanelTraits &traits, const std::function<QWidget *()> &content);
    void center(PanelWindow &panel, double offset);
    void show(PanelWindow &panel, const PanelTraits &traits);
    void orderOut(PanelWindow *panel);
    void unload(Panel &panel);
    void placeClassicPanel();
    void saveClassicFrame();
    void restoreClassicFrame();
    void installPanelMonitors();
    void clickedElsewhere();
    void escapePressed();
    [[nodiscard]] bool isVisibleAndWithout(const Panel &panel, QPointF point) const;
    void pasteIntoTarget();
    void waitForActivation(const RunningApplication &target, int attempt);
    void postPasteAfter(Seconds delay);

    Ports m_ports;
    Contents m_contents;
    Actions m_actions;
    PanelAnimator m_animator;
    Panel m_classic;
    Panel m_search;
    Panel m_emoji;
    std::unique_ptr<EventMonitor> m_clickMonitor;
    std::unique_ptr<EventMonitor> m_keyMonitor;
    std::optional<RunningApplication> m_previouslyActive; ///< gone once that program has quit
    std::optional<QRectF> m_restingFrame;                 ///< of the classic panel while it shrinks away
    std::shared_ptr<void> m_deactivations;
    int m_classicGeneration = 0; ///< grows with each showing and unloading: an earlier dismissal has no say any more
    int m_emojiGeneration = 0;
};

} // namespace tavrine
