#pragma once

#include "adapters/linux/MonitorList.h"

#include <QObject>

#include <functional>
#include <map>

class QKeyEvent;

namespace tavrine {

struct LayerParts;

/// Monitors over the toolkit's events. A compositor tells no program what goes to the others, so of all that global
/// monitors wait for they are told of a press alone, and that of one beside a floating window with the keyboard: it
/// goes to the clear windows of `ClickCatchers` instead.
///
/// Lives on the main thread. Modifiers are told from the keys that go down and up in this program's windows; whether
/// Caps Lock is on, from each of these.
class WaylandEventMonitors final : public QObject, public EventMonitors {
public:
    /// `parts` is asked for when the first press is waited for, and outlives this. Null: none is heard of.
    explicit WaylandEventMonitors(std::function<LayerParts &()> parts = nullptr);
    ~WaylandEventMonitors() override;

    [[nodiscard]] bool tellsOfOthers() const override { return false; }
    [[nodiscard]] std::unique_ptr<EventMonitor> addGlobalMonitor(quint32 mask, GlobalHandler handler) override;
    [[nodiscard]] std::unique_ptr<EventMonitor> addLocalMonitor(quint32 mask, LocalHandler handler) override;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void noteModifier(const QKeyEvent &key);

    void watchPresses();

    const std::function<LayerParts &()> m_parts;
    LayerParts *m_watched = nullptr; ///< null before the first press was waited for
    MonitorList m_global;
    MonitorList m_local;
    std::map<quint32, quint32> m_held; ///< the key's position to the flag that it had when it was pressed
};

} // namespace tavrine
