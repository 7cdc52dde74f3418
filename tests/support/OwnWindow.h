#pragma once

#include "adapters/x11/X11ApplicationActivator.h"
#include "support/Wait.h"

#include <QWindow>

namespace tavrine::testing {

/// Waits until a window of the test that was shown has the keyboard. A window manager may leave a new window behind the
/// one that it takes for the person's, so it is asked as a task bar asks, which it obeys; again, where it did not know
/// the window yet.
[[nodiscard]] inline bool comesToTheFront(const QWindow &window) {
    X11ApplicationActivator activator;
    return waitUntil([&] {
        if (waitUntil([&] { return window.isActive(); }, std::chrono::milliseconds(500)))
            return true;
        activator.bringForward(static_cast<quint32>(window.winId()));
        return false;
    });
}

} // namespace tavrine::testing
