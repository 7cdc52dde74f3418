#pragma once

#include "panels/PanelAnimator.h"
#include "ports/PanelWindow.h"

#include <QObject>
#include <QRectF>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tavrine {

class Screens;
class Time;

/// How a window goes off the screen.
enum class Dismissal { atOnce, animated };

/// The place of one window that floats over whatever the person works in. Main thread; owned by its tool, and outlived
/// by its ports.
///
///  1. It is absent, ordered out or on the screen. One that is dismissed stays, ordered out, for its next showing; one
///     that is released is taken apart, and is absent at once, though it may still fade: the next can come meanwhile.
///  2. It fades in and out, and may shrink on its way. Where the desktop cannot show that, it comes and goes at once.
///     Its frame is the one that it was given, whatever an animation does to it.
///  3. No part of it is outside of the screen's free part, which it is cut to where that is smaller; nor when a screen
///     goes or shrinks under it.
///  4. What it holds is destroyed in a later turn, because its own button may be what closes it, and not while a
///     question of the program is open, which its content may be waiting for.
///  5. The desktop may ask for its end as well (Alt+F4): `onClosed` answers that, and a dismissal where nobody does.
class FloatingPanel final : public QObject {
    Q_OBJECT

public:
    struct Ports {
        PanelWindows &windows;
        Screens &screens;
        Time &time;
    };
    /// Where a panel of this size stands now. None leaves it where it is.
    using Placement = std::function<std::optional<QRectF>(const Screens &screens, QSizeF size)>;
    /// When the placement is asked: at each showing, or when the window is made, which then keeps its place.
    enum class Placed { atEachShowing, once };
    struct Motion {
        Seconds fadeIn{0}; ///< none: at once
        look::Timing timingIn = look::easeInOut;
        Seconds fadeOut{0};
        look::Timing timingOut = look::easeInOut;
        double shrinksTo = 1; ///< of its width and height, about its middle, while it fades out
    };
    struct Traits {
        PanelDescription description;
        Placement placement;
        Placed placed = Placed::atEachShowing;
        Motion motion = {};
    };
    using Done = std::function<void()>;

    FloatingPanel(Ports ports, Traits traits);
    ~FloatingPanel() override;

    /// Makes the window, ordered out, and gives it the content. One that is there already is released at once.
    void build(QWidget *content);
    /// The same for a content that decides how large the panel is.
    void build(QWidget *content, QSizeF size);
    /// Places and shows what was built, with the keyboard if it takes it.
    void show();
    /// Where the placement has it by now, if it is on the screen.
    void placeAgain();
    /// Off the screen; the window stays.
    void dismiss(Dismissal dismissal);
    /// Off the screen and taken apart. `done` is called in a later turn, once it has left the screen.
    void release(Dismissal dismissal, Done done = {});

    /// Off the screen at once, with what is still fading, until it is brought back. False when nothing was on it.
    bool setAside();
    void bringBack();

    /// Answers the desktop's wish that the panel goes.
    void setOnClosed(std::function<void()> onClosed) { m_onClosed = std::move(onClosed); }
    /// Called after the person moved it.
    void setOnMoved(std::function<void()> onMoved) { m_onMoved = std::move(onMoved); }

    [[nodiscard]] bool isBuilt() const { return m_window != nullptr; }
    [[nodiscard]] bool isVisible() const { return m_window && m_window->isVisible(); }
    [[nodiscard]] bool isVisibleAndWithout(QPointF point) const { return isVisible() && !frame().contains(point); }
    [[nodiscard]] QRectF frame() const;
    /// Null while there is none.
    [[nodiscard]] PanelWindow *window() const { return m_window.get(); }

private:
    void place();
    void keepOnScreen();
    void fadeOut(PanelWindow &window, PanelAnimator::Completion completion);
    void rest();
    void orderOut();
    void orderFront();
    void tearDown(std::unique_ptr<PanelWindow> window);
    void clearTornDown();

    Ports m_ports;
    Traits m_traits;
    PanelAnimator m_animator;
    std::function<void()> m_onClosed;
    std::function<void()> m_onMoved;
    std::unique_ptr<PanelWindow> m_window;
    std::vector<std::unique_ptr<PanelWindow>> m_leaving;  ///< released, and fading
    std::vector<std::unique_ptr<PanelWindow>> m_tornDown; ///< off the screen, and gone with a later turn
    std::optional<QRectF> m_restingFrame;                 ///< while it shrinks away
    std::shared_ptr<void> m_screenChanges;
    bool m_isAside = false;
    int m_showing = 0; ///< grows with each, and with its end: an earlier dismissal has no say any more
};

} // namespace tavrine
