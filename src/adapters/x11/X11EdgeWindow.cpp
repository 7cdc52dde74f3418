#include "adapters/x11/X11EdgeWindow.h"

#include "adapters/linux/ScreenPlane.h"
#include "adapters/x11/X11Compositor.h"
#include "adapters/x11/X11EdgeView.h"
#include "adapters/x11/X11Stacking.h"
#include "adapters/x11/X11WindowDescription.h"

#include <QGuiApplication>
#include <QWindow>

namespace tavrine {
namespace {

class X11EdgeWindow final : public EdgeWindow {
public:
    X11EdgeWindow(const EdgeWindowDescription &description, X11EdgeWindows::Activator activator)
        : m_activator(std::move(activator)), m_view(description) {
        m_forDesktop.level = description.level;
        m_forDesktop.collectionBehavior = description.collectionBehavior;
        m_forDesktop.canBecomeKey = false;
        // No window manager has a say in this window, so none puts its panels above it.
        QObject::connect(qGuiApp, &QGuiApplication::focusWindowChanged, &m_view,
                         [this](const QWindow *focused) { makeWayFor(focused); });
    }
    ~X11EdgeWindow() override { returnKeyboard(); }

    [[nodiscard]] qint64 windowNumber() const override { return static_cast<qint64>(m_view.winId()); }
    [[nodiscard]] bool isVisible() const override { return m_view.isVisible(); }
    [[nodiscard]] QRectF frame() const override { return m_view.frame(); }
    void setFrame(const QRectF &frame, std::chrono::milliseconds duration) override {
        m_view.setFrame(frame, duration);
    }
    [[nodiscard]] bool ignoresMouseEvents() const override { return m_view.ignoresMouseEvents(); }
    void setIgnoresMouseEvents(bool ignores) override { m_view.setIgnoresMouseEvents(ignores); }

    void orderFrontRegardless() override {
        if (!m_view.isVisible()) {
            m_compositor = std::make_unique<X11Compositor>([this](bool isRunning) { m_view.setComposited(isRunning); });
            describeToDesktop(*m_view.windowHandle(), m_forDesktop, {});
            m_view.show();
        }
        m_hasMadeWay = false;
        m_view.raise();
        m_view.flush();
    }

    void keepInFront() override {
        if (m_view.isVisible())
            if (const xcb_window_t panel =
                    m_stacking.lowestFrameAbove(*m_view.windowHandle(), flippedRect(m_view.frame()));
                panel != XCB_WINDOW_NONE)
                return stackBelow(*m_view.windowHandle(), panel);
        orderFrontRegardless();
    }

    void orderOut() override {
        returnKeyboard();
        m_compositor.reset();
        m_view.hide();
        m_view.flush();
    }

    void takeKeyboard() override {
        if (!m_view.isVisible())
            return;
        const auto own = static_cast<xcb_window_t>(m_view.winId());
        if (const xcb_window_t focused = m_activator().focusedWindow(); focused != own)
            m_focusBefore = focused;
        flushQtConnection(); // a window that is not on the screen yet cannot have it
        m_activator().focusWindow(own);
    }

    void returnKeyboard() override {
        const auto before = std::exchange(m_focusBefore, xcb_window_t{XCB_WINDOW_NONE});
        const auto own = static_cast<xcb_window_t>(m_view.winId());
        if (before == XCB_WINDOW_NONE || m_activator().focusedWindow() != own)
            return; // the person has given it to somebody meanwhile
        m_activator().focusWindow(before);
        if (m_activator().focusedWindow() == own) // who had it has gone
            m_activator().focusWindow(XCB_INPUT_FOCUS_POINTER_ROOT);
    }

    void setContentView(QWidget *content) override { m_view.setContent(content); }

private:
    void makeWayFor(const QWindow *focused) {
        const QWindow *own = m_view.windowHandle();
        if (!m_view.isVisible() || focused == own)
            return;
        if (focused && isFloating(*focused)) {
            if (!flippedRect(m_view.frame()).intersects(QRectF(focused->geometry())))
                return;
            m_hasMadeWay = true;
            stackBelow(*own, m_stacking.frameOf(*focused));
        } else if (std::exchange(m_hasMadeWay, false)) {
            keepInFront();
        }
    }

    X11EdgeWindows::Activator m_activator;
    X11EdgeView m_view;
    X11Stacking m_stacking;
    PanelDescription m_forDesktop;
    std::unique_ptr<X11Compositor> m_compositor; ///< watched while the window is shown
    xcb_window_t m_focusBefore = XCB_WINDOW_NONE;
    bool m_hasMadeWay = false; ///< it lies below a panel that has the keyboard
};

} // namespace

std::unique_ptr<EdgeWindow> X11EdgeWindows::makeEdgeWindow(const EdgeWindowDescription &description) {
    return std::make_unique<X11EdgeWindow>(description, m_activator);
}

} // namespace tavrine
