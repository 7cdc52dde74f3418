#pragma once

#include "adapters/pasteboard/Drops.h"
#include "adapters/pasteboard/SelectionLimits.h"
#include "adapters/wayland/DragOffers.h"
#include "adapters/wayland/ScreenQuestions.h"
#include "ports/Dragging.h"

namespace tavrine {

class LayerShell;
class WaylandConnection;

/// Drags by the core protocol. Lives on the main thread, as long as the process.
///
/// Qt's own way to a drop's data waits for a program that hangs, so a drop is read on a thread of its own, from an
/// offer of our own beside Qt's. Within the event it is waited for: once the event is over the dragging program hears
/// that all is done, and gives nothing more.
///
/// A drag out of this program offers one operation, by what `mask` says at its beginning: file managers that are
/// offered both move a file within its file system, and a drag cannot begin again with the button down as on X11.
class WaylandDragging final : public Dragging {
public:
    /// What is held is asked for over `connection`; null for one of its own.
    explicit WaylandDragging(LayerShell &shell, std::shared_ptr<WaylandConnection> connection = nullptr,
                             const SelectionLimits &limits = {});

    void readDrop(const QMimeData &offered, std::function<void(const DroppedContent &)> completion) override;
    [[nodiscard]] Qt::KeyboardModifiers heldModifiers() const override;
    [[nodiscard]] quint32 beginDragging(QWidget &source, const DraggedItem &item,
                                        std::function<quint32()> mask) override;

private:
    LayerShell &m_shell;
    const SelectionLimits m_limits;
    DragOffers m_offers;
    Drops m_drops;
    mutable ScreenQuestions m_questions;
    bool m_isDragging = false;
};

} // namespace tavrine
