#pragma once

#include <QRectF>

#include <functional>
#include <optional>

namespace tavrine {

/// The corner in which a window of one tool waits for the person, and something of another comes for some seconds. What
/// waits keeps its place, and what comes stands above it, or beside it, so that no button lies under it.
///
/// One instance, as long as the process; main thread.
class TakenCorner {
public:
    void take(const QRectF &frame) {
        m_frame = frame;
        if (m_onTaken)
            m_onTaken();
    }
    void giveBack() { m_frame.reset(); }
    /// Called when something comes to wait there.
    void setOnTaken(std::function<void()> onTaken) { m_onTaken = std::move(onTaken); }

    /// The frame, moved off what waits; where it has no room in `usable` elsewhere, it stays. Geometry of `Screens`.
    [[nodiscard]] QRectF clearOf(const QRectF &usable, const QRectF &frame, double gap) const;

private:
    std::optional<QRectF> m_frame;
    std::function<void()> m_onTaken;
};

} // namespace tavrine
