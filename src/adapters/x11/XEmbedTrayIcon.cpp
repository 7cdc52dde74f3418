#include "adapters/x11/XEmbedTrayIcon.h"

#include "adapters/linux/StatusPixels.h"
#include "adapters/x11/XcbClient.h"
#include "adapters/x11/XcbPicture.h"

#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QTimer>

#include <algorithm>

#include <unistd.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr auto toolTipDelay = 700ms; // as the toolkits wait
constexpr int usualHeight = 24;      // asked for until the tray says what it gives
constexpr int largestEdge = 1024;
// Reading the background wipes the icon for a moment, which must not be seen with every figure of the speed meter.
constexpr auto backgroundLasts = 10s;

/// The tray counts pixels; windows are placed in points.
QPoint toPoints(QPoint pixels) {
    const QScreen *const screen = QGuiApplication::primaryScreen();
    return screen ? (pixels.toPointF() / screen->devicePixelRatio()).toPoint() : pixels;
}

} // namespace

class XEmbedTrayIcon::Private {
public:
    explicit Private(ShowToolTip showToolTip);

    void dock();
    void undock();
    void draw();
    void setTitle();

    Handlers handlers;
    StatusImage image;
    QString toolTip;
    XcbClient client;
    xcb_window_t tray = XCB_WINDOW_NONE;
    bool isWanted = false;

private:
    void onEvent(const xcb_generic_event_t &event);
    void onDrained();
    void onPropertyOfTray(xcb_atom_t property);
    void onConfigured(QSize size);
    void onButton(const xcb_button_press_event_t &press);
    void hover(bool isInside, QPoint place = {});
    void findTray();
    void setTray(xcb_window_t owner);
    void readColors();
    void makeWindow();
    [[nodiscard]] QImage background();
    [[nodiscard]] QImage readBackground();
    [[nodiscard]] QSize shapeFor(int height) const;
    void askForShape(QSize shape);
    void setWords(const char *property, xcb_atom_t type, std::initializer_list<quint32> words);

    ShowToolTip m_showToolTip;
    QTimer m_toolTipTimer;
    QPoint m_hoverPlace;
    std::optional<XcbPicture> m_picture;
    std::optional<QColor> m_symbolColor; // where the tray names one
    QImage m_background;                 // as it was read last; null when it may be another one by now
    QDeadlineTimer m_backgroundEnd;
    QSize m_size;       // of the window, as the tray has it
    QSize m_shapeAsked; // last; a tray that gives another one is not asked again
    xcb_window_t m_window = XCB_WINDOW_NONE;
    xcb_gcontext_t m_context = XCB_NONE;
    xcb_colormap_t m_colormap = XCB_NONE;
    bool m_isEmbedded = false;
    bool m_isTrayStale = true;
    bool m_isDrawingDue = false;
};

XEmbedTrayIcon::Private::Private(ShowToolTip showToolTip)
    : client([this](const xcb_generic_event_t &event) { onEvent(event); }, [this] { onDrained(); }),
      m_showToolTip(std::move(showToolTip)) {
    m_toolTipTimer.setSingleShot(true);
    m_toolTipTimer.setInterval(toolTipDelay);
    m_toolTipTimer.callOnTimeout([this] {
        if (m_showToolTip && !toolTip.isEmpty())
            m_showToolTip(toPoints(m_hoverPlace), toolTip);
    });
    if (!client.isConnected())
        return;
    const quint32 events = XCB_EVENT_MASK_STRUCTURE_NOTIFY; // a new tray announces itself so
    xcb_change_window_attributes(client.connection(), client.root(), XCB_CW_EVENT_MASK, &events);
    findTray();
    client.flush();
}

void XEmbedTrayIcon::Private::findTray() {
    const xcb_atom_t selection = client.atom("_NET_SYSTEM_TRAY_S" + std::to_string(client.screenNumber()));
    xcb_window_t owner = XCB_WINDOW_NONE;
    // Its end must be seen: the owner is asked for again once its events have been asked for.
    for (;;) {
        const auto answer =
            client.reply<xcb_get_selection_owner_reply_t>(xcb_get_selection_owner(client.connection(), selection));
        if (!answer || answer->owner == owner)
            break;
        owner = answer->owner;
        if (owner == XCB_WINDOW_NONE)
            break;
        const quint32 events = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(client.connection(), owner, XCB_CW_EVENT_MASK, &events);
    }
    m_isTrayStale = client.takeIsLate();
    if (owner != tray)
        setTray(owner);
}

