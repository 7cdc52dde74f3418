#include "look/Motion.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tavrine::look {

Spring::Spring(double angularFrequency, double dampingFraction)
    : m_frequency(angularFrequency), m_damping(dampingFraction) {
    // Backwards from a bound that lies behind every settling, in steps finer than a frame.
    constexpr double near = 0.001;
    constexpr double step = 1.0 / 240;
    const double slowest = m_damping >= 1 ? m_frequency * (m_damping - std::sqrt(m_damping * m_damping - 1))
                                          : m_frequency * std::max(m_damping, 0.01);
    const double bound = std::min(30.0, 12.0 / slowest);
    double moment = bound;
    while (moment > 0 && std::abs(at(Seconds{moment - step}) - 1) < near)
        moment -= step;
    m_settled = Seconds{moment};
}

Spring Spring::responding(double responseSeconds, double dampingFraction) {
    return {2 * std::numbers::pi / responseSeconds, dampingFraction};
}

Spring Spring::interpolating(double mass, double stiffness, double damping) {
    return {std::sqrt(stiffness / mass), damping / (2 * std::sqrt(stiffness * mass))};
}

double Spring::at(Seconds time) const {
    const double t = time.count();
    if (t <= 0)
        return 0;
    const double w = m_frequency;
    const double z = m_damping;
    if (std::abs(z - 1) < 1e-9)
        return 1 - std::exp(-w * t) * (1 + w * t);
    if (z < 1) {
        const double damped = w * std::sqrt(1 - z * z);
        return 1 - std::exp(-z * w * t) * (std::cos(damped * t) + z * w / damped * std::sin(damped * t));
    }
    const double root = std::sqrt(z * z - 1);
    const double slow = w * (z - root);
    const double fast = w * (z + root);
    return 1 - (fast * std::exp(-slow * t) - slow * std::exp(-fast * t)) / (fast - slow);
}

double Timing::at(double part) const {
    if (part <= 0)
        return 0;
    if (part >= 1)
        return 1;
    const auto bezier = [](double a, double b, double s) {
        const double r = 1 - s;
        return 3 * r * r * s * a + 3 * r * s * s * b + s * s * s;
    };
    // x grows with s, so halving finds s to the last bit that matters on any screen.
    double low = 0;
    double high = 1;
    for (int i = 0; i < 40; ++i) {
        const double middle = (low + high) / 2;
        (bezier(x1, x2, middle) < part ? low : high) = middle;
    }
    return bezier(y1, y2, (low + high) / 2);
}

double cubicInOut(double part) {
    const double t = std::clamp(part, 0.0, 1.0);
    if (t < 0.5)
        return 4 * t * t * t;
    const double rest = 2 - 2 * t;
    return 1 - rest * rest * rest / 2;
}

} // namespace tavrine::look
