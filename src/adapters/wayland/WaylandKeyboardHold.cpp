#include "adapters/wayland/WaylandKeyboardHold.h"

#include "adapters/wayland/LayerShellEnd.h"

#include <QTimer>

#include <algorithm>
#include <set>
#include <utility>

#include <unistd.h>
#include <wayland/keyboard-shortcuts-inhibit-unstable-v1.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr int surfaceVersion = 1;
constexpr int layerVersion = 3; // the first that is given back
constexpr int seatVersion = 5;  // so is this
constexpr int overPanelsOfTheDesktop = -1;
/// More than a hand clicks in a second, and fewer than a program that takes it each time.
constexpr int mostLosses = 12;
constexpr auto lossesTime = 1s;
constexpr auto longestLeave = 2s;

} // namespace

/// A seat's keyboard, if it has one, and its shortcuts.
class WaylandKeyboardHold::Seat {
public:
    Seat(WaylandKeyboardHold &hold, const WaylandLink::Global &global)
        : m_hold(hold), m_seat(hold.m_client.link().bind<wl_seat>(global, wl_seat_interface, seatVersion)) {
        static constexpr wl_seat_listener listener{.capabilities =
                                                       [](void *self, wl_seat *, std::uint32_t capabilities) {
                                                           static_cast<Seat *>(self)->setHasKeyboard(
                                                               capabilities & WL_SEAT_CAPABILITY_KEYBOARD);
                                                       },
                                                   .name = [](void *, wl_seat *, const char *) {}};
        wl_seat_add_listener(m_seat, &listener, this);
    }
    ~Seat() {
        setSurface(nullptr);
        giveKeyboardBack();
        if (wl_seat_get_version(m_seat) >= WL_SEAT_RELEASE_SINCE_VERSION)
            wl_seat_release(m_seat);
        else
            wl_seat_destroy(m_seat);
    }
    Seat(const Seat &) = delete;
    Seat &operator=(const Seat &) = delete;

    /// The one that is to have all; null for none.
    void setSurface(wl_surface *surface) {
        m_isEntered = m_isInhibited = false;
        if (m_inhibitor)
            zwp_keyboard_shortcuts_inhibitor_v1_destroy(std::exchange(m_inhibitor, nullptr));
        if (!surface)
            return;
        using Inhibitor = zwp_keyboard_shortcuts_inhibitor_v1;
        static constexpr zwp_keyboard_shortcuts_inhibitor_v1_listener listener{
            .active = [](void *self, Inhibitor *) { static_cast<Seat *>(self)->setInhibited(true); },
            .inactive = [](void *self, Inhibitor *) { static_cast<Seat *>(self)->setInhibited(false); }};
        m_inhibitor = zwp_keyboard_shortcuts_inhibit_manager_v1_inhibit_shortcuts(m_hold.m_inhibitors, surface, m_seat);
        zwp_keyboard_shortcuts_inhibitor_v1_add_listener(m_inhibitor, &listener, this);
    }
    [[nodiscard]] bool isWhole() const { return !m_keyboard || (m_isEntered && m_isInhibited); }
    [[nodiscard]] bool isKeyDown() const { return m_isEntered && !m_down.empty(); }

private:
    void setHasKeyboard(bool hasKeyboard) {
        if (hasKeyboard == (m_keyboard != nullptr))
            return;
        giveKeyboardBack();
        if (hasKeyboard)
            listen();
        m_hold.update();
    }

    void listen() {
        static constexpr wl_keyboard_listener listener{
            .keymap = [](void *, wl_keyboard *, std::uint32_t, std::int32_t file, std::uint32_t) { ::close(file); },
            .enter = [](void *self, wl_keyboard *, std::uint32_t, wl_surface *surface,
                        wl_array *keys) { static_cast<Seat *>(self)->enter(surface, *keys); },
            .leave = [](void *self, wl_keyboard *, std::uint32_t,
                        wl_surface *surface) { static_cast<Seat *>(self)->leave(surface); },
            .key = [](void *self, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t key,
                      std::uint32_t state) { static_cast<Seat *>(self)->drop(key, state); },
            .modifiers = [](void *, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                            std::uint32_t) {},
            .repeat_info = [](void *, wl_keyboard *, std::int32_t, std::int32_t) {}};
        m_keyboard = wl_seat_get_keyboard(m_seat);
        wl_keyboard_add_listener(m_keyboard, &listener, this);
    }

