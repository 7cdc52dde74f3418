#pragma once

#include "adapters/gnome/GnomeShell.h"
#include "adapters/x11/X11EventMonitors.h"

namespace tavrine {

/// What is done with modifiers and mouse over the programs of Wayland, as the extension sees it: the shell is looked at
/// every few milliseconds while the person does something, and each difference is told as an event. Keys and wheels
/// over other programs are told by nobody here, and everything in this program's own windows by the toolkit.
///
/// Without the extension what the X server hears is all there is: what goes to its programs.
///
/// Lives on the main thread.
class GnomeEventMonitors final : public QObject, public EventMonitors {
public:
    explicit GnomeEventMonitors(GnomeShell &shell);

    [[nodiscard]] std::unique_ptr<EventMonitor> addGlobalMonitor(quint32 mask, GlobalHandler handler) override;
    [[nodiscard]] std::unique_ptr<EventMonitor> addLocalMonitor(quint32 mask, LocalHandler handler) override;

private:
    class Monitor;
    struct Entry {
        quint32 mask = 0;
        bool isLocal = false;
        GlobalHandler handler;
    };

    [[nodiscard]] std::unique_ptr<Monitor> add(Entry entry);
    void onInput(const GnomePointer &before);
    void tell(quint32 type, quint32 flags);

    GnomeShell &m_shell;
    X11EventMonitors m_onX;
    std::vector<std::weak_ptr<Entry>> m_entries;
};

} // namespace tavrine
