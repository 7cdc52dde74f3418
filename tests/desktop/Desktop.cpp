#include "desktop/Desktop.h"

#include <QHash>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include <xcb/res.h>
#include <xcb/shape.h>
#include <xcb/xcb.h>

namespace tavrine::testing {
namespace {

constexpr quint32 pager = 2;                 // whose requests are always obeyed
constexpr quint32 longestProperty = 1 << 16; // in words

template <class T>
std::unique_ptr<T, void (*)(void *)> owned(T *pointer) {
    return {pointer, &std::free};
}

/// Where a letter stands on an American keyboard; 0 for another sign.
int keycodeOf(char letter) {
    struct Row {
        const char *letters;
        int first;
    };
    for (const Row row :
         {Row{"1234567890-", 10}, Row{"qwertyuiop", 24}, Row{"asdfghjkl;", 38}, Row{"zxcvbnm", 52}, Row{" ", 65}})
        for (int i = 0; row.letters[i]; ++i)
            if (row.letters[i] == letter)
                return row.first + i;
    return 0;
}

} // namespace

Desktop::Desktop()
    : m_connection(xcb_connect(nullptr, nullptr)),
      m_root(xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root) {}

Desktop::~Desktop() {
    xcb_disconnect(m_connection);
}

QPoint Desktop::pointer() const {
    const auto answer = owned(xcb_query_pointer_reply(m_connection, xcb_query_pointer(m_connection, m_root), nullptr));
    return answer ? QPoint(answer->root_x, answer->root_y) : QPoint(-1, -1);
}

quint32 Desktop::atom(const char *name) const {
    static QHash<QByteArray, quint32> known; // all of them belong to one display
    if (const auto found = known.constFind(name); found != known.cend())
        return *found;
    const auto answer = owned(xcb_intern_atom_reply(
        m_connection, xcb_intern_atom(m_connection, 0, static_cast<quint16>(qstrlen(name)), name), nullptr));
    return known[name] = answer ? answer->atom : 0U;
}

QByteArray Desktop::property(quint32 window, const char *name) const {
    const auto answer = owned(xcb_get_property_reply(
        m_connection,
        xcb_get_property(m_connection, 0, window, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, longestProperty), nullptr));
    if (!answer)
        return {};
    return {static_cast<const char *>(xcb_get_property_value(answer.get())),
            xcb_get_property_value_length(answer.get())};
}

bool Desktop::isViewable(quint32 window) const {
    const auto answer =
        owned(xcb_get_window_attributes_reply(m_connection, xcb_get_window_attributes(m_connection, window), nullptr));
    return answer && answer->map_state == XCB_MAP_STATE_VIEWABLE;
}

// The windows of the programs stand right under the root, or one step below in the frame of a window manager.
void Desktop::visit(const std::function<void(quint32)> &each) const {
    const auto children = [this](quint32 window) {
        const auto tree = owned(xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, window), nullptr));
        std::vector<quint32> windows;
        if (tree)
            windows.assign(xcb_query_tree_children(tree.get()),
                           xcb_query_tree_children(tree.get()) + xcb_query_tree_children_length(tree.get()));
        return windows;
    };
    for (const quint32 top : children(m_root)) {
        if (!isViewable(top))
            continue;
        each(top);
        for (const quint32 framed : children(top))
            each(framed);
    }
}

QString Desktop::title(quint32 window) const {
    const QByteArray name = property(window, "_NET_WM_NAME");
    return QString::fromUtf8(name.isEmpty() ? property(window, "WM_NAME") : name);
}

std::vector<quint32> Desktop::windowsTitled(const QString &wanted) const {
    return windowsMatching([&wanted](const QString &title) { return title == wanted; });
}

std::vector<quint32> Desktop::windowsMatching(const std::function<bool(const QString &)> &matches) const {
    std::vector<quint32> found;
    visit([&](quint32 window) { // a frame has the title of its window, but no class
        if (matches(title(window)) && isViewable(window) && !property(window, "WM_CLASS").isEmpty())
            found.push_back(window);
    });
    return found;
}

