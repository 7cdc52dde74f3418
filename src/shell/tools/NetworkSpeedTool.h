#pragma once

#include "shell/tools/Tool.h"
#include "utilities/meter/NetworkMonitor.h"

namespace tavrine {

class Shell;

/// The speed meter. It runs from the moment at which the tool is made; what it tells is shown by `StatusDisplay`.
class NetworkSpeedTool final : public Tool {
public:
    explicit NetworkSpeedTool(Shell &shell);

    void launch(bool isOn) override;
    void setOn(bool isOn) override;

    [[nodiscard]] NetworkMonitor &monitor() { return m_monitor; }

private:
    NetworkMonitor m_monitor;
};

} // namespace tavrine
