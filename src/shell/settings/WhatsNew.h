#pragma once

#include <array>

namespace tavrine {

/// The release notes that the first page of the settings shows: the newest version's, what is new before what is
/// better.
struct ReleaseNote {
    const char *tag;
    const char *text;
};

inline constexpr std::array whatsNew{
    ReleaseNote{"NEW", "A settings window, and Quick Actions in the tray menu"},
    ReleaseNote{"NEW", "Keep Awake, Clean Mode, network speed and Lo-Fi"},
    ReleaseNote{"NEW", "QR codes from anywhere on the screen"},
    ReleaseNote{"IMPROVED", "Long texts in the clipboard history cost no memory"},
    ReleaseNote{"IMPROVED", "Captures keep the scale of their screen"},
};

} // namespace tavrine
