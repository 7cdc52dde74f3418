#pragma once

#include "adapters/gnome/GnomeShell.h"
#include "adapters/x11/X11EventPoster.h"

namespace tavrine {

/// Types the paste chord through the extension, into programs of Wayland and of X alike; without it as the X server
/// can, whose programs alone hear it. Lives on the main thread.
///
/// A key that the person holds cannot be let go here: the shell waits with the chord until no other modifier is held, a
/// second at most.
class GnomeEventPoster final : public EventPoster {
public:
    /// `text` gives the text that is being pasted.
    GnomeEventPoster(GnomeShell &shell, const std::function<QString()> &text);

    void postKeyboardEvent(int keyCode, bool isKeyDown, quint32 flags) override;
    [[nodiscard]] bool isHeldBack() const override { return m_isOnX && m_onX.isHeldBack(); }
    [[nodiscard]] QString failure() const override { return m_isOnX ? m_onX.failure() : QString(); }

private:
    GnomeShell &m_shell;
    X11EventPoster m_onX;
    std::function<QString()> m_text;
    bool m_isOnX = false; ///< the last key-down was left to X
};

} // namespace tavrine
