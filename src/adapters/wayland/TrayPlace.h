#pragma once

#include <QPoint>

namespace tavrine {

class Screens;

/// Where the tray item is that was just pressed, in the toolkit's plane. Main thread; a tenth of a second at most.
///
/// A bar tells places within itself, or none. But whoever has clicked has the pointer there, at an edge of a screen.
/// Where it is not, as after a press by the keyboard, the item is taken to be at the upper right, beside what bars
/// leave of the screen.
[[nodiscard]] QPoint trayPlace(const Screens &screens);

} // namespace tavrine
