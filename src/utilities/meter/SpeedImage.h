#pragma once

#include "ports/StatusItem.h"
#include "utilities/meter/SpeedPreferences.h"

#include <optional>

namespace tavrine {

/// What the speed meter's picture shows.
struct SpeedPicture {
    QString download; ///< as `formattedSpeed` gives it
    QString upload;
    SpeedDisplayMode mode = SpeedDisplayMode::downloadOnly;
    SpeedTheme theme = SpeedTheme::glassEffect;
    bool isAwake = false; ///< the machine is kept awake
    bool isConnected = true;
    std::optional<QColor> indicator = {}; ///< the fill that tells so, where the person wants one
};

/// The picture that stands in the tray in place of the icon: 70 by 22 points, 92 by 22 with no connection, whatever the
/// figures are. Text and fill without a colour of their own take the tray's.
///
/// It is laid out in points and drawn in device pixels: letters stand on whole ones at every scale. Text is in a
/// rounded face where the desktop has one of those that fit, else in the desktop's own; its line is as high as the
/// platform's, so that no font moves anything. The arrows are drawn, not written: many fonts lack them.
///
/// On a strip it is the same without the three points above and below all that is written, which would be scaled with
/// it.
///
/// A square of 22 points has no room for all that. There it shows, in the same colours, one figure over its arrow and
/// unit, or both figures with their units' first letters, the download above; with no connection the symbol alone.
[[nodiscard]] StatusImage speedImage(const SpeedPicture &picture);

} // namespace tavrine
