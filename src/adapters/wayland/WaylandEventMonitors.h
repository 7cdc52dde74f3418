#pragma once

#include "adapters/linux/MonitorList.h"

#include <QObject>

#include <map>

class QKeyEvent;

namespace tavrine {

/// Monitors over the toolkit's events. A compositor tells no program what goes to the others, so global monitors wait
/// for nothing.
///
/// Lives on the main thread. Modifiers are told from the keys that go down and up in this program's windows.
class WaylandEventMonitors final : public QObject, public EventMonitors {
public:
    WaylandEventMonitors();
    ~WaylandEventMonitors() override;

    [[nodiscard]] bool tellsOfOthers() const override { return false; }
    [[nodiscard]] std::unique_ptr<EventMonitor> addGlobalMonitor(quint32 mask, GlobalHandler handler) override;
    [[nodiscard]] std::unique_ptr<EventMonitor> addLocalMonitor(quint32 mask, LocalHandler handler) override;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void noteModifier(const QKeyEvent &key);

    MonitorList m_local;
    std::map<quint32, quint32> m_held; ///< the key's position to the flag that it had when it was pressed
};

} // namespace tavrine
