#pragma once

#include "adapters/linux/PanelView.h"
#include "adapters/wayland/LayerHost.h"
#include "adapters/wayland/LayerRole.h"
#include "adapters/wayland/LayerStack.h"

#include <memory>
#include <optional>

struct wl_callback;

namespace tavrine {

/// The toolkit's window of a panel on the layer shell. Owned by its panel; main thread.
///
/// Its surface has a role while it is shown, on the screen on which most of the panel lies. It is moved to another by
/// being shown anew there, but not while the person drags it.
class LayerPanelView final : public PanelView, public LayerHost {
public:
    LayerPanelView(LayerShell &shell, LayerStack &stack, const PanelDescription &description);
    ~LayerPanelView() override;

    void setFrame(const QRect &frame);
    void setAlpha(double alpha);
    void setIgnoresMouseEvents(bool ignores);
    /// In front of the others; with the keyboard or without.
    void order(bool wantsKeyboard);
    void orderOut();
    [[nodiscard]] const LayerRole *role() const override { return m_role.get(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    [[nodiscard]] QScreen *screenOfFrame() const;
    [[nodiscard]] LayerPlace place() const;
    void appear();
    void vanish();
    void closed();
    void showInput();
    void fade();
    void sendMove();
    void awaitMove();
    void moved();

    LayerShell &m_shell;
    LayerStack &m_stack;
    std::optional<LayerStack::Place> m_standing; ///< while it is ordered in
    std::unique_ptr<LayerRole> m_role;
    double m_factor = 0; ///< the compositor's points in one of the toolkit's, when it was last shown
    double m_alpha = 1;
    bool m_ignoresMouseEvents;

    std::optional<QPoint> m_grip; ///< where the person holds it, in the window
    QPoint m_known;               ///< the window's place, as the compositor has it for what it tells of the pointer,
    QPoint m_sent;                ///< and as it was told last
    wl_callback *m_answer = nullptr;
    int m_answersLeft = 0;
};

} // namespace tavrine
