#pragma once

#include "ports/Alerts.h"

namespace tavrine {

/// Questions as modal windows of the desktop's own kind. Lives on the main thread. Return takes the first button,
/// Escape the last; in the text of a question Return is a new line and Ctrl+Return takes the first button.
class AlertView final : public Alerts {
public:
    bool runModal(const Alert &alert) override;
    std::optional<QString> runModalForText(const Alert &alert, int width, int height) override;
};

} // namespace tavrine
