#pragma once

#include "base/Date.h"

#include <QRectF>

#include <functional>
#include <map>
#include <memory>
#include <optional>

namespace tavrine {

class PanelWindow;
class PanelWindows;
class Time;
class Timer;

/// How an animation runs from 0 to 1.
enum class TimingFunction { linear, easeIn, easeInEaseOut };

/// The part of the way that is done after the part `t` of the time; both from 0 to 1.
[[nodiscard]] double progress(TimingFunction function, double t);

/// Moves panels in alpha and frame over time. Lives on the main thread.
///
/// A new animation of a panel takes over from where the last one is; both call their completions when their time is
/// up. On a desktop that cannot show alpha, an animation does nothing but set the final alpha and complete at once.
class PanelAnimator {
public:
    struct Target {
        std::optional<double> alpha;
        std::optional<QRectF> frame;
    };

    PanelAnimator(PanelWindows &windows, Time &time);
    ~PanelAnimator();

    /// `completion` is called after `duration`, never within the call.
    void run(PanelWindow &panel, Seconds duration, TimingFunction function, const Target &target,
             std::function<void()> completion = {});

    /// Leaves the panel where it is. Completions come all the same. Called before a panel is destroyed.
    void stop(PanelWindow &panel);

private:
    struct Animation;

    void step(PanelWindow *panel);

    PanelWindows &m_windows;
    Time &m_time;
    std::map<PanelWindow *, std::unique_ptr<Animation>> m_animations;
    int m_serial = 0;
    std::shared_ptr<int> m_alive = std::make_shared<int>();
};

} // namespace tavrine
