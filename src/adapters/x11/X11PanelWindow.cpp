#include "adapters/x11/X11PanelWindow.h"

#include "adapters/x11/X11Screens.h"

#include <QApplication>
#include <QHash>
#include <QMouseEvent>
#include <QPointer>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>
#include <QWindow>

#include <algorithm>

#include <xcb/shape.h>

namespace tavrine {
namespace {

constexpr std::chrono::milliseconds activationCheck{150}; // a window manager at work needs 5 to 50
constexpr int activationChecks = 3;
constexpr quint32 allDesktops = 0xFFFFFFFF;

// Requests about a window of Qt's go over Qt's connection, so that they keep their order with Qt's own.
xcb_connection_t *qtConnection() {
    auto *x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    return x11 ? x11->connection() : nullptr;
}

xcb_atom_t atom(xcb_connection_t *connection, const char *name) {
    static QHash<QByteArray, xcb_atom_t> known; // Qt has one connection for the life of the process
    if (const auto found = known.constFind(name); found != known.cend())
        return *found;
    const XcbReply<xcb_intern_atom_reply_t> answer{xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, static_cast<quint16>(qstrlen(name)), name), nullptr)};
    return known[name] = answer ? answer->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

void setAtoms(xcb_connection_t *connection, xcb_window_t window, const char *property,
              std::initializer_list<const char *> names) {
    std::vector<xcb_atom_t> atoms;
    for (const char *name : names)
        atoms.push_back(atom(connection, name));
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, atom(connection, property), XCB_ATOM_ATOM, 32,
                        static_cast<quint32>(atoms.size()), atoms.data());
}

void sendToRoot(xcb_connection_t *connection, xcb_window_t window, const char *message,
                std::initializer_list<quint32> data) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(connection, message);
    std::copy(data.begin(), data.end(), event.data.data32);
    xcb_send_event(connection, 0, xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char *>(&event));
}

/// Says the states of a shown panel once more. A window manager clears them when a window goes, and may come to that
/// only after a panel was described for its next showing.
void repeatToWindowManager(QWindow &window, const PanelDescription &description) {
    auto *connection = qtConnection();
    if (!connection || !description.canBecomeKey)
        return;
    const auto id = static_cast<xcb_window_t>(window.winId());
    constexpr quint32 add = 1;
    constexpr quint32 ordinaryProgram = 1;
    const auto addStates = [&](const char *first, const char *second) {
        sendToRoot(connection, id, "_NET_WM_STATE",
                   {add, atom(connection, first), second ? atom(connection, second) : 0, ordinaryProgram});
    };
    addStates("_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER");
    if (description.level > windowLevel::normal)
        addStates("_NET_WM_STATE_ABOVE", nullptr);
    if (description.collectionBehavior & collectionBehavior::canJoinAllSpaces)
        sendToRoot(connection, id, "_NET_WM_DESKTOP", {allDesktops, ordinaryProgram});
}

/// The widget of a panel: its content, and the drag by its background.
class PanelWidget final : public QWidget {
public:
    explicit PanelWidget(const PanelDescription &description)
        : QWidget(nullptr, flagsFor(description)), m_isMovable(description.isMovableByBackground) {
        setAttribute(Qt::WA_TranslucentBackground, description.isClear);
        setAttribute(Qt::WA_ShowWithoutActivating, !description.canBecomeKey);
        setAttribute(Qt::WA_QuitOnClose, false);
        setWindowTitle(description.title);
        auto *layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSizeConstraint(QLayout::SetNoConstraint); // a panel shrinks below what its content would like
        resize(description.contentSize.toSize());
        create();
    }

    std::function<void()> onMoved;

protected:
    void mousePressEvent(QMouseEvent *event) override {
        if (m_isMovable && event->button() == Qt::LeftButton)
            m_grip = event->globalPosition().toPoint() - pos();
    }
    void mouseMoveEvent(QMouseEvent *event) override {
        if (m_grip)
            move(event->globalPosition().toPoint() - *m_grip);
    }
    void mouseReleaseEvent(QMouseEvent *) override {
        if (std::exchange(m_grip, std::nullopt) && onMoved)
            onMoved();
    }

private:
    static Qt::WindowFlags flagsFor(const PanelDescription &description) {
        Qt::WindowFlags flags = Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint;
        if (!description.canBecomeKey)
            flags |= Qt::BypassWindowManagerHint | Qt::WindowDoesNotAcceptFocus;
        return flags;
    }

    std::optional<QPoint> m_grip;
    bool m_isMovable;
};

class X11PanelWindow final : public PanelWindow {
public:
    X11PanelWindow(const PanelDescription &description, X11ApplicationActivator &activator)
        : m_description(description), m_activator(activator), m_widget(description),
          m_ignoresMouseEvents(description.ignoresMouseEvents) {}

    [[nodiscard]] bool isVisible() const override { return m_widget.isVisible(); }
    [[nodiscard]] QRectF frame() const override { return flippedRect(m_widget.geometry()); }
    void setFrame(const QRectF &frame) override { m_widget.setGeometry(flippedRect(frame).toAlignedRect()); }
    [[nodiscard]] double alpha() const override { return m_alpha; }
    void setAlpha(double alpha) override {
        m_alpha = alpha;
        m_widget.setWindowOpacity(alpha);
    }

