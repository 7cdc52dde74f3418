#pragma once

#include "adapters/wayland/WaylandWindows.h"

#include <map>

struct org_kde_plasma_window;
struct org_kde_plasma_window_management;

namespace tavrine {

class WaylandClient;
class WaylandLink;

/// Windows by Plasma's window management, which KWin offers to the programs whose desktop files ask for it.
class PlasmaWindows final : public WaylandWindows {
public:
    [[nodiscard]] static bool areOffered(const WaylandLink &link);
    explicit PlasmaWindows(std::unique_ptr<WaylandClient> client);
    ~PlasmaWindows() override;

    bool refresh() override;
    void activate(quint32 number) override;
    void minimize(quint32 number) override;

private:
    struct Entry {
        PlasmaWindows &owner;
        org_kde_plasma_window *handle;
        WaylandWindow told;
        bool isPanel = false; ///< or something else that is in no task bar
        bool isWhole = false; ///< all was told that is known of it at first
    };

    void added(std::uint32_t id);
    void listen(Entry &window);
    void changed(Entry &entry);
    void unmapped(Entry &entry);
    void setState(quint32 number, std::uint32_t flags);

    std::unique_ptr<WaylandClient> m_client;
    org_kde_plasma_window_management *m_management = nullptr;
    std::map<quint32, Entry> m_entries; ///< by the window's number
};

} // namespace tavrine
