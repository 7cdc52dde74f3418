#include "adapters/wayland/ClickCatchers.h"

#include "adapters/stream/ToolkitPoints.h"
#include "adapters/wayland/LayerPopups.h"
#include "adapters/wayland/LayerShell.h"
#include "adapters/wayland/LayerStack.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QRegion>
#include <QScreen>
#include <QSurfaceFormat>
#include <QWindow>

#include <algorithm>
#include <utility>

#include <wayland/viewporter.h>
#include <wayland/wlr-layer-shell-unstable-v1.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr auto nameOfCatchers = "tavrine-beside";
constexpr auto untilThere = 50ms; ///< the picture of what opens goes first; nobody clicks beside it so early
/// The toolkit gives each surface its screen's scale, and a buffer is to be a whole number of such points.
constexpr int sideOfBuffer = 12;
constexpr std::uint32_t wholeScreen = ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
                                      ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;

} // namespace

/// On one screen. It is nothing but a place: what it shows is one clear pixel.
class ClickCatchers::Catcher final : public QWindow {
public:
    Catcher(ClickCatchers &owner, QScreen &screen)
        : QWindow(&screen), m_owner(owner), m_shell(owner.m_shell), m_factor(toolkitPoints::factor(&screen)) {
        setFlags(Qt::Window | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint | Qt::WindowDoesNotAcceptFocus);
        // Clear: the toolkit calls a surface without it opaque, and a compositor shows no change of what lies below
        // one.
        QSurfaceFormat clear;
        clear.setAlphaBufferSize(8);
        setFormat(clear);
        setGeometry(screen.geometry());
        connect(&screen, &QScreen::geometryChanged, this, [this] { m_owner.appearAnew(); });
        m_surface = m_shell.surfaceOf(*this);
        if (!m_surface)
            return;
        static constexpr zwlr_layer_surface_v1_listener listener{
            .configure =
                [](void *self, zwlr_layer_surface_v1 *role, std::uint32_t serial, std::uint32_t width,
                   std::uint32_t height) {
                    zwlr_layer_surface_v1_ack_configure(role, serial);
                    static_cast<Catcher *>(self)->cover(static_cast<int>(width), static_cast<int>(height));
                },
            .closed = [](void *self, zwlr_layer_surface_v1 *) { static_cast<Catcher *>(self)->m_owner.appearAnew(); }};
        m_role = zwlr_layer_shell_v1_get_layer_surface(m_shell.shell(), m_surface, m_shell.outputOf(screen),
                                                       ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, nameOfCatchers);
        zwlr_layer_surface_v1_add_listener(m_role, &listener, this);
        zwlr_layer_surface_v1_set_anchor(m_role, wholeScreen);
        zwlr_layer_surface_v1_set_size(m_role, 0, 0); // of the output
        zwlr_layer_surface_v1_set_exclusive_zone(m_role, -1);
        m_viewport = wp_viewporter_get_viewport(m_shell.viewporter(), m_surface);
        wl_surface_commit(m_surface);
        show();
    }
    ~Catcher() override { leave(); }
    Catcher(const Catcher &) = delete;
    Catcher &operator=(const Catcher &) = delete;

    /// The surface goes.
    void leave() {
        if (wp_viewport *viewport = std::exchange(m_viewport, nullptr))
            wp_viewport_destroy(viewport);
        if (zwlr_layer_surface_v1 *role = std::exchange(m_role, nullptr))
            zwlr_layer_surface_v1_destroy(role);
        m_isThere = false;
        hide();
        destroy();
    }
    void leaveOut(const QRegion &taken) {
        if (!m_isThere)
            return;
        shapeInput(taken);
        wl_surface_commit(m_surface);
    }
    [[nodiscard]] bool isHeld() const { return m_isHeld; }

protected:
    void mousePressEvent(QMouseEvent *event) override {
        m_isHeld = true;
        m_owner.pressed(*event);
    }
    void mouseReleaseEvent(QMouseEvent *event) override {
        m_isHeld = event->buttons() != Qt::NoButton;
        m_owner.settleSoon();
    }
    /// Of a button whose release went elsewhere, as to a lock screen, the next move tells.
    void mouseMoveEvent(QMouseEvent *event) override {
        if (event->buttons() == Qt::NoButton && std::exchange(m_isHeld, false))
            m_owner.settleSoon();
    }
    bool event(QEvent *event) override {
        if (event->type() == QEvent::DragEnter)
            m_owner.dragged();
        return QWindow::event(event);
    }

private:
    /// The compositor has said how large it is.
    void cover(int width, int height) {
        m_isThere = true;
        wp_viewport_set_destination(m_viewport, std::max(1, width), std::max(1, height));
        wl_surface_attach(m_surface, m_owner.m_buffer->get(), 0, 0);
        wl_surface_damage(m_surface, 0, 0, width, height);
        shapeInput(m_shell.taken());
        wl_surface_commit(m_surface);
        m_shell.flush();
    }
    void shapeInput(const QRegion &taken) {
        QRegion input(QRect(QPoint(), toolkitPoints::toCompositor(geometry(), m_factor).size()));
        for (const QRect &part : taken)
            input -= toolkitPoints::toCompositor(part.translated(-geometry().topLeft()), m_factor);
        m_shell.setInputRegion(m_surface, &input);
    }

