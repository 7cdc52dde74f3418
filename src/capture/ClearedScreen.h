#pragma once

#include "base/Date.h"

#include <QObject>

#include <functional>
#include <vector>

namespace tavrine {

class Time;

/// Keeps what floats over the desktop for a while, the card of the last capture and the question where to save it, out
/// of what looks at the screen: a capture, a scan for codes, a pick of a colour. One for all of them, on the main
/// thread, outlived by its time.
class ClearedScreen final : public QObject {
    Q_OBJECT

public:
    /// What goes for that time, and comes back when nothing has taken its place.
    class Windows {
    public:
        virtual ~Windows() = default;
        /// False when nothing was on the screen.
        virtual bool setAside() = 0;
        virtual void bringBack() = 0;
    };

    static constexpr Seconds settling{0.2}; ///< what was ordered out is off the screen by then

    explicit ClearedScreen(Time &time) : m_time(time) {}

    /// None at first; null for none.
    void setWindows(Windows *windows) { m_windows = windows; }

    /// Calls `look` once nothing of that is on the screen: at once, or after `settling`. Each look that was begun is
    /// told of when it is over.
    void clearFor(std::function<void()> look);
    void lookEnded();
    /// Until one `lookEnded` more: what was seen is not dealt with yet, and its windows are still to come.
    void lookGoesOn() { ++m_looks; }

private:
    void begin();

    Time &m_time;
    Windows *m_windows = nullptr;
    std::vector<std::function<void()>> m_waiting;
    int m_looks = 0; ///< under way
};

} // namespace tavrine
