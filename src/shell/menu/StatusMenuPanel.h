#pragma once

#include "panels/Departure.h"
#include "panels/FloatingPanel.h"
#include "ports/EventMonitors.h"
#include "shell/menu/QuickActionsHeight.h"

#include <QObject>
#include <QPoint>

#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

class ApplicationActivator;
class StatusMenuView;

/// The menu's window: where it stands beside the tray item, and when it goes. Main thread; owned by TrayMenu.
///
///  1. A press on the item opens it, and another one closes it: a press elsewhere that closed it a moment before was
///     that press itself.
///  2. A click anywhere else, Escape, and the keyboard going to another program close it.
///  3. It grows and shrinks away from the item, and never leaves the screen.
///  4. Nothing of it exists until it is opened for the first time.
///  5. A press that is still held when it opens chooses what it is let go over, also where the tray keeps the pointer
///     for itself until then.
class StatusMenuPanel final : public QObject {
    Q_OBJECT

public:
    static constexpr Seconds samePress{0.4};
    static constexpr Seconds heldPulse{1.0 / 60};

    struct Ports {
        PanelWindows &windows;
        Screens &screens;
        EventMonitors &monitors;
        ApplicationActivator &activator;
        Workspace &workspace;
        Time &time;
    };
    /// Makes what stands in it; the panel takes it over.
    using MakeContent = std::function<StatusMenuView *(QuickActionsHeight &height)>;

    /// `willOpen` is called before it is shown or measured.
    StatusMenuPanel(const Ports &ports, MakeContent makeContent, std::function<void()> willOpen,
                    QObject *parent = nullptr);
    ~StatusMenuPanel() override;

    /// The item was pressed `ago` seconds ago at this place, in the toolkit's coordinates.
    void press(QPoint place, Seconds ago);
    /// Ends what the person does in it. Nothing while it is closed.
    void cancelTracking();
    [[nodiscard]] bool isOpen() const { return m_panel.isVisible(); }
    [[nodiscard]] QuickActionsHeight &height() { return m_height; }
    [[nodiscard]] QRectF frame() const { return m_panel.frame(); }

private:
    void open();
    void build();
    void resize();
    void clickedElsewhere();
    void followHeldPress();
    [[nodiscard]] QPointF planePoint(QPoint place) const;
    [[nodiscard]] std::optional<QRectF> frameAt(const Screens &screens) const;

    Ports m_ports;
    MakeContent m_makeContent;
    std::function<void()> m_willOpen;
    QuickActionsHeight m_height;
    FloatingPanel m_panel;
    Departure m_departure;
    StatusMenuView *m_view = nullptr;
    QPoint m_pressedAt;
    QPointF m_place;                             ///< the same place in the plane of the screens
    std::optional<Seconds> m_pressedElsewhereAt; ///< which closed it; it may have been a press of the item
    std::unique_ptr<EventMonitor> m_clicks;
    std::unique_ptr<EventMonitor> m_ownClicks;
    std::unique_ptr<Timer> m_heldPulse; ///< while a press is held that opened it
};

} // namespace tavrine
