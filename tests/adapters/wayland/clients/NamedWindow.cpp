// A program of that name with a window: named_window NAME. Opens one more for each line on standard input. It speaks
// the bare protocol, as a toolkit takes longer to start than everything that is tried with it.

#include "adapters/wayland/WaylandLink.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <list>

#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland/xdg-shell.h>

namespace tavrine {
namespace {

constexpr int pixelBytes = 4;

struct Desk {
    WaylandLink link;
    wl_compositor *compositor = link.bind<wl_compositor>(wl_compositor_interface, 1);
    wl_shm *shm = link.bind<wl_shm>(wl_shm_interface, 1);
    xdg_wm_base *base = link.bind<xdg_wm_base>(xdg_wm_base_interface, 1);
};

class Window {
public:
    Window(Desk &desk, const char *name)
        : m_desk(desk), m_surface(wl_compositor_create_surface(desk.compositor)),
          m_role(xdg_wm_base_get_xdg_surface(desk.base, m_surface)), m_toplevel(xdg_surface_get_toplevel(m_role)) {
        static constexpr xdg_surface_listener roleListener{
            .configure = [](void *self, xdg_surface *role, std::uint32_t serial) {
                xdg_surface_ack_configure(role, serial);
                static_cast<Window *>(self)->paint();
            }};
        static constexpr xdg_toplevel_listener listener{
            .configure =
                [](void *self, xdg_toplevel *, std::int32_t width, std::int32_t height, wl_array *) {
                    auto &window = *static_cast<Window *>(self);
                    window.m_width = width > 0 ? width : window.m_width;
                    window.m_height = height > 0 ? height : window.m_height;
                },
            .close = [](void *, xdg_toplevel *) {},
            .configure_bounds = [](void *, xdg_toplevel *, std::int32_t, std::int32_t) {},
            .wm_capabilities = [](void *, xdg_toplevel *, wl_array *) {}};
        xdg_surface_add_listener(m_role, &roleListener, this);
        xdg_toplevel_add_listener(m_toplevel, &listener, this);
        xdg_toplevel_set_app_id(m_toplevel, name);
        xdg_toplevel_set_title(m_toplevel, name);
        wl_surface_commit(m_surface);
    }
    Window(const Window &) = delete;
    Window &operator=(const Window &) = delete;

private:
    void paint() {
        const int bytes = m_width * m_height * pixelBytes;
        const int file = ::memfd_create("window", MFD_CLOEXEC);
        if (::ftruncate(file, bytes) != 0)
            return;
        wl_shm_pool *const pool = wl_shm_create_pool(m_desk.shm, file, bytes);
        wl_buffer *const buffer =
            wl_shm_pool_create_buffer(pool, 0, m_width, m_height, m_width * pixelBytes, WL_SHM_FORMAT_XRGB8888);
        wl_shm_pool_destroy(pool);
        ::close(file);
        wl_surface_attach(m_surface, buffer, 0, 0);
        wl_surface_damage(m_surface, 0, 0, m_width, m_height);
        wl_surface_commit(m_surface);
    }

    Desk &m_desk;
    wl_surface *m_surface;
    xdg_surface *m_role;
    xdg_toplevel *m_toplevel;
    int m_width = 300;
    int m_height = 100;
};

int run(const char *name) {
    Desk desk;
    if (!desk.base)
        return 1;
    static constexpr xdg_wm_base_listener alive{
        .ping = [](void *, xdg_wm_base *base, std::uint32_t serial) { xdg_wm_base_pong(base, serial); }};
    xdg_wm_base_add_listener(desk.base, &alive, nullptr);
    std::list<Window> windows;
    windows.emplace_back(desk, name);
    std::array<char, 256> lines{};
    int input = STDIN_FILENO;
    while (desk.link.dispatch(std::chrono::hours(1), input)) {
        pollfd asked{input, POLLIN, 0};
        if (::poll(&asked, 1, 0) <= 0)
            continue;
        const auto got = ::read(input, lines.data(), lines.size());
        if (got <= 0)
            input = -1; // nobody asks for more
        for (auto count = std::count(lines.data(), lines.data() + std::max<ssize_t>(got, 0), '\n'); count > 0; --count)
            windows.emplace_back(desk, name);
        desk.link.flush();
    }
    return 0;
}

} // namespace
} // namespace tavrine

int main(int argc, char **argv) {
    return argc == 2 ? tavrine::run(argv[1]) : 2;
}
