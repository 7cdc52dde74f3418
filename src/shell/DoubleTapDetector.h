#pragma once

#include "base/Date.h"

#include <optional>

namespace tavrine {

/// Tells a double tap of Option from the modifier flags as they change. A value: time is handed in.
///
/// The time runs from press to press. A press that completes a pair starts no new one, so three quick presses are one
/// double tap and four are two.
class DoubleTapDetector {
public:
    /// Two presses at most this far apart are a pair.
    static constexpr Seconds interval{0.45};

    /// Takes the flags that now hold. True when this press completes a pair.
    [[nodiscard]] bool flagsChanged(quint32 modifierFlags, Date now);

    /// Forgets the last press, and that the key is down.
    void reset() { *this = {}; }

private:
    std::optional<Date> m_lastTap;
    bool m_isKeyDown = false;
};

} // namespace tavrine
