#include "adapters/wayland/KeyboardsOnScreen.h"

#include "adapters/wayland/Bars.h"
#include "adapters/wayland/LayerShell.h"

#include <QMargins>
#include <QRegion>

namespace tavrine {
namespace {

int moreThanABar(int taken) {
    return taken > highestBar ? taken : 0;
}

} // namespace

KeyboardsOnScreen::KeyboardsOnScreen(LayerShell &shell, Screens &screens)
    : m_shell(shell), m_screens(screens), m_changes(screens.onChange([this] { tell(); })) {
    tell();
}

KeyboardsOnScreen::~KeyboardsOnScreen() {
    m_shell.setTaken(this, {});
}

void KeyboardsOnScreen::tell() {
    QRegion taken;
    const QList<Screen> screens = m_screens.screens();
    for (const Screen &screen : screens) {
        const QRect whole = m_screens.toolkitRect(screen.frame).toRect();
        const QRect free = m_screens.toolkitRect(screen.visibleFrame).toRect();
        const QMargins keyboards(moreThanABar(free.left() - whole.left()), moreThanABar(free.top() - whole.top()),
                                 moreThanABar(whole.right() - free.right()),
                                 moreThanABar(whole.bottom() - free.bottom()));
        taken += QRegion(whole) - whole.marginsRemoved(keyboards);
    }
    m_shell.setTaken(this, taken);
}

} // namespace tavrine