    void makeKeyAndOrderFront() override {
        if (!m_description.canBecomeKey) {
            orderFrontRegardless();
            return;
        }
        const bool isManaged = m_activator.hasWindowManager();
        const auto own = static_cast<xcb_window_t>(m_widget.winId());
        if (const auto focused = m_activator.focusedWindow(); !isManaged && focused != own)
            m_focusBefore = focused;
        orderFrontRegardless();
        flush(); // the window must be known before it can be given the keyboard
        m_activator.activateWindow(own);
        // Qt notices that a window lost the keyboard a moment after it is hidden. A panel that is shown before that
        // counts as focused still, and would not be told when it is.
        if (QGuiApplication::focusWindow() == m_widget.windowHandle() && !m_widget.isActiveWindow())
            QApplication::setActiveWindow(&m_widget);
        QTimer::singleShot(activationCheck, &m_widget, [this] { insistOnKeyboard(activationChecks); });
    }

    void orderFrontRegardless() override {
        const bool isNew = !m_widget.isVisible();
        if (isNew)
            describeToDesktop(*m_widget.windowHandle(), m_description, m_ignoresMouseEvents);
        m_widget.show();
        m_widget.raise();
        if (isNew)
            repeatToWindowManager(*m_widget.windowHandle(), m_description);
    }

    void orderOut() override {
        if (!m_widget.isVisible())
            return;
        // Without a window manager the keyboard would be lost with the window; with one it is given back by it.
        if (const auto before = std::exchange(m_focusBefore, xcb_window_t{XCB_WINDOW_NONE});
            before != XCB_WINDOW_NONE && m_activator.focusedWindow() == m_widget.winId())
            m_activator.focusWindow(before);
        m_widget.hide();
        flush();
    }

    void setContentView(QWidget *content) override {
        delete m_content.data();
        m_content = content;
        if (content)
            m_widget.layout()->addWidget(content);
    }

    void setIgnoresMouseEvents(bool ignores) override {
        m_ignoresMouseEvents = ignores;
        describeToDesktop(*m_widget.windowHandle(), m_description, ignores);
        flush();
    }

    void setOnMoved(std::function<void()> onMoved) override { m_widget.onMoved = std::move(onMoved); }

private:
    /// A request to be activated is lost when the keyboard changes hands between its time and the moment at which a
    /// busy window manager comes to it. A panel that is shown and did not get the keyboard asks again.
    void insistOnKeyboard(int checksLeft) {
        const auto own = static_cast<xcb_window_t>(m_widget.winId());
        if (checksLeft == 0 || !m_widget.isVisible() || m_activator.focusedWindow() == own)
            return;
        m_activator.activateWindow(own);
        QTimer::singleShot(activationCheck, &m_widget, [this, checksLeft] { insistOnKeyboard(checksLeft - 1); });
    }

    static void flush() {
        if (auto *connection = qtConnection())
            free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    }

    const PanelDescription m_description;
    X11ApplicationActivator &m_activator;
    PanelWidget m_widget;
    QPointer<QWidget> m_content;
    double m_alpha = 1.0;
    bool m_ignoresMouseEvents;
    xcb_window_t m_focusBefore = XCB_WINDOW_NONE;
};

} // namespace

void describeToDesktop(QWindow &window, const PanelDescription &description, bool ignoresMouseEvents) {
    auto *connection = qtConnection();
    if (!connection)
        return;
    const auto id = static_cast<xcb_window_t>(window.winId());
    // A dialogue gets the keyboard from every window manager, and floats where windows are tiled.
    const bool isOverlay = description.level >= windowLevel::mainMenu;
    setAtoms(connection, id, "_NET_WM_WINDOW_TYPE",
             {description.canBecomeKey ? "_NET_WM_WINDOW_TYPE_DIALOG"
              : isOverlay              ? "_NET_WM_WINDOW_TYPE_NOTIFICATION"
                                       : "_NET_WM_WINDOW_TYPE_UTILITY"});
    setAtoms(connection, id, "_NET_WM_STATE",
             {"_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER",
              description.level > windowLevel::normal ? "_NET_WM_STATE_ABOVE" : "_NET_WM_STATE_SKIP_PAGER",
              description.collectionBehavior & collectionBehavior::canJoinAllSpaces ? "_NET_WM_STATE_STICKY"
                                                                                    : "_NET_WM_STATE_SKIP_PAGER"});
    if (description.collectionBehavior & collectionBehavior::canJoinAllSpaces)
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, id, atom(connection, "_NET_WM_DESKTOP"),
                            XCB_ATOM_CARDINAL, 32, 1, &allDesktops);
    if (ignoresMouseEvents)
        xcb_shape_rectangles(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED, id, 0, 0, 0,
                             nullptr);
    else
        xcb_shape_mask(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, id, 0, 0, XCB_PIXMAP_NONE);
}

std::unique_ptr<PanelWindow> X11PanelWindows::makePanel(const PanelDescription &description) {
    return std::make_unique<X11PanelWindow>(description, m_activator);
}

bool X11PanelWindows::isComposited() const {
    return m_activator.isComposited();
}

} // namespace tavrine
