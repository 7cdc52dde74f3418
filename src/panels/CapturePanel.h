#pragma once

#include "base/Date.h"
#include "ports/PanelWindow.h"

#include <QObject>
#include <QRectF>

#include <functional>
#include <memory>
#include <vector>

namespace tavrine {

class Screens;
class Time;
class Timer;
struct Screen;

/// How a window goes off the screen.
enum class Dismissal { atOnce, animated };

/// The screen that a floating tool opens on: the first one that holds the pointer, else the main one, else the first.
[[nodiscard]] std::optional<Screen> screenForTool(const Screens &screens);
/// The one to take when the pointer does not matter.
[[nodiscard]] std::optional<Screen> mainOrFirstScreen(const Screens &screens);

/// The part of a screen that is free for windows; the whole screen where the desktop tells none that makes sense.
[[nodiscard]] QRectF usableFrame(const Screen &screen);

/// The place of one floating tool window that comes and goes: it fades in over whatever the person works in, and is
/// taken down whole when it goes. Main thread; owned by the tool, and outlived by its ports.
///
/// A window that goes is no longer `shown` at once, so that the next can come while it fades. Where the desktop cannot
/// show fades, there are none. What it holds is destroyed in a later turn: its own button may be what closes it.
class CapturePanel final : public QObject {
    Q_OBJECT

public:
    struct Ports {
        PanelWindows &windows;
        Screens &screens;
        Time &time;
    };
    /// Where the panel stands on the given usable part of a screen.
    using Placement = std::function<QPointF(const QRectF &usable)>;

    static constexpr Seconds fadeIn{0.18};
    static constexpr Seconds fadeOut{0.16};

    CapturePanel(Ports ports, PanelDescription description, Placement placement);
    ~CapturePanel() override;

    /// Takes the content over. What is shown already goes at once.
    void show(QWidget *content);
    void dismiss(Dismissal dismissal);
    [[nodiscard]] bool isShown() const { return m_window != nullptr; }
    [[nodiscard]] PanelWindow *window() const { return m_window.get(); }

private:
    struct Leaving;

    void place();
    void keepOnScreen();
    void fadeInStep(double startedAt);
    void fadeOutStep(Leaving &leaving);
    void tearDown(std::unique_ptr<PanelWindow> window);

    Ports m_ports;
    PanelDescription m_description;
    Placement m_placement;
    std::unique_ptr<PanelWindow> m_window;
    std::unique_ptr<Timer> m_fadeIn;
    std::vector<std::unique_ptr<Leaving>> m_leaving;
    std::shared_ptr<void> m_screenChanges;
};

} // namespace tavrine
