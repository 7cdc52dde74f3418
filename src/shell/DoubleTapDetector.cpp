#include "shell/DoubleTapDetector.h"

#include "ports/EventMonitors.h"

namespace tavrine {
namespace {

// A date of today resolves a quarter of a microsecond, so that 0.45 seconds may come out as a trace more.
constexpr Seconds resolution{1e-6};

} // namespace

bool DoubleTapDetector::flagsChanged(quint32 modifierFlags, Date now) {
    if ((modifierFlags & modifierFlag::deviceIndependent) != modifierFlag::option) {
        m_isKeyDown = false;
        return false;
    }
    if (m_isKeyDown)
        return false; // the same press, with another key of the same meaning or a repeated event
    m_isKeyDown = true;
    if (m_lastTap && now - *m_lastTap <= interval + resolution) {
        m_lastTap.reset();
        return true;
    }
    m_lastTap = now;
    return false;
}

} // namespace tavrine
