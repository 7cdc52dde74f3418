#pragma once

#include "base/Date.h"

namespace tavrine::look {

/// How a value goes from 0 to 1. Values, free of clocks; a curve's `at` takes the time since the start.

/// A damped spring that is let go at 0 with its rest at 1. It may run past 1 and come back.
class Spring {
public:
    /// By the time of one undamped swing and the part of the critical damping: 1 never runs over.
    [[nodiscard]] static Spring responding(double responseSeconds, double dampingFraction);
    /// By mass, stiffness and damping, let go at rest.
    [[nodiscard]] static Spring interpolating(double mass, double stiffness, double damping);

    [[nodiscard]] double at(Seconds time) const;
    /// From this moment on the value stays within a thousandth of 1.
    [[nodiscard]] Seconds settled() const { return m_settled; }

private:
    Spring(double angularFrequency, double dampingFraction);

    double m_frequency; // undamped, in radians per second
    double m_damping;   // fraction of the critical one
    Seconds m_settled{0};
};

/// A timing function: the cubic Bézier curve from (0,0) to (1,1) with the two given control points.
struct Timing {
    double x1;
    double y1;
    double x2;
    double y2;

    /// The value at `part` of the way, both from 0 to 1.
    [[nodiscard]] double at(double part) const;
};

inline constexpr Timing linearTiming{0, 0, 1, 1};
inline constexpr Timing easeIn{0.42, 0, 1, 1};
inline constexpr Timing easeOut{0, 0, 0.58, 1};
inline constexpr Timing easeInOut{0.42, 0, 0.58, 1};
/// What an animation without a timing function of its own has.
inline constexpr Timing defaultTiming{0.25, 0.1, 0.25, 1};

/// 4 t³ in the first half and the same, turned round, in the second.
[[nodiscard]] double cubicInOut(double part);

} // namespace tavrine::look