void XEmbedTrayIcon::Private::setTray(xcb_window_t owner) {
    undock();
    tray = owner;
    if (tray != XCB_WINDOW_NONE)
        readColors();
    if (handlers.onOfferChanged)
        handlers.onOfferChanged();
    if (isWanted)
        dock();
}

/// Twelve words: red, green and blue of the symbol colour and of three that are for warnings, 16 bits each.
void XEmbedTrayIcon::Private::readColors() {
    const auto words = client.words(tray, "_NET_SYSTEM_TRAY_COLORS");
    m_symbolColor.reset();
    if (words.size() >= 3)
        m_symbolColor = QColor::fromRgba64(static_cast<quint16>(words[0]), static_cast<quint16>(words[1]),
                                           static_cast<quint16>(words[2]));
}

void XEmbedTrayIcon::Private::dock() {
    if (tray == XCB_WINDOW_NONE || m_window != XCB_WINDOW_NONE)
        return;
    makeWindow();
    m_background = {};
    constexpr quint32 requestDock = 0;
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = tray;
    message.type = client.atom("_NET_SYSTEM_TRAY_OPCODE");
    message.data.data32[0] = XCB_CURRENT_TIME;
    message.data.data32[1] = requestDock;
    message.data.data32[2] = m_window;
    xcb_send_event(client.connection(), 0, tray, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char *>(&message));
    client.flush();
}

void XEmbedTrayIcon::Private::makeWindow() {
    const auto named = client.words(tray, "_NET_SYSTEM_TRAY_VISUAL");
    xcb_visualid_t visual = named.empty() ? client.screen().root_visual : named[0];
    m_picture = XcbPicture::forVisual(*xcb_get_setup(client.connection()), client.screen(), visual);
    if (!m_picture) {
        visual = client.screen().root_visual;
        m_picture = XcbPicture::forVisual(*xcb_get_setup(client.connection()), client.screen(), visual);
    }
    const bool hasAlpha = m_picture && m_picture->hasAlpha();
    m_window = xcb_generate_id(client.connection());
    m_context = xcb_generate_id(client.connection());
    m_colormap = xcb_generate_id(client.connection());
    m_size = shapeFor(usualHeight);
    m_shapeAsked = m_size;
    xcb_create_colormap(client.connection(), XCB_COLORMAP_ALLOC_NONE, m_colormap, client.root(), visual);
    // A window of another depth than its parent's must name its background, border and colours.
    const quint32 mask =
        (hasAlpha ? XCB_CW_BACK_PIXEL : XCB_CW_BACK_PIXMAP) | XCB_CW_BORDER_PIXEL | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP;
    const quint32 events = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_BUTTON_PRESS |
                           XCB_EVENT_MASK_ENTER_WINDOW | XCB_EVENT_MASK_LEAVE_WINDOW;
    const quint32 background = hasAlpha ? 0U : static_cast<quint32>(XCB_BACK_PIXMAP_PARENT_RELATIVE);
    const quint32 values[] = {background, 0, events, m_colormap};
    xcb_create_window(client.connection(), m_picture ? m_picture->depth() : client.screen().root_depth, m_window,
                      client.root(), 0, 0, static_cast<quint16>(m_size.width()), static_cast<quint16>(m_size.height()),
                      0, XCB_WINDOW_CLASS_INPUT_OUTPUT, visual, mask, values);
    xcb_create_gc(client.connection(), m_context, m_window, 0, nullptr);

    constexpr quint32 protocolVersion = 0;
    constexpr quint32 isMapped = 1;
    setWords("_XEMBED_INFO", client.atom("_XEMBED_INFO"), {protocolVersion, isMapped});
    setWords("_NET_WM_PID", XCB_ATOM_CARDINAL, {static_cast<quint32>(::getpid())});
    constexpr char wmClass[] = "tavrine\0Tavrine";
    xcb_change_property(client.connection(), XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                        sizeof wmClass, wmClass);
    askForShape(m_size);
    setTitle();
}

