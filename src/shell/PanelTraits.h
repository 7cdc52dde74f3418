#pragma once

#include "base/Date.h"
#include "base/Preference.h"

#include <QLatin1String>

namespace tavrine {

/// What tells one floating panel from the others. Sizes and offsets are in points.
struct PanelTraits {
    QLatin1String title; ///< the panels' key handling knows its panel by this text
    double width;
    double height;
    double offset; ///< above the centre, for the panels that are centred
    bool isMovableByBackground;
    Seconds fadeIn;
    QLatin1String openedNotification;
};

inline constexpr PanelTraits classicPanelTraits{QLatin1String("Classic Clipboard"),  320, 450, 0, true, Seconds{0.15},
                                                QLatin1String("floatingPanelOpened")};
inline constexpr PanelTraits searchPanelTraits{
    QLatin1String("Clipboard Search"), 680, 500, 60, false, Seconds{0.1}, QLatin1String("clipboardSearchPanelOpened")};
inline constexpr PanelTraits emojiPanelTraits{QLatin1String("Emoji Picker"),          600, 460, 70, false, Seconds{0.1},
                                              QLatin1String("emojiPickerPanelOpened")};

/// The frame of the classic panel as it was last left: x, y, width and height.
namespace preference {
inline constexpr Preference<QString> classicFrame{"TavrineHistoryFrame"};
}

inline constexpr double classicMargin = 20; ///< from the edges of the screen, where no frame was saved
inline constexpr Seconds classicDismissal{0.18};
inline constexpr double dismissedPart = 0.6; ///< of width and height, at the end of the dismissal
inline constexpr Seconds emojiDismissal{0.08};

} // namespace tavrine
