#pragma once

#include "adapters/linux/ScreenChanges.h"
#include "adapters/linux/ScreenPlane.h"
#include "adapters/x11/XcbClient.h"
#include "ports/Screens.h"

#include <utility>
#include <vector>

namespace tavrine {

/// A pixel of the X server on the toolkit's plane. Between the screens, as on the first.
[[nodiscard]] QPointF pointOfDevice(QPoint device);

/// The screens as RandR tells them, through Qt, whose plane the windows are placed on; what task bars take of them from
/// the window manager.
///
/// Lives on the main thread, on a connection of its own for the window manager's properties and the pointer.
class X11Screens : public Screens {
public:
    X11Screens();

    [[nodiscard]] QList<Screen> screens() const override;
    [[nodiscard]] std::optional<Screen> mainScreen() const override;
    [[nodiscard]] QRectF toolkitRect(const QRectF &rect) const override { return flippedRect(rect); }
    [[nodiscard]] PointerReading pointer() const override;
    [[nodiscard]] std::unique_ptr<PointerWatch> watchPointer(Time &time, Seconds interval,
                                                             std::function<void()> handler) override;
    [[nodiscard]] Token onChange(std::function<void()> handler) override { return m_changes.add(std::move(handler)); }

protected:
    void tellChange() { m_changes.tell(); }

private:
    [[nodiscard]] std::vector<QRect> workAreas() const; ///< in device pixels
    [[nodiscard]] std::optional<QPoint> middleOfFocusedWindow() const;

    ScreenChanges m_changes;
    mutable XcbClient m_client;       // asking reads from it
    mutable PointerReading m_pointer; ///< the last one: what holds while the server does not answer
};

} // namespace tavrine
