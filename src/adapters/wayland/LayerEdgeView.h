#pragma once

#include "adapters/linux/EdgeView.h"
#include "adapters/wayland/LayerHost.h"
#include "adapters/wayland/LayerRole.h"
#include "adapters/wayland/LayerStack.h"

#include <QElapsedTimer>

#include <memory>
#include <optional>

namespace tavrine {

/// The toolkit's window of a window at the edge, on the layer shell. Owned by its window; main thread.
///
/// A surface that takes no mouse hears of no drag either, so at rest the uppermost row of what is shown takes it. A
/// pointer that rests there is let through after a moment, and a click at once, so that the second one of two and every
/// later one reach what lies below.
class LayerEdgeView final : public EdgeView, public LayerHost {
public:
    LayerEdgeView(LayerShell &shell, LayerStack &stack, const EdgeWindowDescription &description);
    ~LayerEdgeView() override;

    void appear();
    void vanish();
    void takeKeyboard();
    void returnKeyboard();
    [[nodiscard]] const LayerRole *role() const override { return m_role.get(); }

protected:
    void putAt(const QRect &place) override;
    void shapeInput() override;
    bool event(QEvent *event) override;
    /// Of its window: whatever part of it is dragged over.
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    [[nodiscard]] LayerPlace place() const;
    [[nodiscard]] QScreen *screenOfPlace() const;
    [[nodiscard]] QRect inputRect() const;
    void stand(bool wantsKeyboard);
    void fall();
    [[nodiscard]] bool hasUnwantedKeyboard() const;
    [[nodiscard]] bool isHeld() const;
    void lookWhetherLeft();
    void stepAside();

    LayerShell &m_shell;
    LayerStack &m_stack;
    std::unique_ptr<LayerRole> m_role;
    std::optional<LayerStack::Place> m_standing; ///< while it is shown
    bool m_isAppearing = false;
    bool m_isAside = false;
    bool m_isDraggedOver = false;
    QTimer m_waits; ///< until it lets the mouse through
    QTimer m_comesBack;
    QTimer m_leaves; ///< runs for a moment after the keyboard was given back
    QElapsedTimer m_sinceReturn;
    int m_returns = 0; ///< of the window, to be without the keyboard
};

} // namespace tavrine
