#include "adapters/wayland/WaylandWindows.h"

#include "adapters/wayland/PlasmaWindows.h"
#include "adapters/wayland/WaylandClient.h"
#include "adapters/wayland/WlrWindows.h"

#include <algorithm>

namespace tavrine {

std::shared_ptr<WaylandWindows> WaylandWindows::make(std::shared_ptr<WaylandReader> reader) {
    auto client = std::make_unique<WaylandClient>(std::move(reader));
    if (WlrWindows::areOffered(client->link()))
        return std::make_shared<WlrWindows>(std::move(client));
    if (PlasmaWindows::areOffered(client->link()))
        return std::make_shared<PlasmaWindows>(std::move(client));
    return std::make_shared<WaylandWindows>();
}

const WaylandWindow *WaylandWindows::active() const {
    const auto found = std::ranges::find_if(m_windows, &WaylandWindow::isActive);
    return found == m_windows.end() ? nullptr : &*found;
}

const WaylandWindow *WaylandWindows::find(quint32 number) const {
    const auto found = std::ranges::find(m_windows, number, &WaylandWindow::number);
    return found == m_windows.end() ? nullptr : &*found;
}

WaylandWindow *WaylandWindows::known(quint32 number) {
    return const_cast<WaylandWindow *>(find(number));
}

WaylandWindows::Following WaylandWindows::follow(std::function<void()> changed) {
    const auto follower = m_followers->insert(m_followers->end(), std::move(changed));
    return {m_followers.get(), [followers = m_followers, follower](void *) { followers->erase(follower); }};
}

void WaylandWindows::add(const WaylandWindow &window) {
    m_windows.push_back(window);
}

void WaylandWindows::remove(quint32 number) {
    std::erase_if(m_windows, [number](const WaylandWindow &window) { return window.number == number; });
    tell();
}

void WaylandWindows::removeAll() {
    m_windows.clear();
    tell();
}

void WaylandWindows::tell() {
    for (const auto &changed : *m_followers)
        changed();
}

} // namespace tavrine
