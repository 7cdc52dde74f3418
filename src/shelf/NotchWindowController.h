#pragma once

#include "ports/DragPasteboard.h"
#include "ports/EdgeWindow.h"
#include "ports/EventMonitors.h"
#include "ports/Screens.h"
#include "ports/SessionNotices.h"
#include "shelf/NotchGeometry.h"
#include "shelf/NotchViewModel.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

class Timer;

/// Owns the shelf and its one window, at the top of one screen. The window is in nobody's way while nothing happens,
/// and yet there at once when a file is dragged anywhere, or the pointer touches the upper edge.
///
/// Lives on the main thread while the shelf is switched on. What tells of the mouse can die silently, after a sleep, a
/// lock or a change of desktops: three sources are kept that know nothing of each other, a timer checks that they live,
/// and all are made anew after whatever might have hurt them.
class NotchWindowController : public QObject {
    Q_OBJECT

public:
    struct Ports {
        NotchViewModel::Ports model;
        Screens &screens;
        EventMonitors &eventMonitors;
        EdgeWindows &edgeWindows;
        DragPasteboards &dragPasteboards;
        SessionNotices &sessionNotices;
    };
    struct Views {
        /// What the window shows, and takes drops with. `dismiss` is for a person who leaves the shelf by the keyboard.
        std::function<QWidget *(NotchViewModel &model, std::function<void()> dismiss)> content;
        std::function<QPainterPath(const QSizeF &)> outline;
    };

    NotchWindowController(Ports ports, const Views &views, QObject *parent = nullptr);
    ~NotchWindowController() override;

    void showWindow();
    /// Nothing is watched any more, and the window is gone. Called once, before the end or not at all.
    void close();

    /// Opens what is held for a person without a mouse, until `dismiss`. False when nothing is held.
    [[nodiscard]] bool openWithKeyboard();
    void dismiss();

    [[nodiscard]] NotchViewModel &viewModel() { return m_viewModel; }
    [[nodiscard]] EdgeWindow *window() const { return m_window.get(); } ///< null once closed
    [[nodiscard]] const Screen &pinnedScreen() const { return m_pinnedScreen; }
    [[nodiscard]] QRectF notchRect() const { return m_notchRect; }
    [[nodiscard]] int monitorRestartCount() const { return m_monitorRestartCount; }

private:
    // The window.
    void makeWindow(const Views &views);
    void followModel();
    void itemsChanged();
    void modelChanged();
    void applyFrame();
    void applyMousePassThrough();
    void orderFront();
    void comeBackToTheFront();

    // The mouse.
    void startMonitors();
    void stopMonitors();
    void addMonitors();
    void mouseEvent(const InputEvent &event);
    void watchPointerClosely();
    void poll();
    void updateHovering(const QPointF &mouse);
    void setHovering(bool isHovering);

    // Drags.
    void handleForFileDrags(quint32 eventType);
    void dragged();
    void dragPasteboardChanged();
    void completeDrag();
    void setFileDrag(bool isActive);

    // What may hurt the sources.
    void checkHealth();
    void sessionNotice(SessionNotice notice);
    void screensChanged();
    void pin(const std::optional<Screen> &screen);
    void repin();

    Ports m_ports;
    Time &m_time;
    NotchViewModel m_viewModel;
    Screen m_pinnedScreen; ///< as it was when it was last looked at
    QRectF m_notchRect;    ///< at rest
    std::unique_ptr<EdgeWindow> m_window;
    std::unique_ptr<DragPasteboard> m_dragPasteboard;
    qsizetype m_itemCount = 0;
    int m_modelChange = 0; ///< the latest; those before it are not waited for

    std::unique_ptr<EventMonitor> m_mouseMonitor;
    std::unique_ptr<EventMonitor> m_localMouseMonitor;
    std::unique_ptr<EventMonitor> m_leavingMonitor; ///< clicks elsewhere, while the shelf has the keyboard
    std::unique_ptr<PointerWatch> m_pollingTimer;
    std::unique_ptr<Timer> m_healthCheckTimer;
    Date m_lastMouseCheckTime;
    int m_monitorRestartCount = 0;
    bool m_isMonitoringActive = false; ///< while the monitors are started
    bool m_hasKeyboard = false;

    std::optional<int> m_activeFileDragPasteboardChangeCount;
    int m_lastCompletedFileDragPasteboardChangeCount = 0;

    SessionNotices::Token m_sessionToken;
    Screens::Token m_screensToken;
};

} // namespace tavrine
