#include "adapters/x11/X11Stacking.h"

#include "adapters/x11/X11WindowDescription.h"
#include "adapters/x11/XcbClient.h"

#include <QGuiApplication>
#include <QWindow>

#include <algorithm>
#include <span>
#include <vector>

namespace tavrine {
namespace {

xcb_window_t frameOf(XcbClient &client, xcb_window_t window) {
    while (const auto tree = client.reply<xcb_query_tree_reply_t>(xcb_query_tree(client.connection(), window))) {
        if (tree->parent == tree->root)
            return window;
        window = tree->parent;
        if (window == XCB_WINDOW_NONE)
            break;
    }
    return XCB_WINDOW_NONE;
}

} // namespace

bool isFloating(const QWindow &window) {
    return window.flags().testFlag(Qt::WindowStaysOnTopHint);
}

X11Stacking::X11Stacking() = default;

X11Stacking::~X11Stacking() = default;

XcbClient &X11Stacking::client() {
    if (!m_client || !m_client->isConnected())
        m_client = std::make_unique<XcbClient>([](const xcb_generic_event_t &) {});
    return *m_client;
}

xcb_window_t X11Stacking::frameOf(const QWindow &window) {
    return tavrine::frameOf(client(), static_cast<xcb_window_t>(window.winId()));
}

xcb_window_t X11Stacking::lowestFrameAbove(const QWindow &window, const QRectF &area) {
    QWindowList others = QGuiApplication::topLevelWindows();
    others.removeIf([&](const QWindow *other) {
        return other == &window || !other->isVisible() || !isFloating(*other) ||
               !area.intersects(QRectF(other->geometry()));
    });
    if (others.isEmpty())
        return XCB_WINDOW_NONE;
    XcbClient &server = client();
    static_cast<void>(server.takeIsLate());
    std::vector<xcb_window_t> frames;
    for (const QWindow *other : std::as_const(others)) {
        frames.push_back(tavrine::frameOf(server, static_cast<xcb_window_t>(other->winId())));
        if (server.takeIsLate())
            return XCB_WINDOW_NONE;
    }
    const auto root = server.reply<xcb_query_tree_reply_t>(xcb_query_tree(server.connection(), server.root()));
    if (!root)
        return XCB_WINDOW_NONE;
    const std::span<const xcb_window_t> all(xcb_query_tree_children(root.get()),
                                            static_cast<size_t>(xcb_query_tree_children_length(root.get())));
    const auto own = std::find(all.begin(), all.end(), static_cast<xcb_window_t>(window.winId()));
    const auto above =
        std::find_if(own, all.end(), [&](xcb_window_t each) { return std::ranges::count(frames, each) > 0; });
    return above == all.end() ? xcb_window_t{XCB_WINDOW_NONE} : *above;
}

void stackBelow(const QWindow &window, xcb_window_t frame) {
    auto *connection = qtConnection();
    if (!connection || frame == XCB_WINDOW_NONE)
        return;
    const quint32 values[] = {frame, XCB_STACK_MODE_BELOW};
    xcb_configure_window(connection, static_cast<xcb_window_t>(window.winId()),
                         XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE, values);
    xcb_flush(connection);
}

} // namespace tavrine