/// Some trays go by the size that a window asks for, others by the least size that its hints name.
void XEmbedTrayIcon::Private::askForShape(QSize shape) {
    constexpr quint32 hasLeastSize = 1U << 4U;
    const auto width = static_cast<quint32>(shape.width());
    const auto height = static_cast<quint32>(shape.height());
    setWords("WM_NORMAL_HINTS", XCB_ATOM_WM_SIZE_HINTS,
             {hasLeastSize, 0, 0, 0, 0, width, height, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    const quint32 size[] = {width, height};
    xcb_configure_window(client.connection(), m_window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size);
}

void XEmbedTrayIcon::Private::setWords(const char *property, xcb_atom_t type, std::initializer_list<quint32> words) {
    xcb_change_property(client.connection(), XCB_PROP_MODE_REPLACE, m_window, client.atom(property), type, 32,
                        static_cast<quint32>(words.size()), words.begin());
}

/// What screen readers and trays with lists call the icon.
void XEmbedTrayIcon::Private::setTitle() {
    if (m_window == XCB_WINDOW_NONE)
        return;
    const QByteArray title = toolTip.isEmpty() ? QByteArrayLiteral("Tavrine") : toolTip.toUtf8();
    xcb_change_property(client.connection(), XCB_PROP_MODE_REPLACE, m_window, client.atom("_NET_WM_NAME"),
                        client.atom("UTF8_STRING"), 8, static_cast<quint32>(title.size()), title.constData());
    client.flush();
}

/// The image's shape at that height.
QSize XEmbedTrayIcon::Private::shapeFor(int height) const {
    if (image.width <= 0 || image.height <= 0)
        return {height, height};
    return {std::clamp(qRound(double(height) * image.width / image.height), 1, largestEdge), height};
}

void XEmbedTrayIcon::Private::undock() {
    hover(false);
    if (m_window == XCB_WINDOW_NONE)
        return;
    xcb_free_gc(client.connection(), m_context);
    xcb_destroy_window(client.connection(), m_window);
    xcb_free_colormap(client.connection(), m_colormap);
    client.flush();
    m_window = XCB_WINDOW_NONE;
    m_isEmbedded = false;
}

void XEmbedTrayIcon::Private::onEvent(const xcb_generic_event_t &event) {
    switch (event.response_type & 0x7f) {
    case XCB_CLIENT_MESSAGE: {
        const auto &message = reinterpret_cast<const xcb_client_message_event_t &>(event);
        m_isTrayStale = m_isTrayStale || message.type == client.atom("MANAGER");
        break;
    }
    case XCB_DESTROY_NOTIFY: {
        const xcb_window_t gone = reinterpret_cast<const xcb_destroy_notify_event_t &>(event).window;
        if (gone == m_window)
            undock(); // the tray took it along
        if (gone == tray)
            setTray(XCB_WINDOW_NONE); // at once: the next tray may have a window of the same number
        m_isTrayStale = true;
        break;
    }
    case XCB_REPARENT_NOTIFY: {
        const auto &notice = reinterpret_cast<const xcb_reparent_notify_event_t &>(event);
        if (notice.window == m_window && notice.parent == client.root() && m_isEmbedded) {
            undock(); // the tray threw it out: it would become a window of its own
            m_isTrayStale = true;
        }
        break;
    }
    case XCB_MAP_NOTIFY:
        if (reinterpret_cast<const xcb_map_notify_event_t &>(event).window == m_window &&
            !std::exchange(m_isEmbedded, true) && handlers.onShown)
            handlers.onShown();
        break;
    case XCB_PROPERTY_NOTIFY: {
        const auto &notice = reinterpret_cast<const xcb_property_notify_event_t &>(event);
        if (notice.window == tray)
            onPropertyOfTray(notice.atom);
        break;
    }
    case XCB_CONFIGURE_NOTIFY: {
        const auto &notice = reinterpret_cast<const xcb_configure_notify_event_t &>(event);
        if (notice.window == m_window)
            onConfigured({notice.width, notice.height});
        break;
    }
    case XCB_EXPOSE:
        m_background = {};
        m_isDrawingDue = true;
        break;
    case XCB_BUTTON_PRESS:
        onButton(reinterpret_cast<const xcb_button_press_event_t &>(event));
        break;
    case XCB_ENTER_NOTIFY: {
        const auto &notice = reinterpret_cast<const xcb_enter_notify_event_t &>(event);
        hover(true, {notice.root_x, notice.root_y});
        break;
    }
    case XCB_LEAVE_NOTIFY:
        hover(false);
        break;
    default:
        break;
    }
}

void XEmbedTrayIcon::Private::onDrained() {
    if (m_isTrayStale && client.isConnected())
        findTray();
    if (std::exchange(m_isDrawingDue, false))
        draw();
}

void XEmbedTrayIcon::Private::onPropertyOfTray(xcb_atom_t property) {
    if (property == client.atom("_NET_SYSTEM_TRAY_COLORS")) {
        readColors();
        m_isDrawingDue = true;
    } else if (property == client.atom("_NET_SYSTEM_TRAY_VISUAL") && m_window != XCB_WINDOW_NONE) {
        undock();
        dock();
    }
}

void XEmbedTrayIcon::Private::onConfigured(QSize size) {
    m_isDrawingDue = m_isDrawingDue || size != m_size;
    m_background = {}; // it may have been moved
    m_size = size;
}

void XEmbedTrayIcon::Private::onButton(const xcb_button_press_event_t &press) {
    constexpr xcb_button_t middleButton = 2;
    constexpr xcb_button_t lastButton = 3; // those above are the wheel
    hover(false);
    const auto &tell = press.detail == middleButton ? handlers.onSecondaryPress : handlers.onPress;
    if (press.detail > lastButton || !tell)
        return;
    // The press holds the pointer for this connection until the button is let go; the menu that opens now needs it.
    xcb_ungrab_pointer(client.connection(), press.time);
    client.flush();
    tell(toPoints({press.root_x, press.root_y}));
}

void XEmbedTrayIcon::Private::hover(bool isInside, QPoint place) {
    m_hoverPlace = place;
    if (isInside) {
        m_toolTipTimer.start();
        return;
    }
    const bool mayBeShown = !m_toolTipTimer.isActive();
    m_toolTipTimer.stop();
    if (mayBeShown && m_showToolTip && m_window != XCB_WINDOW_NONE)
        m_showToolTip({}, {});
}

QImage XEmbedTrayIcon::Private::background() {
    if (m_background.size() != m_size || m_backgroundEnd.hasExpired()) {
        m_background = readBackground();
        m_backgroundEnd.setRemainingTime(backgroundLasts);
    }
    return m_background;
}

/// What the tray shows beneath the icon, where it offers no transparency.
QImage XEmbedTrayIcon::Private::readBackground() {
    QImage pixels(m_size, QImage::Format_ARGB32_Premultiplied);
    pixels.fill(Qt::transparent);
    if (m_picture->hasAlpha())
        return pixels;
    xcb_clear_area(client.connection(), 0, m_window, 0, 0, 0, 0);
    const auto answer = client.reply<xcb_get_image_reply_t>(
        xcb_get_image(client.connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_window, 0, 0,
                      static_cast<quint16>(m_size.width()), static_cast<quint16>(m_size.height()), ~0U));
    if (answer) {
        const QImage beneath =
            m_picture->read(xcb_get_image_data(answer.get()), xcb_get_image_data_length(answer.get()), m_size);
        if (!beneath.isNull())
            return beneath;
    }
    pixels.fill(Qt::black); // partly off the screen: the server has no picture of it
    return pixels;
}

void XEmbedTrayIcon::Private::draw() {
    if (m_window == XCB_WINDOW_NONE || !m_isEmbedded || !m_picture || m_size.isEmpty() || image.height <= 0 ||
        image.width <= 0 || m_size.width() > largestEdge || m_size.height() > largestEdge)
        return;
    // A tray that gives another height than the usual is asked once for the width that goes with it.
    const QSize shape = shapeFor(m_size.height());
    if (shape != m_size && std::exchange(m_shapeAsked, shape) != shape)
        askForShape(shape);
    const double scale = std::min(double(m_size.width()) / image.width, double(m_size.height()) / image.height);
    QImage canvas = background();
    const QImage pixels =
        statusPixels(image, {.scale = scale, .label = m_symbolColor ? *m_symbolColor : symbolColorOn(canvas)});
    if (!pixels.isNull()) {
        QPainter painter(&canvas);
        painter.drawImage(QPoint((m_size.width() - pixels.width()) / 2, (m_size.height() - pixels.height()) / 2),
                          pixels);
    }
    m_picture->put(client.connection(), m_window, m_context, canvas);
    client.flush();
}

XEmbedTrayIcon::XEmbedTrayIcon(ShowToolTip showToolTip) : d(std::make_unique<Private>(std::move(showToolTip))) {}

XEmbedTrayIcon::~XEmbedTrayIcon() {
    d->undock();
}

void XEmbedTrayIcon::setHandlers(Handlers handlers) {
    d->handlers = std::move(handlers);
}

TrayIcon::Offer XEmbedTrayIcon::offer() const {
    return d->tray == XCB_WINDOW_NONE ? Offer::no : Offer::yes;
}

void XEmbedTrayIcon::setWanted(bool isWanted) {
    if (std::exchange(d->isWanted, isWanted) == isWanted)
        return;
    if (isWanted)
        d->dock();
    else
        d->undock();
}

void XEmbedTrayIcon::setImage(const StatusImage &image) {
    d->image = image;
    d->draw();
}

void XEmbedTrayIcon::setToolTip(const QString &toolTip) {
    d->toolTip = toolTip;
    d->setTitle();
}

} // namespace tavrine
