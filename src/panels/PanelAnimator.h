#pragma once

#include "base/Date.h"
#include "look/Motion.h"

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

/// Moves panels in alpha and frame over time. Lives on the main thread.
///
/// A new animation of a panel takes over from where the last one is; both call their completions when their time is
/// up. Where nothing may move, and on a desktop that cannot show alpha, a panel is there at once, and the completion
/// comes in the next turn.
class PanelAnimator {
public:
    struct Target {
        std::optional<double> alpha;
        std::optional<QRectF> frame;
    };

    using Completion = std::function<void()>;

    PanelAnimator(PanelWindows &windows, Time &time);
    ~PanelAnimator();

    /// `completion` is called after `duration`, never within the call.
    void run(PanelWindow &panel, Seconds duration, const look::Timing &timing, const Target &target,
             Completion completion = {});

    /// Leaves the panel where it is. Completions come all the same. Called before a panel is destroyed.
    void stop(PanelWindow &panel);

    /// Whether anything would be seen of an animation now.
    [[nodiscard]] bool animates() const;

private:
    struct Animation;

    void step(PanelWindow *panel);
    static void finish(PanelWindow &panel, const Target &target);

    PanelWindows &m_windows;
    Time &m_time;
    std::map<PanelWindow *, std::unique_ptr<Animation>> m_animations;
    int m_serial = 0;
    std::shared_ptr<int> m_alive = std::make_shared<int>();
};

} // namespace tavrine
