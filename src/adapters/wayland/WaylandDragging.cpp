#include "adapters/wayland/WaylandDragging.h"

#include "adapters/pasteboard/DraggedData.h"
#include "adapters/pasteboard/DroppedForms.h"
#include "adapters/pasteboard/PasteboardImage.h"
#include "adapters/wayland/LayerShell.h"
#include "adapters/wayland/OfferedDrop.h"

#include <QCoreApplication>
#include <QDrag>
#include <QGuiApplication>
#include <QWidget>

namespace tavrine {

WaylandDragging::WaylandDragging(LayerShell &shell, std::shared_ptr<WaylandConnection> connection,
                                 const SelectionLimits &limits)
    : m_shell(shell), m_limits(limits), m_offers(shell), m_questions(std::move(connection)) {
    pasteboardImage::allowPixels(limits.imagePixels);
}

void WaylandDragging::readDrop(const QMimeData &offered, std::function<void(const DroppedContent &)> completion) {
    if (const auto *own = qobject_cast<const DraggedData *>(&offered))
        return completion(own->dropped());
    const auto offer = m_offers.current();
    if (!offer) // within this program
        return completion(readDroppedForms(offered, {.imagePixels = m_limits.imagePixels}));
    m_drops.read(
        [offer, limits = m_limits, &shell = m_shell](int stop) {
            return OfferedDrop(
                       offer, limits, [&shell] { shell.flush(); }, stop)
                .read();
        },
        std::move(completion));
}

/// The toolkit hears of keys while one of its windows has the keyboard, and of their state before that never.
Qt::KeyboardModifiers WaylandDragging::heldModifiers() const {
    return QGuiApplication::focusWindow() ? QGuiApplication::queryKeyboardModifiers() : m_questions.modifiers();
}

quint32 WaylandDragging::beginDragging(QWidget & /*source*/, const DraggedItem &item, std::function<quint32()> mask) {
    if (std::exchange(m_isDragging, true))
        return dragOperation::none;
    const Qt::DropAction offered = mask() == dragOperation::move ? Qt::MoveAction : Qt::CopyAction;
    // The view may go meanwhile, so the drag does not belong to it.
    auto *drag = new QDrag(QCoreApplication::instance());
    drag->setMimeData(new DraggedData(item));
    drag->setPixmap(item.draggingImage);
    drag->setHotSpot(item.hotSpot);
    m_shell.setDragging(true);
    const Qt::DropAction done = drag->exec(offered, offered);
    m_shell.setDragging(false);
    m_isDragging = false;
    return operationOf(done);
}

} // namespace tavrine
