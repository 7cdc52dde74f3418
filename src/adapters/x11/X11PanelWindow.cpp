#include "adapters/x11/X11PanelWindow.h"

#include "adapters/x11/X11PanelView.h"
#include "adapters/x11/X11Screens.h"
#include "adapters/x11/X11WindowDescription.h"

#include <QApplication>
#include <QTimer>
#include <QWindow>

namespace tavrine {
namespace {

constexpr std::chrono::milliseconds activationCheck{150}; // a window manager at work needs 5 to 50
constexpr int activationChecks = 3;

class X11PanelWindow final : public PanelWindow {
public:
    X11PanelWindow(const PanelDescription &description, X11ApplicationActivator &activator)
        : m_description(description), m_activator(activator), m_view(description) {}

    [[nodiscard]] qint64 windowNumber() const override { return static_cast<qint64>(m_view.winId()); }
    [[nodiscard]] bool isVisible() const override { return m_view.isVisible(); }
    [[nodiscard]] QRectF frame() const override { return flippedRect(m_view.frame()); }
    void setFrame(const QRectF &frame) override {
        const QRectF flipped = flippedRect(frame);
        // Place and size by themselves: a frame that lies between pixels is no larger for that.
        m_view.setFrame({flipped.topLeft().toPoint(), flipped.size().toSize()});
    }
    [[nodiscard]] double alpha() const override { return m_alpha; }
    void setAlpha(double alpha) override {
        m_alpha = alpha;
        m_view.setWindowOpacity(alpha);
    }

    void makeKeyAndOrderFront() override {
        if (!m_description.canBecomeKey) {
            orderFrontRegardless();
            return;
        }
        const bool isManaged = m_activator.hasWindowManager();
        const auto own = static_cast<xcb_window_t>(m_view.winId());
        if (const auto focused = m_activator.focusedWindow(); !isManaged && focused != own)
            m_focusBefore = focused;
        const quint32 now = m_activator.serverTime();
        orderFrontRegardless();
        setUserTime(*m_view.windowHandle(), now);
        flushQtConnection(); // the window must be known before it can be given the keyboard
        m_activator.activateWindow(own);
        // Qt notices that a window lost the keyboard a moment after it is hidden. A panel that is shown before that
        // counts as focused still, and would not be told when it is.
        if (QGuiApplication::focusWindow() == m_view.windowHandle() && !m_view.isActiveWindow())
            QApplication::setActiveWindow(&m_view);
        QTimer::singleShot(activationCheck, &m_view, [this] { insistOnKeyboard(activationChecks); });
    }

    void orderFrontRegardless() override {
        const bool isNew = !m_view.isVisible();
        if (isNew) {
            m_view.setComposited(m_activator.isComposited());
            describeToDesktop(*m_view.windowHandle(), m_description, m_view.room());
            m_view.insistOnFrame();
        }
        m_view.show();
        m_view.raise();
        if (isNew)
            repeatToWindowManager(*m_view.windowHandle(), m_description);
    }

    void orderOut() override {
        if (!m_view.isVisible())
            return;
        m_view.withdrawQuestion();
        // Without a window manager the keyboard would be lost with the window; with one it is given back by it.
        if (const auto before = std::exchange(m_focusBefore, xcb_window_t{XCB_WINDOW_NONE});
            before != XCB_WINDOW_NONE && m_activator.focusedWindow() == m_view.winId())
            m_activator.focusWindow(before);
        m_view.hide();
        flushQtConnection();
    }

    void setContentView(QWidget *content) override { m_view.setContent(content); }

    void setIgnoresMouseEvents(bool ignores) override {
        m_view.setIgnoresMouseEvents(ignores);
        flushQtConnection();
    }

    void setOnMoved(std::function<void()> onMoved) override { m_view.onMoved = std::move(onMoved); }
    void setOnClosed(std::function<void()> onClosed) override { m_view.onClosed = std::move(onClosed); }
    void compositingChanged() override { m_view.setComposited(m_activator.isComposited()); }

private:
    /// A request to be activated is lost when the keyboard changes hands between its time and the moment at which a
    /// busy window manager comes to it. A panel that is shown and did not get the keyboard asks again.
    void insistOnKeyboard(int checksLeft) {
        const auto own = static_cast<xcb_window_t>(m_view.winId());
        if (checksLeft == 0 || !m_view.isVisible() || m_activator.focusedWindow() == own)
            return;
        m_activator.activateWindow(own);
        QTimer::singleShot(activationCheck, &m_view, [this, checksLeft] { insistOnKeyboard(checksLeft - 1); });
    }

    const PanelDescription m_description;
    X11ApplicationActivator &m_activator;
    X11PanelView m_view;
    double m_alpha = 1.0;
    xcb_window_t m_focusBefore = XCB_WINDOW_NONE;
};

} // namespace

std::unique_ptr<PanelWindow> X11PanelWindows::makePanel(const PanelDescription &description) {
    return std::make_unique<X11PanelWindow>(description, m_activator);
}

bool X11PanelWindows::isAsking() const {
    return QApplication::activeModalWidget() != nullptr;
}

bool X11PanelWindows::isComposited() const {
    return m_activator.isComposited();
}

} // namespace tavrine