    void giveKeyboardBack() {
        m_isEntered = false;
        m_down.clear();
        if (!m_keyboard)
            return;
        if (wl_keyboard_get_version(m_keyboard) >= WL_KEYBOARD_RELEASE_SINCE_VERSION)
            wl_keyboard_release(m_keyboard);
        else
            wl_keyboard_destroy(m_keyboard);
        m_keyboard = nullptr;
    }

    void enter(const wl_surface *surface, const wl_array &keys) {
        if (surface != m_hold.m_surface)
            return; // the last one, which is gone
        const auto *first = static_cast<const std::uint32_t *>(keys.data);
        m_down = {first, first + keys.size / sizeof(std::uint32_t)};
        m_isEntered = true;
        m_hold.update();
    }
    void leave(const wl_surface *surface) {
        if (surface != m_hold.m_surface)
            return;
        m_isEntered = false;
        m_hold.update();
    }
    void drop(std::uint32_t key, std::uint32_t state) {
        if (state == WL_KEYBOARD_KEY_STATE_RELEASED)
            m_down.erase(key);
        else
            m_down.insert(key);
        m_hold.update();
    }
    void setInhibited(bool is) {
        m_isInhibited = is;
        m_hold.update();
    }

    WaylandKeyboardHold &m_hold;
    wl_seat *m_seat;
    wl_keyboard *m_keyboard = nullptr;
    zwp_keyboard_shortcuts_inhibitor_v1 *m_inhibitor = nullptr;
    std::set<std::uint32_t> m_down;
    bool m_isEntered = false;
    bool m_isInhibited = false;
};

bool WaylandKeyboardHold::isOffered(const WaylandLink &link) {
    return link.isOpen() && link.find(zwlr_layer_shell_v1_interface.name) &&
           link.find(zwp_keyboard_shortcuts_inhibit_manager_v1_interface.name);
}

WaylandKeyboardHold::WaylandKeyboardHold(std::shared_ptr<WaylandReader> reader, std::function<void()> onChange)
    : m_client(std::move(reader)), m_onChange(std::move(onChange)) {
    WaylandLink &link = m_client.link();
    if (!isOffered(link) || !m_buffer.get())
        return;
    m_compositor = link.bind<wl_compositor>(wl_compositor_interface, surfaceVersion);
    m_layers = link.bind<zwlr_layer_shell_v1>(zwlr_layer_shell_v1_interface, layerVersion);
    m_inhibitors =
        link.bind<zwp_keyboard_shortcuts_inhibit_manager_v1>(zwp_keyboard_shortcuts_inhibit_manager_v1_interface, 1);
    for (const WaylandLink::Global &global : link.globals())
        if (global.interface == wl_seat_interface.name)
            m_seats.push_back(std::make_unique<Seat>(*this, global));
    m_state = State::asking;
    open();
    m_client.flush();
}

WaylandKeyboardHold::~WaylandKeyboardHold() {
    if (m_answer)
        wl_callback_destroy(m_answer);
    close();
    m_seats.clear();
    if (m_inhibitors)
        zwp_keyboard_shortcuts_inhibit_manager_v1_destroy(m_inhibitors);
    letLayerShellGo(m_layers);
    if (m_compositor)
        wl_compositor_destroy(m_compositor);
    m_client.flush();
}

