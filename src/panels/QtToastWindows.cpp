#include "panels/QtToastWindows.h"

#include "look/MotionClock.h"
#include "panels/ToastView.h"
#include "ports/PanelWindow.h"

#include <algorithm>

namespace tavrine {
namespace {

class QtToastWindow final : public ToastWindow {
public:
    QtToastWindow(PanelWindows &panels, const ToastDescription &description)
        : m_isComposited(panels.isComposited()), m_size(description.size),
          m_panel(panels.makePanel({.title = {},
                                    .contentSize = description.size,
                                    // Above full-screen windows too, as the collection behaviour asks.
                                    .level = std::max(description.level, windowLevel::status),
                                    .collectionBehavior = description.collectionBehavior,
                                    .canBecomeKey = false,
                                    .hasShadow = false,
                                    .ignoresMouseEvents = true})) {
        auto view = std::make_unique<ToastView>(description.message, description.icon);
        view->setFixedSize(description.size.toSize());
        m_panel->setContentView(view.release());
    }
    ~QtToastWindow() override { m_panel->orderOut(); }

    [[nodiscard]] QPointF frameOrigin() const override { return m_panel->frame().topLeft(); }
    void setFrameOrigin(QPointF origin) override { m_panel->setFrame(QRectF(origin, m_size)); }
    void setAlpha(double alpha) override { m_panel->setAlpha(alpha); }
    void orderFront() override { m_panel->orderFrontRegardless(); }

    void animate(double alpha, QPointF origin, Seconds duration) override {
        const double fromAlpha = m_panel->alpha();
        const QPointF from = frameOrigin();
        const auto step = [this, fromAlpha, alpha, from, origin](double part) {
            setAlpha(fromAlpha + (alpha - fromAlpha) * part);
            setFrameOrigin(from + (origin - from) * part);
        };
        if (m_isComposited) {
            m_motion.start(duration, look::defaultTiming, step);
        } else {
            m_motion.stop();
            step(1);
        }
    }

private:
    bool m_isComposited;
    QSizeF m_size;
    std::unique_ptr<PanelWindow> m_panel;
    look::Motion m_motion; // stops before the panel goes
};

} // namespace

std::unique_ptr<ToastWindow> QtToastWindows::makeToastWindow(const ToastDescription &description) {
    return std::make_unique<QtToastWindow>(m_panels, description);
}

} // namespace tavrine
