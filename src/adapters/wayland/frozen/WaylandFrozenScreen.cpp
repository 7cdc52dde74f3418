#include "adapters/wayland/frozen/WaylandFrozenScreen.h"

#include "adapters/wayland/frozen/OutputPictures.h"
#include "adapters/wayland/frozen/SwayWindows.h"
#include "adapters/wayland/text/TextScale.h"

#include <algorithm>
#include <cmath>

#include <sys/epoll.h>
#include <sys/mman.h>
#include <wayland/viewporter.h>
#include <wayland/wlr-layer-shell-unstable-v1.h>

namespace tavrine {
namespace {

constexpr std::uint32_t compositorVersion = 4; // damage in pixels is new in it
constexpr std::uint32_t layersVersion = 4;
/// Nobody has more screen than this; what a compositor says is not multiplied unchecked.
constexpr qint64 mostPixels = qint64{1} << 28;

} // namespace

bool WaylandFrozenScreen::isOffered(const WaylandLink &link) {
    return link.isOpen() && link.find(zwlr_layer_shell_v1_interface.name);
}

std::unique_ptr<WaylandFrozenScreen> WaylandFrozenScreen::open(std::unique_ptr<WaylandLink> link) {
    std::unique_ptr<WaylandFrozenScreen> screen(new WaylandFrozenScreen(std::move(link)));
    return screen->bindGlobals() && screen->freeze() ? std::move(screen) : nullptr;
}

WaylandFrozenScreen::WaylandFrozenScreen(std::unique_ptr<WaylandLink> link)
    : m_link(std::move(link)), m_sources(::epoll_create1(EPOLL_CLOEXEC)) {}

WaylandFrozenScreen::~WaylandFrozenScreen() {
    hide();
    m_outputs.reset();
    if (m_globals.viewporter)
        wp_viewporter_destroy(m_globals.viewporter);
    if (m_globals.layers)
        zwlr_layer_shell_v1_destroy(m_globals.layers);
    if (m_globals.shm)
        wl_shm_destroy(m_globals.shm);
    if (m_globals.compositor)
        wl_compositor_destroy(m_globals.compositor);
}

bool WaylandFrozenScreen::bindGlobals() {
    m_globals.compositor = m_link->bind<wl_compositor>(wl_compositor_interface, compositorVersion);
    m_globals.shm = m_link->bind<wl_shm>(wl_shm_interface, 1);
    m_globals.layers = m_link->bind<zwlr_layer_shell_v1>(zwlr_layer_shell_v1_interface, layersVersion);
    m_globals.viewporter = m_link->bind<wp_viewporter>(wp_viewporter_interface, 1);
    return m_globals.compositor && m_globals.shm && m_globals.layers &&
           wl_compositor_get_version(m_globals.compositor) >= compositorVersion;
}

bool WaylandFrozenScreen::freeze() {
    m_turn.emplace();
    m_outputs.emplace(*m_link);
    if (!m_link->finish())
        return false;
    m_outputs->note();
    m_frozen = m_outputs->all();
    m_places = placesOf(m_frozen);
    QRect whole;
    for (const QRect &place : m_places)
        whole |= place;
    if (whole.isEmpty() || qint64{whole.width()} * whole.height() > mostPixels)
        return false;
    m_isOnePlane = haveOneScale(m_frozen);
    const double text = textScaleOfSession();
    for (size_t i = 0; i < m_places.size(); ++i)
        m_monitors.push_back({m_places[i], std::max(m_frozen[i].scale() * text, 1.0)});
    OutputPictures pictures(*m_link, m_globals.shm, m_frozen, m_places);
    pictures.begin();
    // While the compositor copies: nothing of it is seen before `show`.
    m_seat.emplace(*m_link, m_globals, [this](wl_surface *surface) -> const OverlaySurface * {
        const auto found = std::find_if(m_surfaces.begin(), m_surfaces.end(),
                                        [surface](const auto &each) { return each->surface() == surface; });
        return found == m_surfaces.end() ? nullptr : found->get();
    });
    for (size_t i = 0; i < m_frozen.size(); ++i)
        m_surfaces.push_back(std::make_unique<OverlaySurface>(m_globals, m_frozen[i], m_places[i]));
    m_link->flush();
    m_canvas = FrameMemory::make(whole.size());
    if (m_canvas)
        ::madvise(m_canvas->pixels().data, m_canvas->bytes(), MADV_POPULATE_WRITE);
    m_picture = pictures.finish(whole.size());
    return m_canvas && m_picture && !hasEnded();
}

void WaylandFrozenScreen::watch(int descriptor) const {
    epoll_event event{.events = EPOLLIN, .data = {}};
    if (descriptor >= 0)
        ::epoll_ctl(m_sources.number(), EPOLL_CTL_ADD, descriptor, &event);
}

void WaylandFrozenScreen::show() {
    const auto areConfigured = [this] {
        return std::all_of(m_surfaces.begin(), m_surfaces.end(),
                           [](const auto &surface) { return surface->isConfigured() || surface->isClosed(); });
    };
    if (!areConfigured())
        static_cast<void>(m_link->finish());
    put({rect()});
    watch(m_link->descriptor());
    watch(m_turn->descriptor());
    watch(m_seat->repetition());
}

void WaylandFrozenScreen::put(const std::vector<QRect> &areas) {
    for (const auto &surface : m_surfaces)
        surface->put(canvas(), areas);
    m_link->flush();
}

void WaylandFrozenScreen::hide() {
    m_seat.reset();
    m_surfaces.clear();
    // Who waits for the turn must not be served before the overlay is gone.
    if (m_turn)
        static_cast<void>(m_link->finish());
    m_turn.reset();
}

bool WaylandFrozenScreen::hasEnded() {
    return !m_link->isOpen() || m_outputs->hasChanged() || m_turn->isLost() ||
           std::any_of(m_surfaces.begin(), m_surfaces.end(), [](const auto &surface) { return surface->isClosed(); });
}

std::optional<OverlayEvent> WaylandFrozenScreen::nextEvent() {
    if (!m_seat)
        return std::nullopt;
    if (const auto event = m_seat->next())
        return event;
    static_cast<void>(m_link->dispatch());
    for (const auto &surface : m_surfaces)
        surface->catchUp(canvas());
    m_link->flush();
    if (hasEnded()) {
        OverlayEvent end;
        end.kind = OverlayEvent::Kind::ended;
        return end;
    }
    return m_seat->next();
}

void WaylandFrozenScreen::movePointer(QPoint place) {
    if (m_seat)
        m_seat->aimAt(place);
    m_link->flush();
}

std::vector<QRect> WaylandFrozenScreen::windows() {
    std::vector<QRect> windows;
    for (const QRect &points : readSwayWindows())
        for (size_t i = 0; i < m_frozen.size(); ++i) {
            // A window on several outputs is as many things to be taken: each of its parts has its own pixels.
            const QRect part = points & m_frozen[i].logical;
            if (part.isEmpty())
                continue;
            const double scale = m_frozen[i].scale();
            const auto pixel = [scale](int point) { return static_cast<int>(std::lround(point * scale)); };
            const QPoint from = part.topLeft() - m_frozen[i].logical.topLeft();
            const QRect area(QPoint(pixel(from.x()), pixel(from.y())),
                             QPoint(pixel(from.x() + part.width()) - 1, pixel(from.y() + part.height()) - 1));
            windows.push_back(area.translated(m_places[i].topLeft()) & m_places[i]);
        }
    return windows;
}

} // namespace tavrine
