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
    Seconds dismissal; ///< none: it goes at once
    double shrinksTo;  ///< of width and height, at the end of the dismissal
    QLatin1String openedNotification;
};

inline constexpr PanelTraits classicPanelTraits{.title = QLatin1String("Classic Clipboard"),
                                                .width = 320,
                                                .height = 450,
                                                .offset = 0,
                                                .isMovableByBackground = true,
                                                .fadeIn = Seconds{0.15},
                                                .dismissal = Seconds{0.18},
                                                .shrinksTo = 0.6,
                                                .openedNotification = QLatin1String("floatingPanelOpened")};
inline constexpr PanelTraits searchPanelTraits{.title = QLatin1String("Clipboard Search"),
                                               .width = 680,
                                               .height = 500,
                                               .offset = 60,
                                               .isMovableByBackground = false,
                                               .fadeIn = Seconds{0.1},
                                               .dismissal = Seconds{0},
                                               .shrinksTo = 1,
                                               .openedNotification = QLatin1String("clipboardSearchPanelOpened")};
inline constexpr PanelTraits emojiPanelTraits{.title = QLatin1String("Emoji Picker"),
                                              .width = 600,
                                              .height = 460,
                                              .offset = 70,
                                              .isMovableByBackground = false,
                                              .fadeIn = Seconds{0.1},
                                              .dismissal = Seconds{0.08},
                                              .shrinksTo = 1,
                                              .openedNotification = QLatin1String("emojiPickerPanelOpened")};

/// The frame of the classic panel as it was last left: x, y, width and height.
namespace preference {
inline constexpr Preference<QString> classicFrame{"TavrineHistoryFrame"};
}

inline constexpr double classicMargin = 20; ///< from the edges of the screen, where no frame was saved

} // namespace tavrine
