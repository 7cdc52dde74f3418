#include "adapters/wayland/frozen/OverlaySeat.h"

#include "adapters/frozen/CrossPicture.h"

#include <cmath>
#include <cstring>

#include <linux/input-event-codes.h>

namespace tavrine {
namespace {

constexpr std::uint32_t seatVersion = 5;
// A hand on the mouse trembles when it presses the button; more than this is a movement.
constexpr double trembling = 4;

int buttonOf(std::uint32_t code) {
    return code == BTN_LEFT ? 1 : code == BTN_MIDDLE ? 2 : code == BTN_RIGHT ? 3 : 0;
}

} // namespace

struct OverlaySeatEvents {
    static OverlaySeat &of(void *self) { return *static_cast<OverlaySeat *>(self); }
    static constexpr wl_seat_listener seat{
        .capabilities = [](void *self, wl_seat *,
                           std::uint32_t capabilities) { of(self).setCapabilities(capabilities); },
        .name = [](void *, wl_seat *, const char *) {},
    };
    static constexpr wl_pointer_listener pointer{
        .enter = [](void *self, wl_pointer *, std::uint32_t serial, wl_surface *surface, wl_fixed_t x,
                    wl_fixed_t y) { of(self).enter(serial, surface, wl_fixed_to_double(x), wl_fixed_to_double(y)); },
        .leave = [](void *self, wl_pointer *, std::uint32_t, wl_surface *) { of(self).m_under = nullptr; },
        .motion = [](void *self, wl_pointer *, std::uint32_t, wl_fixed_t x,
                     wl_fixed_t y) { of(self).moveTo(wl_fixed_to_double(x), wl_fixed_to_double(y)); },
        .button = [](void *self, wl_pointer *, std::uint32_t, std::uint32_t, std::uint32_t button,
                     std::uint32_t state) { of(self).press(button, state == WL_POINTER_BUTTON_STATE_PRESSED); },
        .axis = [](void *, wl_pointer *, std::uint32_t, std::uint32_t, wl_fixed_t) {},
        .frame = [](void *, wl_pointer *) {},
        .axis_source = [](void *, wl_pointer *, std::uint32_t) {},
        .axis_stop = [](void *, wl_pointer *, std::uint32_t, std::uint32_t) {},
        .axis_discrete = [](void *, wl_pointer *, std::uint32_t, std::int32_t) {},
        .axis_value120 = [](void *, wl_pointer *, std::uint32_t, std::int32_t) {},
    };
    static constexpr wl_keyboard_listener keyboard{
        .keymap = [](void *self, wl_keyboard *, std::uint32_t, int file,
                     std::uint32_t size) { of(self).m_keyboard.setKeymap(Descriptor(file), size); },
        .enter = [](void *, wl_keyboard *, std::uint32_t, wl_surface *, wl_array *) {},
        .leave = [](void *self, wl_keyboard *, std::uint32_t, wl_surface *) { of(self).m_keyboard.forgetHeld(); },
        .key =
            [](void *self, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t code, std::uint32_t state) {
                if (const auto event = of(self).m_keyboard.key(code, state == WL_KEYBOARD_KEY_STATE_PRESSED))
                    of(self).m_events.push_back(*event);
            },
        .modifiers = [](void *self, wl_keyboard *, std::uint32_t, std::uint32_t depressed, std::uint32_t latched,
                        std::uint32_t,
                        std::uint32_t group) { of(self).m_keyboard.setModifiers(depressed | latched, group); },
        .repeat_info = [](void *self, wl_keyboard *, std::int32_t rate,
                          std::int32_t delay) { of(self).m_keyboard.setRepetition(rate, delay); },
    };
};

OverlaySeat::OverlaySeat(WaylandLink &link, const OverlayGlobals &globals, FindSurface findSurface)
    : m_globals(globals), m_findSurface(std::move(findSurface)) {
    m_seat = link.bind<wl_seat>(wl_seat_interface, seatVersion);
    if (m_seat)
        wl_seat_add_listener(m_seat, &OverlaySeatEvents::seat, this);
}

OverlaySeat::~OverlaySeat() {
    setCapabilities(0);
    if (m_cursor)
        wl_surface_destroy(m_cursor);
    if (m_seat)
        wl_seat_destroy(m_seat);
}

/// They come and go with the devices.
void OverlaySeat::setCapabilities(std::uint32_t capabilities) {
    if (const bool has = capabilities & WL_SEAT_CAPABILITY_POINTER; has && !m_pointer) {
        m_pointer = wl_seat_get_pointer(m_seat);
        wl_pointer_add_listener(m_pointer, &OverlaySeatEvents::pointer, this);
    } else if (!has && m_pointer) {
        wl_pointer_release(std::exchange(m_pointer, nullptr));
        m_under = nullptr;
    }
    if (const bool has = capabilities & WL_SEAT_CAPABILITY_KEYBOARD; has && !m_keys) {
        m_keys = wl_seat_get_keyboard(m_seat);
        wl_keyboard_add_listener(m_keys, &OverlaySeatEvents::keyboard, this);
    } else if (!has && m_keys) {
        wl_keyboard_release(std::exchange(m_keys, nullptr));
        m_keyboard.forgetHeld();
    }
}

void OverlaySeat::report(OverlayEvent::Kind kind, int button) {
    OverlayEvent event;
    event.kind = kind;
    event.place = m_place;
    event.button = button;
    m_events.push_back(event);
}

void OverlaySeat::enter(std::uint32_t serial, wl_surface *surface, double x, double y) {
    m_enterSerial = serial;
    m_under = m_findSurface(surface);
    showCursor();
    moveTo(x, y);
}

void OverlaySeat::moveTo(double x, double y) {
    if (!m_under)
        return;
    m_place = m_under->pixelAt(x, y);
    m_trembling = trembling * m_under->scale();
    report(OverlayEvent::Kind::pointerMoved);
}

void OverlaySeat::press(std::uint32_t button, bool isPressed) {
    if (!m_under || buttonOf(button) == 0)
        return;
    report(isPressed ? OverlayEvent::Kind::buttonPressed : OverlayEvent::Kind::buttonReleased, buttonOf(button));
}

void OverlaySeat::aimAt(QPoint pixel) {
    m_aim = pixel;
    m_aimedFrom = m_told;
    showCursor();
}

/// The cross for the surface under the pointer, or nothing while keys aim.
void OverlaySeat::showCursor() {
    if (!m_pointer || !m_under)
        return;
    if (m_aim) {
        wl_pointer_set_cursor(m_pointer, m_enterSerial, nullptr, 0, 0);
        return;
    }
    if (!m_cursor)
        m_cursor = wl_compositor_create_surface(m_globals.compositor);
    if (m_cursorScale != m_under->scale()) {
        m_cursorScale = m_under->scale();
        const int whole = static_cast<int>(std::ceil(m_cursorScale - 0.01));
        const CrossPicture cross = CrossPicture::make(whole);
        // A picture in whole points, with its middle on one.
        const int middle = cross.side / 2;
        const int before = (whole - middle % whole) % whole;
        const int side = (before + cross.side + whole - 1) / whole * whole;
        m_cursorPicture = ShmBuffer::make(m_globals.shm, WL_SHM_FORMAT_ARGB8888, {side, side}, side * 4);
        if (!m_cursorPicture)
            return;
        for (int y = 0; y < cross.side; ++y)
            std::memcpy(m_cursorPicture->memory()->pixels().line(before + y) + before,
                        cross.pixels.data() + qsizetype{y} * cross.side,
                        static_cast<size_t>(cross.side) * sizeof(quint32));
        m_hotSpot = QPoint(before + middle, before + middle) / whole;
        wl_surface_attach(m_cursor, m_cursorPicture->buffer(), 0, 0);
        wl_surface_set_buffer_scale(m_cursor, whole);
        wl_surface_damage_buffer(m_cursor, 0, 0, side, side);
        wl_surface_commit(m_cursor);
    }
    wl_pointer_set_cursor(m_pointer, m_enterSerial, m_cursor, m_hotSpot.x(), m_hotSpot.y());
}

/// Keys that came before a movement or a press have been heeded by now.
std::optional<OverlayEvent> OverlaySeat::next() {
    while (!m_events.empty()) {
        OverlayEvent event = m_events.front();
        m_events.pop_front();
        if (event.kind == OverlayEvent::Kind::keyPressed)
            return event;
        m_told = event.place;
        if (m_aim && event.kind == OverlayEvent::Kind::pointerMoved) {
            const QPoint way = event.place - m_aimedFrom;
            if (std::hypot(way.x(), way.y()) < m_trembling)
                continue;
            m_aim.reset();
            showCursor();
        }
        event.place = m_aim.value_or(event.place);
        return event;
    }
    return m_keyboard.repeated();
}

} // namespace tavrine
