#pragma once

#include "ports/Screens.h"

namespace tavrine {

class LayerShell;

/// Keyboards on the screen take the mouse where they are, as this program's own panels do: who types in a panel by one
/// would close it with the first press. A compositor tells only how much of a screen is free, so what keeps more of an
/// edge to itself than a bar does is taken for one. Lives on the main thread, no longer than both.
class KeyboardsOnScreen {
public:
    KeyboardsOnScreen(LayerShell &shell, Screens &screens);
    ~KeyboardsOnScreen();
    KeyboardsOnScreen(const KeyboardsOnScreen &) = delete;
    KeyboardsOnScreen &operator=(const KeyboardsOnScreen &) = delete;

private:
    void tell();

    LayerShell &m_shell;
    Screens &m_screens;
    Screens::Token m_changes;
};

} // namespace tavrine
