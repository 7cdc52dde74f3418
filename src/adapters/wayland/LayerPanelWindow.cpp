#include "adapters/wayland/LayerPanelWindow.h"

#include "adapters/linux/ScreenPlane.h"
#include "adapters/wayland/LayerPanelView.h"
#include "adapters/wayland/LayerParts.h"
#include "adapters/wayland/WindowNumbers.h"

#include <QApplication>

namespace tavrine {
namespace {

class LayerPanelWindow final : public PanelWindow {
public:
    LayerPanelWindow(LayerParts &parts, const PanelDescription &description)
        : m_canBecomeKey(description.canBecomeKey), m_number(nextWindowNumber()),
          m_view(parts.shell, parts.stack, description) {}

    [[nodiscard]] qint64 windowNumber() const override { return m_number; }
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
        m_view.setAlpha(alpha);
    }
    void makeKeyAndOrderFront() override { m_view.order(m_canBecomeKey); }
    void orderFrontRegardless() override { m_view.order(false); }
    void orderOut() override {
        if (!m_view.isVisible())
            return m_view.orderOut();
        m_view.withdrawQuestion();
        m_view.orderOut();
    }
    void setContentView(QWidget *content) override { m_view.setContent(content); }
    void setIgnoresMouseEvents(bool ignores) override { m_view.setIgnoresMouseEvents(ignores); }
    void setOnMoved(std::function<void()> onMoved) override { m_view.onMoved = std::move(onMoved); }
    void setOnClosed(std::function<void()> onClosed) override { m_view.onClosed = std::move(onClosed); }
    void compositingChanged() override {} // it never does

private:
    const bool m_canBecomeKey;
    const qint64 m_number;
    LayerPanelView m_view;
    double m_alpha = 1.0;
};

} // namespace

std::unique_ptr<PanelWindow> LayerPanelWindows::makePanel(const PanelDescription &description) {
    return std::make_unique<LayerPanelWindow>(m_parts, description);
}

bool LayerPanelWindows::isAsking() const {
    return QApplication::activeModalWidget() != nullptr;
}

} // namespace tavrine
