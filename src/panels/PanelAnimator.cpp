#include "panels/PanelAnimator.h"

#include "base/Time.h"
#include "ports/PanelWindow.h"

#include <algorithm>

namespace tavrine {
namespace {

constexpr Seconds frameLength{1.0 / 60.0};

// One coordinate of a cubic Bézier curve from 0 to 1 with the inner control values `a` and `b`.
double bezier(double a, double b, double s) {
    const double r = 1.0 - s;
    return 3.0 * r * r * s * a + 3.0 * r * s * s * b + s * s * s;
}

double curve(double x1, double y1, double x2, double y2, double t) {
    double low = 0.0;
    double high = 1.0;
    for (int i = 0; i < 30; ++i) { // the curve's first coordinate grows with its parameter
        const double middle = (low + high) / 2.0;
        (bezier(x1, x2, middle) < t ? low : high) = middle;
    }
    return bezier(y1, y2, low);
}

double between(double from, double to, double part) {
    return from + (to - from) * part;
}

} // namespace

double progress(TimingFunction function, double t) {
    if (t <= 0.0 || t >= 1.0)
        return t <= 0.0 ? 0.0 : 1.0;
    switch (function) {
    case TimingFunction::linear:
        return t;
    case TimingFunction::easeIn:
        return curve(0.42, 0.0, 1.0, 1.0, t);
    case TimingFunction::easeInEaseOut:
        return curve(0.42, 0.0, 0.58, 1.0, t);
    }
    return t;
}

struct PanelAnimator::Animation {
    int serial;
    Date start;
    Seconds duration;
    TimingFunction function;
    Target target;
    double startAlpha;
    QRectF startFrame;
    std::unique_ptr<Timer> timer;
};

PanelAnimator::PanelAnimator(PanelWindows &windows, Time &time) : m_windows(windows), m_time(time) {}
PanelAnimator::~PanelAnimator() = default;

void PanelAnimator::run(PanelWindow &panel, Seconds duration, TimingFunction function, const Target &target,
                        std::function<void()> completion) {
    stop(panel);
    const bool isAnimated = m_windows.isComposited();
    const auto alive = std::weak_ptr<int>(m_alive);
    if (isAnimated) {
        auto animation = std::make_unique<Animation>(
            Animation{++m_serial, m_time.now(), duration, function, target, panel.alpha(), panel.frame(), nullptr});
        animation->timer = m_time.repeat(frameLength, [this, key = &panel] { step(key); });
        m_animations[&panel] = std::move(animation);
    }
    // The end is a moment of its own: the steps may meet it late.
    m_time.asyncAfter(isAnimated ? duration : Seconds{0},
                      [this, alive, key = &panel, serial = m_serial, target, isAnimated, completion] {
                          if (alive.expired())
                              return;
                          const auto found = m_animations.find(key);
                          const bool isLatest = found != m_animations.end() && found->second->serial == serial;
                          if (isLatest) {
                              m_animations.erase(found);
                              if (target.frame)
                                  key->setFrame(*target.frame);
                              if (target.alpha)
                                  key->setAlpha(*target.alpha);
                          }
                          if (completion)
                              completion();
                      });
    if (!isAnimated && target.alpha)
        panel.setAlpha(*target.alpha);
}

void PanelAnimator::stop(PanelWindow &panel) {
    m_animations.erase(&panel);
}

void PanelAnimator::step(PanelWindow *panel) {
    const auto found = m_animations.find(panel);
    if (found == m_animations.end())
        return;
    const Animation &animation = *found->second;
    const double t = std::clamp((m_time.now() - animation.start).count() / animation.duration.count(), 0.0, 1.0);
    const double part = progress(animation.function, t);
    if (animation.target.alpha)
        panel->setAlpha(between(animation.startAlpha, *animation.target.alpha, part));
    if (const auto &to = animation.target.frame) {
        const QRectF &from = animation.startFrame;
        panel->setFrame({between(from.x(), to->x(), part), between(from.y(), to->y(), part),
                         between(from.width(), to->width(), part), between(from.height(), to->height(), part)});
    }
}

} // namespace tavrine
