#pragma once

#include <QLatin1String>
#include <QString>

#include <algorithm>
#include <array>

namespace tavrine {

/// What a start of the program finds.
enum class Instance {
    first,         ///< it is the only one: go on
    handedOver,    ///< another one runs and has been told; end with status 0
    otherIsSilent, ///< another one runs and does not answer; end with status 1. A line on standard error has told it
};

/// What a start of the program asks of the one that runs. The same words, behind two dashes, are what the program can
/// be started with, and the desktop file names them.
namespace startAction {
inline constexpr QLatin1String clipboard("clipboard"); ///< as the hot key
inline constexpr QLatin1String emoji("emoji");         ///< as the hot key
inline constexpr QLatin1String capture("capture");     ///< as the hot key
inline constexpr QLatin1String card("card");           ///< gives the card of a capture the keyboard
inline constexpr QLatin1String record("record");       ///< as the hot key
inline constexpr QLatin1String qrScan("qr-scan");
inline constexpr QLatin1String color("color");
inline constexpr QLatin1String settings("settings");
inline constexpr QLatin1String shelf("shelf"); ///< opens the shelf for the keyboard
/// One tap of Alt alone, told by a desktop that keeps the keyboard to itself. Two of them in time are a double tap.
inline constexpr QLatin1String altTap("alt-tap");

inline constexpr std::array all{clipboard, emoji, capture, card, record, qrScan, color, settings, shelf, altTap};

[[nodiscard]] inline bool isKnown(const QString &word) {
    return std::ranges::any_of(all, [&](QLatin1String each) { return word == each; });
}
} // namespace startAction

/// Why the program was started.
struct StartRequest {
    QString action;       ///< a word out of `startAction`; empty for no more than to run, or to come forward
    bool isByBus = false; ///< the session bus started it for a call, and hands that call on itself
};

} // namespace tavrine
