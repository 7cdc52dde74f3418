#pragma once

#include "adapters/gnome/GnomeShell.h"
#include "adapters/x11/X11ColorSampler.h"

namespace tavrine {

/// Samplers over the X server's magnifier and a picture of the screens that the extension takes, since the server has
/// none of Wayland's programs. Without the extension every pick ends without a colour. Lives on the main thread.
class GnomeColorSamplers final : public QObject, public ColorSamplers {
public:
    explicit GnomeColorSamplers(GnomeShell &shell);

    [[nodiscard]] std::shared_ptr<ColorSampler> makeSampler() override;

private:
    using Selection = std::function<void(std::optional<QColor>)>;
    class Sampler;

    void show(const Selection &selection);
    void stopWatching();

    GnomeShell &m_shell;
    X11ColorSamplers m_onX;
    quint32 m_escape = 0; ///< the shell's number of the key's grab: over a program of Wayland it is nobody else's
    bool m_isEscapeAsked = false;
    int m_shown = 0;
};

} // namespace tavrine
