#pragma once

#include "ports/ToastWindow.h"

namespace tavrine {

class PanelWindows;

/// Toasts as panels that take neither keys nor clicks, above everything, on every desktop. Lives on the main thread;
/// outlives its toasts, and the panels' maker outlives it.
///
/// Fades and slides follow the look's clock. Where nothing may move, and where no compositor runs, a toast is at the
/// end of its animation at once.
class QtToastWindows final : public ToastWindows {
public:
    explicit QtToastWindows(PanelWindows &panels) : m_panels(panels) {}

    [[nodiscard]] std::unique_ptr<ToastWindow> makeToastWindow(const ToastDescription &description) override;

private:
    PanelWindows &m_panels;
};

} // namespace tavrine
