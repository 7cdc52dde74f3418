#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavrine {

/// What the desktop says about the size of things on its monitors; pictures are taken in device pixels whatever it is.
struct ScaleWishes {
    std::optional<double> dotsPerInch; ///< Xft.dpi of the X resources
    std::string scaleFactor;           ///< QT_SCALE_FACTOR
    std::string screenScaleFactors;    ///< QT_SCREEN_SCALE_FACTORS: "2;1.5" in order, or "eDP-1=2;HDMI-1=1"
};

/// The wish `Xft.dpi` in the X resources, as they stand on the root window. None when it is absent or no number.
[[nodiscard]] std::optional<double> dotsPerInchOf(std::string_view resources);

/// How large lines and letters are on a monitor: 1 is 96 dots an inch. What is told for the monitor by name or place
/// goes before the dots per inch, a factor for all goes on top. Kept within 1 and 4; what is no number counts as
/// unsaid.
[[nodiscard]] double monitorScale(const ScaleWishes &wishes, std::string_view monitorName, int monitorIndex);

} // namespace tavrine
