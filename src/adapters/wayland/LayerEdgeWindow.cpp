#include "adapters/wayland/LayerEdgeWindow.h"

#include "adapters/wayland/LayerEdgeView.h"
#include "adapters/wayland/LayerParts.h"
#include "adapters/wayland/WindowNumbers.h"

namespace tavrine {
namespace {

class LayerEdgeWindow final : public EdgeWindow {
public:
    LayerEdgeWindow(LayerParts &parts, const EdgeWindowDescription &description)
        : m_number(nextWindowNumber()), m_view(parts.shell, parts.stack, description) {}

    [[nodiscard]] qint64 windowNumber() const override { return m_number; }
    [[nodiscard]] bool isVisible() const override { return m_view.isVisible(); }
    [[nodiscard]] QRectF frame() const override { return m_view.frame(); }
    void setFrame(const QRectF &frame, std::chrono::milliseconds duration) override {
        m_view.setFrame(frame, duration);
    }
    [[nodiscard]] bool ignoresMouseEvents() const override { return m_view.ignoresMouseEvents(); }
    void setIgnoresMouseEvents(bool ignores) override { m_view.setIgnoresMouseEvents(ignores); }
    void orderFrontRegardless() override { m_view.appear(); }
    void keepInFront() override { m_view.appear(); }
    void orderOut() override { m_view.vanish(); }
    void takeKeyboard() override { m_view.takeKeyboard(); }
    void returnKeyboard() override { m_view.returnKeyboard(); }
    void setContentView(QWidget *content) override { m_view.setContent(content); }

private:
    const qint64 m_number;
    LayerEdgeView m_view;
};

} // namespace

std::unique_ptr<EdgeWindow> LayerEdgeWindows::makeEdgeWindow(const EdgeWindowDescription &description) {
    return std::make_unique<LayerEdgeWindow>(m_parts, description);
}

} // namespace tavrine
