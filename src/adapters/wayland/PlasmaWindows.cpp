#include "adapters/wayland/PlasmaWindows.h"

#include "adapters/wayland/WaylandClient.h"

#include <wayland/plasma-window-management.h>

namespace tavrine {
namespace {

/// The last in which a window comes with a number.
constexpr int usedVersion = 12;
constexpr WaylandLink::Wait longestPlasmaAnswer{100};
constexpr auto activeState = ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE;
constexpr auto minimizedState = ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_MINIMIZED;

} // namespace

bool PlasmaWindows::areOffered(const WaylandLink &link) {
    return link.find(org_kde_plasma_window_management_interface.name) != nullptr;
}

PlasmaWindows::PlasmaWindows(std::unique_ptr<WaylandClient> client) : m_client(std::move(client)) {
    using Management = org_kde_plasma_window_management;
    static constexpr org_kde_plasma_window_management_listener listener{
        .show_desktop_changed = [](void *, Management *, std::uint32_t) {},
        .window = [](void *self, Management *, std::uint32_t id) { static_cast<PlasmaWindows *>(self)->added(id); },
        .stacking_order_changed = [](void *, Management *, wl_array *) {},
        .stacking_order_uuid_changed = [](void *, Management *, const char *) {},
        .window_with_uuid = [](void *, Management *, std::uint32_t, const char *) {}};
    WaylandLink &link = m_client->link();
    m_management = link.bind<Management>(org_kde_plasma_window_management_interface, usedVersion);
    org_kde_plasma_window_management_add_listener(m_management, &listener, this);
    m_client->setOnLost([this] {
        m_entries.clear();
        removeAll();
    });
    // The windows come with the first answer, what each is with the second.
    link.finish();
    link.finish();
}

PlasmaWindows::~PlasmaWindows() {
    for (const auto &[number, entry] : m_entries)
        org_kde_plasma_window_destroy(entry.handle);
    if (m_management)
        org_kde_plasma_window_management_destroy(m_management);
}

bool PlasmaWindows::refresh() {
    return m_client->link().finish(longestPlasmaAnswer) || !m_client->isConnected();
}

void PlasmaWindows::added(std::uint32_t id) {
    const quint32 number = nextNumber();
    auto *const handle = org_kde_plasma_window_management_get_window(m_management, id);
    Entry &entry = m_entries.try_emplace(number, Entry{*this, handle, {}}).first->second;
    entry.told.number = number;
    listen(entry);
    m_client->flush();
}

void PlasmaWindows::listen(Entry &window) {
    using Window = org_kde_plasma_window;
    static constexpr auto of = [](void *entry) -> Entry & { return *static_cast<Entry *>(entry); };
    static constexpr auto text = [](void *entry, QString WaylandWindow::*member, const char *value) {
        of(entry).told.*member = QString::fromUtf8(value);
        of(entry).owner.changed(of(entry));
    };
    static constexpr org_kde_plasma_window_listener listener{
        .title_changed = [](void *entry, Window *, const char *title) { text(entry, &WaylandWindow::title, title); },
        .app_id_changed = [](void *entry, Window *, const char *id) { text(entry, &WaylandWindow::applicationId, id); },
        .state_changed =
            [](void *entry, Window *, std::uint32_t flags) {
                of(entry).told.isActive = flags & activeState;
                of(entry).isPanel = flags & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_SKIPTASKBAR;
                if (of(entry).told.isActive && !of(entry).isPanel)
                    of(entry).owner.noteActive(of(entry).told.number);
                of(entry).owner.changed(of(entry));
            },
        .virtual_desktop_changed = [](void *, Window *, std::int32_t) {},
        .themed_icon_name_changed = [](void *, Window *, const char *) {},
        .unmapped = [](void *entry, Window *) { of(entry).owner.unmapped(of(entry)); },
        .initial_state =
            [](void *entry, Window *) {
                of(entry).isWhole = true;
                of(entry).owner.changed(of(entry));
            },
        .parent_window = [](void *, Window *, Window *) {},
        .geometry = [](void *, Window *, std::int32_t, std::int32_t, std::uint32_t, std::uint32_t) {},
        .icon_changed = [](void *, Window *) {},
        .pid_changed = [](void *entry, Window *, std::uint32_t pid) { of(entry).told.processIdentifier = pid; },
        .virtual_desktop_entered = [](void *, Window *, const char *) {},
        .virtual_desktop_left = [](void *, Window *, const char *) {},
        .application_menu = [](void *, Window *, const char *, const char *) {},
        .activity_entered = [](void *, Window *, const char *) {},
        .activity_left = [](void *, Window *, const char *) {},
        .resource_name_changed = [](void *, Window *, const char *) {}};
    org_kde_plasma_window_add_listener(window.handle, &listener, &window);
}

void PlasmaWindows::changed(Entry &entry) {
    if (!entry.isWhole)
        return;
    WaylandWindow *const window = known(entry.told.number);
    if (window)
        *window = entry.told;
    else if (!entry.isPanel)
        add(entry.told);
    tell();
}

void PlasmaWindows::unmapped(Entry &entry) {
    const quint32 number = entry.told.number;
    org_kde_plasma_window_destroy(entry.handle);
    m_entries.erase(number);
    remove(number);
}

void PlasmaWindows::setState(quint32 number, std::uint32_t flags) {
    const auto found = m_entries.find(number);
    if (found == m_entries.end() || !m_client->isConnected())
        return;
    org_kde_plasma_window_set_state(found->second.handle, flags, flags);
    m_client->flush();
}

void PlasmaWindows::activate(quint32 number) {
    setState(number, activeState);
}

void PlasmaWindows::minimize(quint32 number) {
    setState(number, minimizedState);
}

} // namespace tavrine
