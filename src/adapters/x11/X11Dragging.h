#pragma once

#include "adapters/pasteboard/Drops.h"
#include "adapters/x11/DropReader.h"
#include "ports/Dragging.h"

#include <QAbstractNativeEventFilter>
#include <QByteArray>
#include <QObject>
#include <QPointer>

namespace tavrine {

class DraggedData;

/// Drags by the XDND protocol. Lives on the main thread, as long as the process.
///
/// Qt's own way to a drop's data waits 5 s for each form of a program that hangs, and takes a late answer for that to
/// the next question. So a drop is read on a thread and a connection of its own, which ask with the time of the drop's
/// event: by it a program knows which drag is meant. Within the event they are waited for, since programs take a drag
/// back once they hear that it has ended.
///
/// A drag out of this program offers one operation at a time, by what `mask` says: file managers that are offered both
/// move a file within its file system. While it goes on the keyboard is held, so that Escape ends it and a modifier
/// changes the operation, whoever has the keyboard. The operation that is told as done is the one that was agreed on
/// when the button was released; whether a file has left its place is to be looked at. Who asks for what is dragged
/// is answered here, whatever time it names: Qt answers nobody but who names the drop's own, and GTK 4 names that of
/// the entering, and browsers, which look into a drag before it is dropped, none.
class X11Dragging final : public QObject, public Dragging, private QAbstractNativeEventFilter {
    Q_OBJECT

public:
    /// Whether the X server knows where the pointer is while it is not over one of its windows.
    enum class Pointer { known, unknown };

    explicit X11Dragging(const SelectionLimits &limits = {}, Pointer pointer = Pointer::known);
    ~X11Dragging() override;

    void readDrop(const QMimeData &offered, std::function<void(const DroppedContent &)> completion) override;
    [[nodiscard]] Qt::KeyboardModifiers heldModifiers() const override;
    [[nodiscard]] quint32 beginDragging(QWidget &source, const DraggedItem &item,
                                        std::function<quint32()> mask) override;

private:
    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;
    void takeMessage(const xcb_client_message_event_t &message);
    [[nodiscard]] bool answer(const xcb_selection_request_event_t &request) const;
    [[nodiscard]] Drop currentDrop(const QMimeData &offered) const;
    void holdKeyboard(QWidget &source);
    void releaseKeyboard();
    void reconsider();

    const SelectionLimits m_limits;
    const Pointer m_pointer;
    Drop m_drop; ///< the present or the last
    Drops m_drops;

    std::function<quint32()> m_mask; ///< of the present drag out of this program
    quint32 m_offered = dragOperation::none;
    QPointer<DraggedData> m_dragged; ///< of the present or the last, until who took it is done
    bool m_isReconsidering = false;
    bool m_isBegunAgain = false;
};

} // namespace tavrine
