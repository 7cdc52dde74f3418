#pragma once

#include "adapters/stream/StreamPlan.h"

#include <optional>

class QScreen;

namespace tavrine {

// Displays as the toolkit tells them, with the numbers that `Screens` gives: for desktops that tell programs of no
// windows. Main thread.

[[nodiscard]] ShareableContent toolkitDisplays();
/// None when it is gone.
[[nodiscard]] const QScreen *toolkitDisplay(quint32 number);
/// With an area in the compositor's points: the toolkit's are larger where the person wants larger text.
[[nodiscard]] ScreenStreamConfiguration inCompositorsPoints(quint32 display, ScreenStreamConfiguration configuration);
/// Of a stream of a compositor's whole output, by its name. Nothing when it is gone.
[[nodiscard]] std::optional<StreamPlan> planOfOutput(quint32 number, const ScreenStreamConfiguration &configuration);

} // namespace tavrine
