#pragma once

#include "base/Preference.h"

#include <QColor>

#include <array>

namespace tavrine {

/// Which figures the tray item shows.
enum class SpeedDisplayMode { both, downloadOnly, uploadOnly };

inline constexpr std::array speedDisplayModeTexts{
    StoredText{SpeedDisplayMode::both, "Both"},
    StoredText{SpeedDisplayMode::downloadOnly, "Download Only"},
    StoredText{SpeedDisplayMode::uploadOnly, "Upload Only"},
};

/// How the figures look.
enum class SpeedTheme { glassEffect, white, black };

inline constexpr std::array speedThemeTexts{
    StoredText{SpeedTheme::glassEffect, "Glass Effect"},
    StoredText{SpeedTheme::white, "White BG / Black Text"},
    StoredText{SpeedTheme::black, "Black BG / White Text"},
};

/// A level of grey between black, 0, and white, 1.
[[nodiscard]] constexpr QColor white(double level) {
    const int byte = static_cast<int>(level * 255 + 0.5);
    return {byte, byte, byte};
}

/// What is fixed about a theme. A colour that is not valid is the tray's own for text, or no fill.
struct SpeedThemeTraits {
    SpeedTheme theme;
    const char *pickerLabel;
    QColor text;
    QColor background;
    QColor arrows;
};

inline constexpr std::array<SpeedThemeTraits, 3> speedThemes{{
    {SpeedTheme::glassEffect, "Glass Effect", {}, {}, white(0.72)},
    {SpeedTheme::white, "Light", white(0.1), white(0.93), white(1.0 / 3)}, // dark gray
    {SpeedTheme::black, "Dark", white(0.92), white(0.12), white(0.72)},
}};

[[nodiscard]] constexpr const SpeedThemeTraits &traitsOf(SpeedTheme theme) {
    return speedThemes[static_cast<std::size_t>(theme)];
}

namespace preference {

/// Whether the speed meter takes the tray icon's place.
inline constexpr Preference<bool> showInternetSpeed{"showInternetSpeed", false};
inline constexpr Preference<SpeedDisplayMode> speedDisplayMode{"speedDisplayMode", SpeedDisplayMode::downloadOnly,
                                                               speedDisplayModeTexts};
inline constexpr Preference<SpeedTheme> speedTheme{"speedTheme", SpeedTheme::glassEffect, speedThemeTexts};

} // namespace preference

} // namespace tavrine
