#pragma once

#include "adapters/x11/TestOwner.h"
#include "ports/DragPasteboard.h"
#include "support/TestKeyboard.h"
#include "support/Wait.h"

namespace tavrine::testing {

/// Waits until a watch of drags, which connects on a thread of its own, sees them: another program drags until it has
/// been seen. True once that drag is over for the watch.
[[nodiscard]] inline bool seesDrags(const DragPasteboard &pasteboard) {
    TestKeyboard hand;
    TestOwner owner("XdndSelection");
    hand.movePointer(5, 5);
    const int before = pasteboard.changeCount();
    return waitUntil([&] {
               hand.press(1);
               owner.own({{"text/plain", {.bytes = "rehearsal"}}});
               const bool isSeen =
                   waitUntil([&] { return pasteboard.changeCount() != before; }, std::chrono::milliseconds(200));
               hand.release(1);
               return isSeen;
           }) &&
           waitUntil([&] { return !pasteboard.isDragging(); });
}

} // namespace tavrine::testing