bool Desktop::isShown(const char *title) const {
    return !windowsTitled(QLatin1String(title)).empty();
}

bool Desktop::hasKeyboard(const char *title) const {
    const auto windows = windowsTitled(QLatin1String(title));
    return windows.size() == 1 && windows.front() == keyboard.focusedWindow();
}

QRect Desktop::geometry(quint32 window) const {
    const auto size = owned(xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr));
    const auto place = owned(xcb_translate_coordinates_reply(
        m_connection, xcb_translate_coordinates(m_connection, window, m_root, 0, 0), nullptr));
    if (!size || !place)
        return {};
    return {place->dst_x, place->dst_y, size->width, size->height};
}

QSize Desktop::size() const {
    return geometry(m_root).size();
}

QRect Desktop::frameOf(quint32 window) const {
    const QByteArray extents = property(window, "_NET_FRAME_EXTENTS"); // left, right, top, bottom
    QRect frame = geometry(window);
    if (extents.size() == 16) {
        const auto *e = reinterpret_cast<const qint32 *>(extents.constData());
        frame.adjust(-e[0], -e[2], e[1], e[3]);
    }
    return frame;
}

quint32 Desktop::topWindowAt(QPoint place) {
    const quint32 deepest = keyboard.windowAt(place.x(), place.y());
    quint32 found = 0;
    visit([&](quint32 window) { // frames have no class
        if (property(window, "WM_CLASS").isEmpty() || !isViewable(window))
            return;
        for (quint32 inner = deepest; inner != 0 && inner != m_root;) {
            if (inner == window)
                found = window;
            const auto tree = owned(xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, inner), nullptr));
            inner = tree ? tree->parent : 0;
        }
    });
    return found;
}

quint32 Desktop::overlayAt(QPoint place) const {
    quint32 found = 0;
    visit([&](quint32 window) {
        const auto facts = owned(
            xcb_get_window_attributes_reply(m_connection, xcb_get_window_attributes(m_connection, window), nullptr));
        if (facts && facts->override_redirect && facts->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT &&
            !property(window, "WM_CLASS").isEmpty() && geometry(window).contains(place))
            found = window; // they come from the lowest to the uppermost
    });
    return found;
}

bool Desktop::isFrozen() const {
    bool isFound = false;
    visit([&](quint32 window) {
        const bool isNamed = !property(window, "WM_CLASS").isEmpty() || !title(window).isEmpty();
        isFound = isFound || (!isNamed && geometry(window) == QRect(QPoint(), size()));
    });
    return isFound;
}

QRect Desktop::inputOf(quint32 window) const {
    const auto shape = owned(xcb_shape_get_rectangles_reply(
        m_connection, xcb_shape_get_rectangles(m_connection, window, XCB_SHAPE_SK_INPUT), nullptr));
    QRect bounds;
    const xcb_rectangle_t *parts = shape ? xcb_shape_get_rectangles_rectangles(shape.get()) : nullptr;
    for (int part = 0; parts && part < xcb_shape_get_rectangles_rectangles_length(shape.get()); ++part)
        bounds |= QRect(parts[part].x, parts[part].y, parts[part].width, parts[part].height);
    return bounds;
}

int Desktop::brightnessAt(QPoint place) const {
    const auto image = owned(
        xcb_get_image_reply(m_connection,
                            xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root,
                                          static_cast<qint16>(place.x()), static_cast<qint16>(place.y()), 1, 1, ~0U),
                            nullptr));
    if (!image || xcb_get_image_data_length(image.get()) < 3)
        return 0;
    const quint8 *const colour = xcb_get_image_data(image.get());
    return std::max({colour[0], colour[1], colour[2]});
}

