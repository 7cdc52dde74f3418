#include "recording/OverlayWindow.h"

#include "base/Time.h"

#include <utility>

namespace tavrine {

void OverlayWindow::show(const PanelDescription &description, const QRectF &frame, QWidget *content,
                         Keyboard keyboard) {
    auto window = m_windows.makePanel(description);
    window->setContentView(content);
    window->setFrame(frame);
    if (keyboard == Keyboard::taken)
        window->makeKeyAndOrderFront();
    else
        window->orderFrontRegardless();
    tearDown(std::exchange(m_window, std::move(window)));
}

void OverlayWindow::clear() {
    if (!m_window)
        return;
    m_window->orderOut();
    tearDown(std::move(m_window));
}

void OverlayWindow::hide() {
    m_time.async(this, [this] { clear(); });
}

void OverlayWindow::tearDown(std::unique_ptr<PanelWindow> window) {
    if (!window)
        return;
    m_tornDown.push_back(std::move(window));
    m_time.async(this, [this] { m_tornDown.clear(); });
}

} // namespace tavrine
