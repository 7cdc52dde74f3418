#pragma once

#include "adapters/wayland/WaylandWindows.h"

#include <map>

struct wl_seat;
struct zwlr_foreign_toplevel_handle_v1;
struct zwlr_foreign_toplevel_manager_v1;

namespace tavrine {

class WaylandClient;
class WaylandLink;

/// Windows by wlr-foreign-toplevel-management: the same on sway and every other compositor of its family. It tells no
/// process, so two runs of one program are one. Sway's own socket would tell it, on sway alone.
class WlrWindows final : public WaylandWindows {
public:
    [[nodiscard]] static bool areOffered(const WaylandLink &link);
    explicit WlrWindows(std::unique_ptr<WaylandClient> client);
    ~WlrWindows() override;

    bool refresh() override;
    void activate(quint32 number) override;
    void minimize(quint32 number) override;

private:
    using Handle = zwlr_foreign_toplevel_handle_v1;
    struct Entry {
        WlrWindows &owner;
        Handle *handle;
        WaylandWindow told; ///< since the last whole change
    };

    void added(Handle *handle);
    void done(Entry &entry);
    void closed(Entry &entry);
    [[nodiscard]] Handle *handleOf(quint32 number) const;

    std::unique_ptr<WaylandClient> m_client;
    zwlr_foreign_toplevel_manager_v1 *m_manager = nullptr;
    wl_seat *m_seat = nullptr;
    std::map<quint32, Entry> m_entries; ///< by the window's number
};

} // namespace tavrine