bool Desktop::isAbove(quint32 upper, quint32 lower) const {
    bool isLowerSeen = false;
    bool isAbove = false;
    visit([&](quint32 window) {
        isLowerSeen = isLowerSeen || window == lower;
        isAbove = isAbove || (window == upper && isLowerSeen);
    });
    return isAbove;
}

quint32 Desktop::activeWindow() const {
    const QByteArray window = property(m_root, "_NET_ACTIVE_WINDOW"); // behind which some managers add a word
    return window.size() >= 4 ? *reinterpret_cast<const quint32 *>(window.constData()) : 0;
}

quint32 Desktop::windowOf(qint64 processId) const {
    quint32 found = 0;
    visit([&](quint32 window) {
        const QByteArray pid = property(window, "_NET_WM_PID");
        if (found == 0 && pid.size() == 4 && isViewable(window) &&
            *reinterpret_cast<const quint32 *>(pid.constData()) == static_cast<quint32>(processId))
            found = window;
    });
    return found;
}

void Desktop::type(const char *text) {
    for (; *text; ++text)
        keyboard.tap(keycodeOf(*text));
}

void Desktop::openEmojiPanel() {
    keyboard.chord({key::leftSuper, key::leftShift, keycodeOf('e')});
}

void Desktop::activate(quint32 window) {
    tellWindowManager(window, "_NET_ACTIVE_WINDOW", {pager});
}

void Desktop::close(quint32 window) {
    tellWindowManager(window, "_NET_CLOSE_WINDOW", {0, pager});
}

void Desktop::setFullScreen(quint32 window, bool isFullScreen) {
    tellWindowManager(window, "_NET_WM_STATE", {isFullScreen ? 1U : 0U, atom("_NET_WM_STATE_FULLSCREEN"), 0, pager});
}

void Desktop::clear(quint32 window, const char *property) {
    xcb_delete_property(m_connection, window, atom(property));
    static_cast<void>(this->property(window, property)); // the server has done it
}

void Desktop::move(quint32 window, QPoint place) {
    const quint32 values[] = {static_cast<quint32>(place.x()), static_cast<quint32>(place.y())};
    xcb_configure_window(m_connection, window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, values);
    xcb_flush(m_connection);
}

void Desktop::doubleClick(QPoint place) {
    click(place);
    click(place);
}

quint32 Desktop::time() const {
    // The notice of a change that changes nothing carries it.
    const quint32 window = xcb_generate_id(m_connection);
    const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_connection, 0, window, m_root, -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    xcb_change_property(m_connection, XCB_PROP_MODE_APPEND, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 0, nullptr);
    xcb_destroy_window(m_connection, window);
    xcb_flush(m_connection);
    const auto event = owned(xcb_wait_for_event(m_connection));
    return event && (event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY
               ? reinterpret_cast<const xcb_property_notify_event_t *>(event.get())->time
               : 0;
}

qint64 Desktop::windowManager() const {
    const QByteArray window = property(m_root, "_NET_SUPPORTING_WM_CHECK");
    if (window.size() != 4)
        return 0;
    const xcb_res_client_id_spec_t spec{*reinterpret_cast<const quint32 *>(window.constData()),
                                        XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const auto answer =
        owned(xcb_res_query_client_ids_reply(m_connection, xcb_res_query_client_ids(m_connection, 1, &spec), nullptr));
    if (!answer || xcb_res_query_client_ids_ids_length(answer.get()) == 0)
        return 0;
    const auto ids = xcb_res_query_client_ids_ids_iterator(answer.get());
    return *xcb_res_client_id_value_value(ids.data);
}

void Desktop::tellWindowManager(quint32 window, const char *message, std::initializer_list<quint32> data) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(message);
    std::copy(data.begin(), data.end(), event.data.data32);
    xcb_send_event(m_connection, 0, m_root, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char *>(&event));
    xcb_flush(m_connection);
}

} // namespace tavrine::testing
