#pragma once

#include "ports/DragPasteboard.h"

namespace tavrine {

/// The drag pasteboard of an X server, which has none: what is known of the selection `XdndSelection` while a button is
/// down. Each `watch` has a thread and a connection of its own, which end with what it gave out.
class X11DragPasteboards final : public DragPasteboards {
public:
    [[nodiscard]] std::unique_ptr<DragPasteboard> watch() override;
};

} // namespace tavrine
