#include "panels/PanelAnimator.h"

#include "base/Time.h"
#include "look/Look.h"
#include "ports/PanelWindow.h"

#include <algorithm>

namespace tavrine {
namespace {

constexpr Seconds frameLength{1.0 / 60.0};

double between(double from, double to, double part) {
    return from + (to - from) * part;
}

} // namespace

struct PanelAnimator::Animation {
    int serial;
    Seconds start;
    Seconds duration;
    look::Timing timing;
    Target target;
    double startAlpha;
    QRectF startFrame;
    std::unique_ptr<Timer> timer;
};

PanelAnimator::PanelAnimator(PanelWindows &windows, Time &time) : m_windows(windows), m_time(time) {}
PanelAnimator::~PanelAnimator() = default;

bool PanelAnimator::animates() const {
    const bool mayMove = look::Look::current() == nullptr || look::Look::moves();
    return mayMove && m_windows.isComposited();
}

void PanelAnimator::run(PanelWindow &panel, Seconds duration, const look::Timing &timing, const Target &target,
                        Completion completion) {
    stop(panel);
    const bool isAnimated = animates();
    const auto alive = std::weak_ptr<int>(m_alive);
    if (isAnimated) {
        auto animation = std::make_unique<Animation>(Animation{++m_serial, m_time.systemUptime(), duration, timing,
                                                               target, panel.alpha(), panel.frame(), nullptr});
        animation->timer = m_time.repeat(frameLength, [this, key = &panel] { step(key); });
        m_animations[&panel] = std::move(animation);
    }
    // The end is a moment of its own: the steps may meet it late.
    m_time.asyncAfter(isAnimated ? duration : Seconds{0},
                      [this, alive, key = &panel, serial = m_serial, target, completion] {
                          if (alive.expired())
                              return;
                          const auto found = m_animations.find(key);
                          const bool isLatest = found != m_animations.end() && found->second->serial == serial;
                          if (isLatest) {
                              m_animations.erase(found);
                              finish(*key, target);
                          }
                          if (completion)
                              completion();
                      });
    if (!isAnimated)
        finish(panel, target);
}

void PanelAnimator::finish(PanelWindow &panel, const Target &target) {
    if (target.frame)
        panel.setFrame(*target.frame);
    if (target.alpha)
        panel.setAlpha(*target.alpha);
}

void PanelAnimator::stop(PanelWindow &panel) {
    m_animations.erase(&panel);
}

void PanelAnimator::step(PanelWindow *panel) {
    const auto found = m_animations.find(panel);
    if (found == m_animations.end())
        return;
    if (look::Look::current() && !look::Look::moves()) { // since the animation began
        const Target target = found->second->target;     // what is set may begin another
        return finish(*panel, target);
    }
    const Animation &animation = *found->second;
    const double t =
        std::clamp((m_time.systemUptime() - animation.start).count() / animation.duration.count(), 0.0, 1.0);
    const double part = animation.timing.at(t);
    if (animation.target.alpha)
        panel->setAlpha(between(animation.startAlpha, *animation.target.alpha, part));
    if (const auto &to = animation.target.frame) {
        const QRectF &from = animation.startFrame;
        panel->setFrame({between(from.x(), to->x(), part), between(from.y(), to->y(), part),
                         between(from.width(), to->width(), part), between(from.height(), to->height(), part)});
    }
}

} // namespace tavrine
