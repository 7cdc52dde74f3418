#include "adapters/x11/X11WindowDescription.h"

#include "adapters/x11/XcbClient.h"

#include <QGuiApplication>
#include <QHash>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <thread>
#include <vector>

#include <xcb/shape.h>
#include <xcb/xcbext.h>

namespace tavrine {
namespace {

constexpr quint32 allDesktops = 0xFFFFFFFF;
constexpr auto describedMark = "isDescribedToDesktop";

void setAtoms(xcb_connection_t *connection, xcb_window_t window, const char *property,
              const std::vector<const char *> &names) {
    std::vector<xcb_atom_t> atoms;
    for (const char *name : names)
        atoms.push_back(qtAtom(name));
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, qtAtom(property), XCB_ATOM_ATOM, 32,
                        static_cast<quint32>(atoms.size()), atoms.data());
}

void sendToRoot(xcb_connection_t *connection, xcb_window_t window, const char *message,
                std::initializer_list<quint32> data) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = qtAtom(message);
    std::copy(data.begin(), data.end(), event.data.data32);
    xcb_send_event(connection, 0, xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char *>(&event));
}

void setCardinals(xcb_connection_t *connection, xcb_window_t window, const char *property,
                  std::initializer_list<quint32> values) {
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, qtAtom(property), XCB_ATOM_CARDINAL, 32,
                        static_cast<quint32>(values.size()), std::data(values));
}

/// The reply on Qt's connection. None when the server did not give it in time: another program may hold it for itself.
/// Qt's own reader takes what arrives there, so that a wait for the descriptor could miss it.
template <class Reply>
XcbReply<Reply> replyInTime(xcb_connection_t *connection, unsigned int sequence) {
    constexpr auto betweenLooks = std::chrono::microseconds(200);
    const auto end = std::chrono::steady_clock::now() + XcbClient::longestWait;
    xcb_flush(connection);
    void *answer = nullptr;
    xcb_generic_error_t *error = nullptr;
    while (!xcb_poll_for_reply(connection, sequence, &answer, &error)) {
        if (std::chrono::steady_clock::now() >= end || xcb_connection_has_error(connection)) {
            xcb_discard_reply(connection, sequence);
            return nullptr;
        }
        std::this_thread::sleep_for(betweenLooks);
    }
    std::free(error);
    return XcbReply<Reply>(static_cast<Reply *>(answer));
}

std::vector<const char *> statesOf(const QWindow &window, const PanelDescription &description) {
    std::vector<const char *> states;
    if (!description.isInTaskBar)
        states = {"_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER"};
    // A managed window as large as its screen is otherwise moved below the desktop's own bars.
    if (description.canBecomeKey && description.level >= windowLevel::screenSaver && window.screen() &&
        window.geometry() == window.screen()->geometry())
        states.push_back("_NET_WM_STATE_FULLSCREEN");
    if (description.level > windowLevel::normal)
        states.push_back("_NET_WM_STATE_ABOVE");
    if (description.collectionBehavior & collectionBehavior::canJoinAllSpaces)
        states.push_back("_NET_WM_STATE_STICKY");
    return states;
}

/// In device pixels, as X counts them.
QMargins devicePixels(const QWindow &window, const QMargins &room) {
    const double scale = window.devicePixelRatio();
    const auto pixels = [scale](int points) { return static_cast<int>(std::lround(points * scale)); };
    return {pixels(room.left()), pixels(room.top()), pixels(room.right()), pixels(room.bottom())};
}

} // namespace

xcb_connection_t *qtConnection() {
    auto *x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    return x11 ? x11->connection() : nullptr;
}

