#pragma once

#include "adapters/frozen/FrozenScreen.h"

#include <functional>
#include <memory>
#include <string>

namespace tavrine {

/// The frozen screen of the desktop that this process runs in: its Wayland compositor's where that can be asked, else
/// the X server's, with the picture from a file where there is one (see `PictureFile`). Null when it cannot be read.
[[nodiscard]] std::unique_ptr<FrozenScreen> openFrozenScreen(const std::string &picture = {});

/// What a person does over a frozen screen, from the moment it is shown until one of its users has enough.
class OverlayLoop {
public:
    struct Handlers {
        std::function<void(const OverlayEvent &event)> handle; ///< never `uncovered` and never `ended`
        std::function<bool()> isFinished;
        std::function<void()> settle; ///< several events were handled; to paint
    };

    /// `stopDescriptor` becomes readable when the process is asked to end.
    OverlayLoop(FrozenScreen &screen, int stopDescriptor) : m_screen(screen), m_stopDescriptor(stopDescriptor) {}

    /// False when it came to its end otherwise: the process is to end, the screen has changed, or another program keeps
    /// the pointer.
    [[nodiscard]] bool run(const Handlers &handlers);

private:
    enum class Step { nothing, handled, ended };
    [[nodiscard]] Step takeOne(const Handlers &handlers);

    FrozenScreen &m_screen;
    int m_stopDescriptor;
};

/// True when the process is asked to end.
[[nodiscard]] bool isStopped(int stopDescriptor);

} // namespace tavrine
