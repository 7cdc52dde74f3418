#pragma once

#include <QtGlobal>

namespace tavrine {

/// A number for a window, where nothing on the desktop has one. Main thread.
[[nodiscard]] inline qint64 nextWindowNumber() {
    static qint64 last = 0;
    return ++last;
}

} // namespace tavrine
