#include "shell/tools/NetworkSpeedTool.h"

#include "shell/Shell.h"

namespace tavrine {

NetworkSpeedTool::NetworkSpeedTool(Shell &shell)
    : m_monitor({shell.time(), shell.desktop().interfaceCounters(), shell.desktop().pathMonitor()}) {}

void NetworkSpeedTool::launch(bool isOn) {
    if (!isOn)
        m_monitor.stopMeter();
}

void NetworkSpeedTool::setOn(bool isOn) {
    if (isOn)
        m_monitor.startMeter();
    else
        m_monitor.stopMeter();
}

} // namespace tavrine
