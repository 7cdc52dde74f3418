#pragma once

#include "panels/Departure.h"
#include "panels/FloatingPanel.h"
#include "ports/EventMonitors.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class QWidget;

namespace tavrine {

class ApplicationActivator;
class EventPoster;
class NotificationCenter;
class PasteBack;
class Pasteboard;
class UserDefaults;
struct ClipboardItem;
struct PanelTraits;

/// The three panels that are called by a key, and what is pasted from them.
///
/// Lives on the main thread; owned by the application's delegate. A panel is built at first use. What stands in it is
/// made by the closures in `Contents`.
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
        PasteBack &pasteBack;
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

    /// The triggers: on the next turn of the main queue, and not before a paste that is under way is typed.
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

    void removePanelMonitors();
    void unloadClipboardPanels();
    void unloadEmojiPanel();
    /// When the other clipboard panel was chosen: both go, and the monitors.
    void orderOutClipboardPanels();
    /// Before a window of the settings opens: all three go, and the monitors.
    void orderOutAllPanels();

    [[nodiscard]] PanelWindow *classicPanel() const { return m_classic.window(); }
    [[nodiscard]] PanelWindow *searchPanel() const { return m_search.window(); }
    [[nodiscard]] PanelWindow *emojiPanel() const { return m_emoji.window(); }

private:
    using Placement = FloatingPanel::Placement;

    [[nodiscard]] FloatingPanel::Traits traitsOf(const PanelTraits &traits, Placement placement,
                                                 FloatingPanel::Placed placed) const;
    [[nodiscard]] std::optional<QRectF> classicFrame(QSizeF size) const;
    void saveClassicFrame();
    void show(FloatingPanel &panel, const PanelTraits &traits);
    void installPanelMonitors();
    void clickedElsewhere();
    void escapePressed();
    void leave();
    void pasteIntoTarget();
    void afterPastes(std::function<void()> toggle);

    Ports m_ports;
    Contents m_contents;
    Actions m_actions;
    FloatingPanel m_classic;
    FloatingPanel m_search;
    FloatingPanel m_emoji;
    Departure m_departure;
    std::unique_ptr<EventMonitor> m_clickMonitor;
    std::unique_ptr<EventMonitor> m_keyMonitor;
};

} // namespace tavrine