xcb_atom_t qtAtom(const char *name) {
    auto *connection = qtConnection();
    static QHash<QByteArray, xcb_atom_t> known; // Qt has one connection for the life of the process
    if (const auto found = known.constFind(name); found != known.cend())
        return *found;
    const auto answer = replyInTime<xcb_intern_atom_reply_t>(
        connection, xcb_intern_atom(connection, 0, static_cast<quint16>(qstrlen(name)), name).sequence);
    return answer ? known[name] = answer->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

void flushQtConnection() {
    if (auto *connection = qtConnection())
        static_cast<void>(
            replyInTime<xcb_get_input_focus_reply_t>(connection, xcb_get_input_focus(connection).sequence));
}

void repeatToWindowManager(QWindow &window, const PanelDescription &description) {
    auto *connection = qtConnection();
    if (!connection || !description.canBecomeKey)
        return;
    const auto id = static_cast<xcb_window_t>(window.winId());
    constexpr quint32 add = 1;
    constexpr quint32 ordinaryProgram = 1;
    const auto addStates = [&](const char *first, const char *second) {
        sendToRoot(connection, id, "_NET_WM_STATE", {add, qtAtom(first), second ? qtAtom(second) : 0, ordinaryProgram});
    };
    if (!description.isInTaskBar)
        addStates("_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER");
    if (description.level > windowLevel::normal)
        addStates("_NET_WM_STATE_ABOVE", nullptr);
    if (description.collectionBehavior & collectionBehavior::canJoinAllSpaces)
        sendToRoot(connection, id, "_NET_WM_DESKTOP", {allDesktops, ordinaryProgram});
}

void describeToDesktop(QWindow &window, const PanelDescription &description, const QMargins &room) {
    auto *connection = qtConnection();
    if (!connection)
        return;
    window.setProperty(describedMark, true);
    const auto id = static_cast<xcb_window_t>(window.winId());
    // A dialogue gets the keyboard from every window manager, and floats where windows are tiled.
    const bool isOverlay = description.level >= windowLevel::mainMenu;
    setAtoms(connection, id, "_NET_WM_WINDOW_TYPE",
             {description.canBecomeKey ? "_NET_WM_WINDOW_TYPE_DIALOG"
              : isOverlay              ? "_NET_WM_WINDOW_TYPE_NOTIFICATION"
                                       : "_NET_WM_WINDOW_TYPE_UTILITY"});
    setAtoms(connection, id, "_NET_WM_STATE", statesOf(window, description));
    if (description.collectionBehavior & collectionBehavior::canJoinAllSpaces)
        setCardinals(connection, id, "_NET_WM_DESKTOP", {allDesktops});
    setCardinals(connection, id, "_COMPTON_SHADOW", {0}); // what shadow there is it draws itself
    const QMargins pixels = devicePixels(window, room);
    if (room.isNull())
        xcb_delete_property(connection, id, qtAtom("_GTK_FRAME_EXTENTS"));
    else
        setCardinals(connection, id, "_GTK_FRAME_EXTENTS",
                     {static_cast<quint32>(pixels.left()), static_cast<quint32>(pixels.right()),
                      static_cast<quint32>(pixels.top()), static_cast<quint32>(pixels.bottom())});
}

bool isDescribed(const QWindow &window) {
    return window.property(describedMark).toBool();
}

void shapeInput(QWindow &window, bool ignoresMouseEvents, const QMargins &room) {
    auto *connection = qtConnection();
    if (!connection)
        return;
    const auto id = static_cast<xcb_window_t>(window.winId());
    if (room.isNull() && !ignoresMouseEvents) {
        xcb_shape_mask(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, id, 0, 0, XCB_PIXMAP_NONE);
        return;
    }
    const double scale = window.devicePixelRatio();
    const QMargins pixels = devicePixels(window, room);
    const QRect all(0, 0, qRound(window.width() * scale), qRound(window.height() * scale));
    const QRect panel = all.marginsRemoved(pixels);
    const xcb_rectangle_t area{static_cast<qint16>(panel.x()), static_cast<qint16>(panel.y()),
                               static_cast<quint16>(std::max(0, panel.width())),
                               static_cast<quint16>(std::max(0, panel.height()))};
    xcb_shape_rectangles(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED, id, 0, 0,
                         ignoresMouseEvents ? 0 : 1, &area);
}

void setUserTime(QWindow &window, quint32 time) {
    if (auto *connection = qtConnection(); connection && time != XCB_CURRENT_TIME)
        setCardinals(connection, static_cast<xcb_window_t>(window.winId()), "_NET_WM_USER_TIME", {time});
}

} // namespace tavrine
