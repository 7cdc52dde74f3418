#include "adapters/x11/X11Screens.h"

#include "adapters/x11/X11PointerWatch.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

namespace tavrine {
namespace {

constexpr int deepestWindow = 16;

QRect deviceRect(const QScreen &screen) {
    // Qt keeps a screen's corner in device pixels and its size in points.
    const double scale = screen.devicePixelRatio();
    return {screen.geometry().topLeft(),
            QSize(qRound(screen.geometry().width() * scale), qRound(screen.geometry().height() * scale))};
}

QRectF pointsOnScreen(const QRect &device, const QScreen &screen) {
    const QPointF corner = screen.geometry().topLeft();
    const double scale = screen.devicePixelRatio();
    return {corner + (QPointF(device.topLeft()) - corner) / scale, QSizeF(device.size()) / scale};
}

} // namespace

QPointF pointOfDevice(QPoint device) {
    const auto screens = QGuiApplication::screens();
    for (const QScreen *screen : screens)
        if (deviceRect(*screen).contains(device))
            return pointsOnScreen({device, QSize()}, *screen).topLeft();
    return screens.isEmpty() ? QPointF(device) : pointsOnScreen({device, QSize()}, *screens.first()).topLeft();
}

X11Screens::X11Screens()
    : m_client([this](const xcb_generic_event_t &event) {
          if ((event.response_type & 0x7f) != XCB_PROPERTY_NOTIFY)
              return;
          const auto &notice = reinterpret_cast<const xcb_property_notify_event_t &>(event);
          if (notice.atom == m_client.atom("_NET_WORKAREA") || notice.atom == m_client.atom("_NET_CURRENT_DESKTOP"))
              m_changes.tell();
      }) {
    if (m_client.isConnected()) {
        const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(m_client.connection(), m_client.root(), XCB_CW_EVENT_MASK, &events);
        m_client.flush();
    }
}

std::vector<QRect> X11Screens::workAreas() const {
    if (!m_client.isConnected())
        return {};
    const auto current = m_client.words(m_client.root(), "_NET_CURRENT_DESKTOP");
    const quint32 desktop = current.empty() ? 0 : current[0];
    std::vector<QRect> areas;
    // Some window managers tell one area for each screen, all of them one for the whole desktop.
    auto words = m_client.words(m_client.root(), "_GTK_WORKAREAS_D" + std::to_string(desktop));
    if (words.size() < 4) {
        words = m_client.words(m_client.root(), "_NET_WORKAREA");
        if (words.size() >= (desktop + 1) * 4)
            words = {words.begin() + desktop * 4, words.begin() + desktop * 4 + 4};
    }
    for (size_t i = 0; i + 3 < words.size(); i += 4)
        areas.emplace_back(static_cast<int>(words[i]), static_cast<int>(words[i + 1]), static_cast<int>(words[i + 2]),
                           static_cast<int>(words[i + 3]));
    return areas;
}

QList<Screen> X11Screens::screens() const {
    QList<Screen> all;
    const auto areas = workAreas();
    const auto screens = QGuiApplication::screens(); // the primary one first
    for (const QScreen *screen : screens) {
        const QRect device = deviceRect(*screen);
        QRect usable;
        for (const QRect &area : areas)
            if (const QRect part = device & area; part.width() * part.height() > usable.width() * usable.height())
                usable = part;
        if (usable.isEmpty())
            usable = device;
        all.append({.number = static_cast<quint32>(qHash(screen->name())),
                    .localizedName = screen->model().isEmpty() ? screen->name() : screen->model(),
                    .frame = flippedRect(screen->geometry()),
                    .visibleFrame = flippedRect(pointsOnScreen(usable, *screen)),
                    .scale = screen->devicePixelRatio()});
    }
    return all;
}

std::optional<QPoint> X11Screens::middleOfFocusedWindow() const {
    if (!m_client.isConnected())
        return std::nullopt;
    auto *connection = m_client.connection();
    const auto focus = m_client.reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(connection));
    xcb_window_t window = focus && focus->focus > XCB_INPUT_FOCUS_POINTER_ROOT ? focus->focus : m_client.root();
    // Some toolkits give the keyboard to a window without extent inside the one that people see.
    for (int depth = 0; depth < deepestWindow && window != XCB_WINDOW_NONE && window != m_client.root(); ++depth) {
        const auto size = m_client.reply<xcb_get_geometry_reply_t>(xcb_get_geometry(connection, window));
        if (!size)
            return std::nullopt;
        if (size->width > 1 && size->height > 1) {
            const auto place = m_client.reply<xcb_translate_coordinates_reply_t>(
                xcb_translate_coordinates(connection, window, m_client.root(), static_cast<qint16>(size->width / 2),
                                          static_cast<qint16>(size->height / 2)));
            return place ? std::optional(QPoint(place->dst_x, place->dst_y)) : std::nullopt;
        }
        const auto tree = m_client.reply<xcb_query_tree_reply_t>(xcb_query_tree(connection, window));
        window = tree ? tree->parent : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
    }
    return std::nullopt; // a window manager parks the keyboard in a window that nobody sees
}

std::optional<Screen> X11Screens::mainScreen() const {
    const auto all = screens();
    const auto qtScreens = QGuiApplication::screens();
    if (const auto middle = middleOfFocusedWindow())
        for (qsizetype i = 0; i < all.size(); ++i)
            if (deviceRect(*qtScreens.at(i)).contains(*middle))
                return all.at(i);
    const QPointF pointer = mouseLocation();
    for (const Screen &screen : all)
        if (screen.frame.contains(pointer))
            return screen;
    return all.isEmpty() ? std::nullopt : std::optional(all.first());
}

PointerReading X11Screens::pointer() const {
    if (!m_client.isConnected())
        return {};
    const auto answer =
        m_client.quickReply<xcb_query_pointer_reply_t>(xcb_query_pointer(m_client.connection(), m_client.root()));
    if (!answer)
        return m_pointer;
    const quint16 mask = answer->mask;
    m_pointer.location = flippedPoint(pointOfDevice({answer->root_x, answer->root_y}));
    m_pointer.pressedButtons = (mask & XCB_BUTTON_MASK_1 ? 1U : 0U) | (mask & XCB_BUTTON_MASK_3 ? 2U : 0U) |
                               (mask & XCB_BUTTON_MASK_2 ? 4U : 0U);
    return m_pointer;
}

std::unique_ptr<PointerWatch> X11Screens::watchPointer(Time &time, Seconds interval, std::function<void()> handler) {
    return std::make_unique<X11PointerWatch>(time, interval, std::move(handler));
}

} // namespace tavrine
