#pragma once

#include "adapters/linux/ScreenChanges.h"
#include "adapters/linux/ScreenPlane.h"
#include "adapters/wayland/OutputTable.h"
#include "adapters/wayland/PointerTrace.h"
#include "adapters/wayland/ScreenQuestions.h"
#include "ports/Screens.h"

#include <QElapsedTimer>

#include <optional>
#include <utility>

class QScreen;

namespace tavrine {

/// The screens as the toolkit has them, on whose plane the windows are placed; their pixels and what panels of the
/// desktop leave of them from the compositor. Lives on the main thread.
///
///  1. A scale is that of the screen's own pixels, also where it lies between whole ones and the toolkit draws at the
///     next.
///  2. Of what panels leave of a screen the compositor tells the size and not the place. What they take of its height
///     is taken to be at the top, as bars are, where it is no more than a bar; else at the bottom.
///  3. The pointer is known while it is over a window of this program. Elsewhere it is where it was seen last, and what
///     is pressed is not known. With more than one screen it is asked for, so that a panel opens on the right one.
class WaylandScreens final : public Screens {
public:
    /// With part in that connection; null for one of its own.
    explicit WaylandScreens(std::shared_ptr<WaylandReader> reader = nullptr);

    [[nodiscard]] QList<Screen> screens() const override;
    [[nodiscard]] std::optional<Screen> mainScreen() const override;
    [[nodiscard]] QRectF toolkitRect(const QRectF &rect) const override { return flippedRect(rect); }
    [[nodiscard]] PointerReading pointer() const override;
    [[nodiscard]] std::unique_ptr<PointerWatch> watchPointer(Time &time, Seconds interval,
                                                             std::function<void()> handler) override;
    [[nodiscard]] Token onChange(std::function<void()> handler) override { return m_changes.add(std::move(handler)); }
    /// The toolkit's points have another size, of which it tells nobody.
    void tellChange() { m_changes.tell(); }

private:
    [[nodiscard]] Screen describe(const QScreen &screen) const;

    ScreenChanges m_changes;
    mutable ScreenQuestions m_questions;
    mutable PointerTrace m_trace; // asking is a look as well
    mutable QElapsedTimer m_sincePointer;
    mutable QElapsedTimer m_sinceOutput;
    mutable QString m_output; ///< the one with the keyboard, when it was last asked for
    OutputTable m_table;
};

} // namespace tavrine
