#include "adapters/wayland/WlrWindows.h"

#include "adapters/wayland/WaylandClient.h"

#include <algorithm>
#include <span>

#include <wayland/wlr-foreign-toplevel-management-unstable-v1.h>

namespace tavrine {
namespace {

constexpr int highestManager = 3;
constexpr WaylandLink::Wait longestAnswer{100};

} // namespace

bool WlrWindows::areOffered(const WaylandLink &link) {
    return link.find(zwlr_foreign_toplevel_manager_v1_interface.name) != nullptr;
}

WlrWindows::WlrWindows(std::unique_ptr<WaylandClient> client) : m_client(std::move(client)) {
    static constexpr zwlr_foreign_toplevel_manager_v1_listener listener{
        .toplevel = [](void *self, zwlr_foreign_toplevel_manager_v1 *,
                       Handle *handle) { static_cast<WlrWindows *>(self)->added(handle); },
        .finished = [](void *, zwlr_foreign_toplevel_manager_v1 *) {}};
    WaylandLink &link = m_client->link();
    m_seat = link.bind<wl_seat>(wl_seat_interface, 1);
    m_manager = link.bind<zwlr_foreign_toplevel_manager_v1>(zwlr_foreign_toplevel_manager_v1_interface, highestManager);
    zwlr_foreign_toplevel_manager_v1_add_listener(m_manager, &listener, this);
    m_client->setOnLost([this] {
        m_entries.clear();
        removeAll();
    });
    // The windows come with the first answer, what each is with the second.
    link.finish();
    link.finish();
}

WlrWindows::~WlrWindows() {
    for (const auto &[number, entry] : m_entries)
        zwlr_foreign_toplevel_handle_v1_destroy(entry.handle);
    if (m_manager)
        zwlr_foreign_toplevel_manager_v1_destroy(m_manager);
    if (m_seat)
        wl_seat_destroy(m_seat);
}

bool WlrWindows::refresh() {
    return m_client->link().finish(longestAnswer) || !m_client->isConnected();
}

void WlrWindows::added(Handle *handle) {
    static constexpr zwlr_foreign_toplevel_handle_v1_listener listener{
        .title = [](void *entry, Handle *,
                    const char *title) { static_cast<Entry *>(entry)->told.title = QString::fromUtf8(title); },
        .app_id = [](void *entry, Handle *,
                     const char *id) { static_cast<Entry *>(entry)->told.applicationId = QString::fromUtf8(id); },
        .output_enter = [](void *, Handle *, wl_output *) {},
        .output_leave = [](void *, Handle *, wl_output *) {},
        .state =
            [](void *entry, Handle *, wl_array *states) {
                const std::span all(static_cast<const std::uint32_t *>(states->data),
                                    states->size / sizeof(std::uint32_t));
                auto &self = *static_cast<Entry *>(entry);
                self.told.isActive =
                    std::ranges::find(all, ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED) != all.end();
                if (self.told.isActive)
                    self.owner.noteActive(self.told.number);
            },
        .done =
            [](void *entry, Handle *) {
                auto &self = *static_cast<Entry *>(entry);
                self.owner.done(self);
            },
        .closed =
            [](void *entry, Handle *) {
                auto &self = *static_cast<Entry *>(entry);
                self.owner.closed(self);
            },
        .parent = [](void *, Handle *, Handle *) {}};
    const quint32 number = nextNumber();
    Entry &entry = m_entries.try_emplace(number, Entry{*this, handle, {}}).first->second;
    entry.told.number = number;
    zwlr_foreign_toplevel_handle_v1_add_listener(handle, &listener, &entry);
}

void WlrWindows::done(Entry &entry) {
    if (WaylandWindow *const window = known(entry.told.number))
        *window = entry.told;
    else
        add(entry.told);
    tell();
}

void WlrWindows::closed(Entry &entry) {
    const quint32 number = entry.told.number;
    zwlr_foreign_toplevel_handle_v1_destroy(entry.handle);
    m_entries.erase(number);
    remove(number);
}

WlrWindows::Handle *WlrWindows::handleOf(quint32 number) const {
    const auto found = m_entries.find(number);
    return found == m_entries.end() || !m_client->isConnected() ? nullptr : found->second.handle;
}

void WlrWindows::activate(quint32 number) {
    if (Handle *const handle = handleOf(number); handle && m_seat) {
        zwlr_foreign_toplevel_handle_v1_activate(handle, m_seat);
        m_client->flush();
    }
}

void WlrWindows::minimize(quint32 number) {
    if (Handle *const handle = handleOf(number)) {
        zwlr_foreign_toplevel_handle_v1_set_minimized(handle);
        m_client->flush();
    }
}

} // namespace tavrine