    ClickCatchers &m_owner;
    LayerShell &m_shell;
    const double m_factor;
    wl_surface *m_surface = nullptr;
    zwlr_layer_surface_v1 *m_role = nullptr;
    wp_viewport *m_viewport = nullptr;
    bool m_isThere = false;
    bool m_isHeld = false;
};

ClickCatchers::ClickCatchers(LayerShell &shell, LayerStack &stack) : m_shell(shell), m_stack(stack) {
    m_settles.setSingleShot(true);
    connect(&m_settles, &QTimer::timeout, this, [this] { settle(); });
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, [this] { settleSoon(); });
    connect(qGuiApp, &QGuiApplication::screenAdded, this, [this] { appearAnew(); });
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, [this] { appearAnew(); });
    m_stack.setOnSettled([this] { settleSoon(); });
    m_shell.setOnChanged([this] {
        for (const auto &catcher : m_catchers)
            catcher->leaveOut(m_shell.taken());
        settleSoon();
    });
}

ClickCatchers::~ClickCatchers() {
    m_stack.setOnSettled({});
    m_shell.setOnChanged({});
}

bool ClickCatchers::isCatcher(const QObject *window) {
    return dynamic_cast<const Catcher *>(window) != nullptr;
}

void ClickCatchers::setWanted(bool areWanted) {
    m_isPassing = m_isPassing && areWanted;
    m_areWanted = areWanted;
    settleSoon();
}

bool ClickCatchers::areDue() const {
    return m_areWanted && !m_isPassing && !m_shell.isDragging() && m_shell.viewporter() && m_stack.asksForKeyboard() &&
           QGuiApplication::focusWindow() && !QGuiApplication::modalWindow();
}

/// Never at once: it may be one of them that tells of it.
void ClickCatchers::settleSoon() {
    if (areDue() == !m_catchers.empty())
        m_settles.stop();
    else if (!m_settles.isActive())
        m_settles.start(m_catchers.empty() ? untilThere : 0ms);
}

void ClickCatchers::settle() {
    if (areDue() && m_catchers.empty())
        appear();
    else if (!areDue() &&
             std::none_of(m_catchers.begin(), m_catchers.end(), [](const auto &each) { return each->isHeld(); }))
        vanish();
}

void ClickCatchers::appear() {
    m_gone.clear();
    if (!m_buffer)
        m_buffer = std::make_unique<ClearBuffer>(m_shell.memory(), sideOfBuffer);
    if (!m_buffer->get())
        return;
    const auto screens = QGuiApplication::screens();
    for (QScreen *screen : screens)
        if (!screen->geometry().isEmpty()) // one stands in where there is none
            m_catchers.push_back(std::make_unique<Catcher>(*this, *screen));
    m_shell.flush();
}

void ClickCatchers::vanish() {
    for (const auto &catcher : m_catchers)
        catcher->leave();
    m_gone = std::exchange(m_catchers, {});
    m_shell.flush();
}

/// The screens are others.
void ClickCatchers::appearAnew() {
    if (m_catchers.empty())
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            vanish();
            settleSoon();
        },
        Qt::QueuedConnection);
}

void ClickCatchers::pressed(const QMouseEvent &press) {
    if (!LayerPopups::closeMenus() && m_onPress)
        m_onPress(press);
}

void ClickCatchers::dragged() {
    m_isPassing = true;
    settleSoon();
}

} // namespace tavrine
