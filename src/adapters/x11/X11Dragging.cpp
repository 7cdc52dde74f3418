#include "adapters/x11/X11Dragging.h"

#include "adapters/pasteboard/DraggedData.h"
#include "adapters/pasteboard/PasteboardImage.h"
#include "adapters/x11/ReturningPictureView.h"
#include "adapters/x11/X11WindowDescription.h"
#include "adapters/x11/XcbLink.h"

#include <QCoreApplication>
#include <QCursor>
#include <QDrag>
#include <QGuiApplication>
#include <QMimeData>
#include <QPointer>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <cstring>

namespace tavrine {
namespace {

/// By the server: the toolkit has not heard of a button that was released while nobody of this program had the pointer.
bool isButtonDown() {
    constexpr XcbLink::Wait longest{200};
    constexpr int buttons = XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3;
    XcbLink link(longest);
    if (!link.isOpen())
        return false;
    const auto pointer = link.reply<xcb_query_pointer_reply_t>(xcb_query_pointer(link.connection(), link.root()));
    return pointer && (pointer->mask & buttons) != 0;
}

} // namespace

X11Dragging::X11Dragging(const SelectionLimits &limits, Pointer pointer) : m_limits(limits), m_pointer(pointer) {
    pasteboardImage::allowPixels(limits.imagePixels);
    qApp->installNativeEventFilter(this);
}

X11Dragging::~X11Dragging() {
    qApp->removeNativeEventFilter(this);
}

bool X11Dragging::nativeEventFilter(const QByteArray &type, void *message, qintptr *) {
    if (type != "xcb_generic_event_t")
        return false;
    const auto &event = *static_cast<const xcb_generic_event_t *>(message);
    switch (eventType(event)) {
    case XCB_CLIENT_MESSAGE:
        takeMessage(eventAs<xcb_client_message_event_t>(event));
        break;
    case XCB_SELECTION_REQUEST:
        return answer(eventAs<xcb_selection_request_event_t>(event));
    case XCB_KEY_PRESS:
    case XCB_KEY_RELEASE:
        if (m_mask && !std::exchange(m_isReconsidering, true))
            QMetaObject::invokeMethod(this, &X11Dragging::reconsider, Qt::QueuedConnection);
        break;
    default:
        break;
    }
    return false;
}

void X11Dragging::takeMessage(const xcb_client_message_event_t &message) {
    const auto &words = message.data.data32;
    if (message.type == qtAtom("XdndEnter")) {
        m_drop = {};
        m_drop.source = words[0];
        m_drop.hasMoreTypes = (words[1] & 1) != 0;
        std::copy_if(words + 2, words + 5, std::back_inserter(m_drop.types), [](quint32 atom) { return atom != 0; });
    } else if (message.type == qtAtom("XdndDrop") && words[0] == m_drop.source) {
        m_drop.time = words[2];
    }
}

bool X11Dragging::answer(const xcb_selection_request_event_t &request) const {
    constexpr qsizetype largestPiece = qsizetype{256} * 1024; // more goes piecemeal, which is the toolkit's matter
    auto *connection = qtConnection();
    if (!m_dragged || request.property == XCB_ATOM_NONE || request.selection != qtAtom("XdndSelection"))
        return false;
    const auto forms = m_dragged->forms();
    const auto form =
        std::find_if(forms.begin(), forms.end(), [&](const char *each) { return qtAtom(each) == request.target; });
    const QByteArray bytes = form != forms.end() ? m_dragged->bytes(*form) : QByteArray();
    if (bytes.isEmpty() || bytes.size() > largestPiece)
        return false;
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, request.requestor, request.property, request.target, 8,
                        static_cast<quint32>(bytes.size()), bytes.constData());
    xcb_selection_notify_event_t notice{};
    notice.response_type = XCB_SELECTION_NOTIFY;
    notice.time = request.time;
    notice.requestor = request.requestor;
    notice.selection = request.selection;
    notice.target = request.target;
    notice.property = request.property;
    char event[32] = {}; // the protocol sends 32 bytes, and the structure is shorter
    std::memcpy(event, &notice, sizeof notice);
    xcb_send_event(connection, 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, event);
    xcb_flush(connection);
    return true;
}

Drop X11Dragging::currentDrop(const QMimeData &offered) const {
    Drop drop = m_drop;
    const auto formats = offered.formats();
    for (const QString &format : formats)
        drop.names.append(format.toLatin1());
    return drop;
}

void X11Dragging::readDrop(const QMimeData &offered, std::function<void(const DroppedContent &)> completion) {
    if (const auto *own = qobject_cast<const DraggedData *>(&offered))
        return completion(own->dropped());
    if (!offered.inherits("QInternalMimeData")) // the toolkit's own, for what comes from another program
        return completion(readDroppedForms(offered, {.imagePixels = m_limits.imagePixels}));
    m_drops.read(
        [drop = currentDrop(offered), limits = m_limits](int stop) { return DropReader(drop, limits, stop).read(); },
        std::move(completion));
}

void X11Dragging::holdKeyboard(QWidget &source) {
    auto *connection = qtConnection();
    if (!connection || !source.window()->windowHandle())
        return;
    // Another program may hold it. Then the drag goes on without its keys.
    const auto cookie = xcb_grab_keyboard(connection, 0, static_cast<xcb_window_t>(source.window()->winId()),
                                          XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    xcb_discard_reply(connection, cookie.sequence);
    xcb_flush(connection);
}

void X11Dragging::releaseKeyboard() {
    if (auto *connection = qtConnection()) {
        xcb_ungrab_keyboard(connection, XCB_CURRENT_TIME);
        xcb_flush(connection);
    }
}

/// A key went down or up, which may mean another operation. The toolkit keeps what a drag offers from its beginning to
/// its end, so the drag ends and another begins with the button still down.
void X11Dragging::reconsider() {
    m_isReconsidering = false;
    if (m_mask && m_mask() != m_offered) {
        m_isBegunAgain = true;
        QDrag::cancel();
    }
}

Qt::KeyboardModifiers X11Dragging::heldModifiers() const {
    return QGuiApplication::queryKeyboardModifiers();
}

quint32 X11Dragging::beginDragging(QWidget &source, const DraggedItem &item, std::function<quint32()> mask) {
    if (m_mask)
        return dragOperation::none;
    m_mask = std::move(mask);
    const QPoint begin = QCursor::pos() - item.hotSpot;
    holdKeyboard(source);
    Qt::DropAction done = Qt::IgnoreAction;
    do {
        m_isBegunAgain = false;
        m_offered = m_mask();
        const Qt::DropAction offered = m_offered == dragOperation::move ? Qt::MoveAction : Qt::CopyAction;
        // The view may go meanwhile, so the drag does not belong to it.
        auto *drag = new QDrag(QCoreApplication::instance());
        m_dragged = new DraggedData(item);
        drag->setMimeData(m_dragged);
        drag->setPixmap(item.draggingImage);
        drag->setHotSpot(item.hotSpot);
        done = drag->exec(offered, offered);
    } while (m_isBegunAgain && done == Qt::IgnoreAction && isButtonDown());
    releaseKeyboard();
    m_mask = nullptr;
    if (done == Qt::IgnoreAction && item.returnTime.count() > 0 && m_pointer == Pointer::known)
        ReturningPictureView::fly(item.draggingImage, QCursor::pos() - item.hotSpot, begin, item.returnTime);
    return operationOf(done);
}

} // namespace tavrine