void WaylandKeyboardHold::open() {
    using Role = zwlr_layer_surface_v1;
    static constexpr zwlr_layer_surface_v1_listener listener{
        .configure = [](void *self, Role *, std::uint32_t serial, std::uint32_t,
                        std::uint32_t) { static_cast<WaylandKeyboardHold *>(self)->draw(serial); },
        .closed =
            [](void *self, Role *) {
                static_cast<WaylandKeyboardHold *>(self)->m_isShown = false;
                static_cast<WaylandKeyboardHold *>(self)->lose();
            }};
    m_isLost = false;
    m_surface = wl_compositor_create_surface(m_compositor);
    // Where lock screens are surfaces of the layer above, they get the keyboard before this one does.
    m_role =
        zwlr_layer_shell_v1_get_layer_surface(m_layers, m_surface, nullptr, ZWLR_LAYER_SHELL_V1_LAYER_TOP, "tavrine");
    zwlr_layer_surface_v1_add_listener(m_role, &listener, this);
    zwlr_layer_surface_v1_set_size(m_role, 1, 1);
    zwlr_layer_surface_v1_set_anchor(m_role, ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT);
    zwlr_layer_surface_v1_set_exclusive_zone(m_role, overPanelsOfTheDesktop);
    zwlr_layer_surface_v1_set_keyboard_interactivity(m_role, 1);
    wl_region *const nowhere = wl_compositor_create_region(m_compositor); // the mouse is free
    wl_surface_set_input_region(m_surface, nowhere);
    wl_region_destroy(nowhere);
    for (const auto &seat : m_seats)
        seat->setSurface(m_surface);
    wl_surface_commit(m_surface);
}

void WaylandKeyboardHold::close() {
    for (const auto &seat : m_seats)
        seat->setSurface(nullptr);
    if (!m_surface)
        return;
    zwlr_layer_surface_v1_destroy(m_role);
    wl_surface_destroy(std::exchange(m_surface, nullptr));
    m_isShown = false;
}

void WaylandKeyboardHold::draw(std::uint32_t serial) {
    zwlr_layer_surface_v1_ack_configure(m_role, serial);
    wl_surface_attach(m_surface, m_buffer.get(), 0, 0);
    wl_surface_commit(m_surface);
    m_isShown = true;
    ask();
    update();
}

void WaylandKeyboardHold::ask() {
    static constexpr wl_callback_listener listener{
        .done = [](void *self, wl_callback *, std::uint32_t) { static_cast<WaylandKeyboardHold *>(self)->answered(); }};
    if (m_answer)
        wl_callback_destroy(m_answer);
    m_answer = m_client.link().sync();
    wl_callback_add_listener(m_answer, &listener, this);
    m_client.flush();
}

/// Some compositors give back in the same moment what they have taken.
void WaylandKeyboardHold::answered() {
    wl_callback_destroy(std::exchange(m_answer, nullptr));
    if (m_state == State::whole)
        return;
    if (!std::exchange(m_isLost, false))
        return become(State::answered);
    if (isLostTooOften()) {
        close();
        m_client.flush();
        return become(State::gone);
    }
    if (m_isShown)
        return claimAgain();
    close();
    open();
    m_client.flush();
}

/// A surface that begins to want the keyboard is given it as a new one is, and sooner.
void WaylandKeyboardHold::claimAgain() {
    for (const std::uint32_t wanted : {0U, 1U}) {
        zwlr_layer_surface_v1_set_keyboard_interactivity(m_role, wanted);
        wl_surface_commit(m_surface);
    }
    ask();
}

bool WaylandKeyboardHold::isLostTooOften() {
    if (m_lossesCount.hasExpired()) {
        m_lossesCount.setRemainingTime(lossesTime);
        m_losses = 0;
    }
    return ++m_losses > mostLosses;
}

void WaylandKeyboardHold::lose() {
    if (m_isLeaving)
        return deleteLater();
    m_isLost = true;
    ask();
    become(State::asking);
}

/// Called for everything that a compositor tells of a seat.
void WaylandKeyboardHold::update() {
    const bool isWhole = m_isShown && std::ranges::all_of(m_seats, [](const auto &seat) { return seat->isWhole(); });
    if (m_isLeaving) {
        if (!isWhole || !isKeyDown())
            deleteLater();
    } else if (isWhole) {
        m_isLost = false;
        become(State::whole);
    } else if (m_state == State::whole) {
        lose();
    }
}

void WaylandKeyboardHold::become(State state) {
    if (std::exchange(m_state, state) != state)
        m_onChange();
}

bool WaylandKeyboardHold::isKeyDown() const {
    return std::ranges::any_of(m_seats, [](const auto &seat) { return seat->isKeyDown(); });
}

void WaylandKeyboardHold::leave() {
    m_isLeaving = true;
    if (m_state != State::whole || !isKeyDown())
        delete this;
    else
        QTimer::singleShot(longestLeave, this, &QObject::deleteLater);
}

} // namespace tavrine
