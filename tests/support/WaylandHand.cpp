#include "support/WaylandHand.h"

#include "base/Descriptor.h"

#include <chrono>
#include <cstring>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>
#include <wayland/fake-input.h>
#include <wayland/virtual-keyboard-unstable-v1.h>
#include <wayland/wlr-virtual-pointer-unstable-v1.h>
#include <wayland/xdg-output-unstable-v1.h>
#include <xkbcommon/xkbcommon.h>

namespace tavrine::testing {
namespace {

constexpr int xkbOffset = 8;
constexpr int stepsOfADrag = 8;

struct Typed {
    char sign;
    int key;
    bool hasShift;
};
constexpr Typed signs[] = {
    {' ', KEY_SPACE, false}, {'\n', KEY_ENTER, false},    {'-', KEY_MINUS, false},    {'_', KEY_MINUS, true},
    {'=', KEY_EQUAL, false}, {';', KEY_SEMICOLON, false}, {':', KEY_SEMICOLON, true}, {',', KEY_COMMA, false},
    {'.', KEY_DOT, false},   {'/', KEY_SLASH, false},     {'>', KEY_DOT, true},       {'\'', KEY_APOSTROPHE, false},
};
constexpr int letters[] = {KEY_A, KEY_B, KEY_C, KEY_D, KEY_E, KEY_F, KEY_G, KEY_H, KEY_I, KEY_J, KEY_K, KEY_L, KEY_M,
                           KEY_N, KEY_O, KEY_P, KEY_Q, KEY_R, KEY_S, KEY_T, KEY_U, KEY_V, KEY_W, KEY_X, KEY_Y, KEY_Z};

Typed typed(char sign) {
    if (sign >= 'a' && sign <= 'z')
        return {sign, letters[sign - 'a'], false};
    if (sign >= 'A' && sign <= 'Z')
        return {sign, letters[sign - 'A'], true};
    if (sign >= '1' && sign <= '9')
        return {sign, KEY_1 + (sign - '1'), false};
    if (sign == '0')
        return {sign, KEY_0, false};
    for (const Typed &known : signs)
        if (known.sign == sign)
            return known;
    return {};
}

std::uint32_t now() {
    return static_cast<std::uint32_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
            .count());
}

} // namespace

class WaylandHand::Device {
public:
    virtual ~Device() = default;
    virtual void key(int key, bool isDown) = 0;
    virtual void move(QPoint place, const QRect &layout) = 0;
    virtual void button(int button, bool isDown) = 0;
};

class WaylandHand::VirtualDevices final : public Device {
public:
    VirtualDevices(WaylandLink &link, zwp_virtual_keyboard_manager_v1 *keyboards,
                   zwlr_virtual_pointer_manager_v1 *pointers)
        : m_context(xkb_context_new(XKB_CONTEXT_NO_FLAGS)) {
        auto *const seat = link.bind<wl_seat>(wl_seat_interface, 1);
        m_keyboard = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(keyboards, seat);
        m_pointer = zwlr_virtual_pointer_manager_v1_create_virtual_pointer(pointers, seat);
        const xkb_rule_names names{"evdev", "pc105", "us", "", ""};
        m_map = xkb_keymap_new_from_names(m_context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
        m_state = xkb_state_new(m_map);
        char *const text = xkb_keymap_get_as_string(m_map, XKB_KEYMAP_FORMAT_TEXT_V1);
        const std::size_t size = std::strlen(text) + 1;
        const Descriptor file(memfd_create("keymap", MFD_CLOEXEC));
        const bool isWritten = write(file.number(), text, size) == static_cast<ssize_t>(size);
        std::free(text);
        if (isWritten)
            zwp_virtual_keyboard_v1_keymap(m_keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file.number(),
                                           static_cast<std::uint32_t>(size));
        link.finish();
    }
    ~VirtualDevices() override {
        zwp_virtual_keyboard_v1_destroy(m_keyboard);
        zwlr_virtual_pointer_v1_destroy(m_pointer);
        xkb_state_unref(m_state);
        xkb_keymap_unref(m_map);
        xkb_context_unref(m_context);
    }
    void key(int key, bool isDown) override {
        zwp_virtual_keyboard_v1_key(m_keyboard, now(), static_cast<std::uint32_t>(key), isDown ? 1 : 0);
        xkb_state_update_key(m_state, static_cast<xkb_keycode_t>(key + xkbOffset), isDown ? XKB_KEY_DOWN : XKB_KEY_UP);
        zwp_virtual_keyboard_v1_modifiers(m_keyboard, xkb_state_serialize_mods(m_state, XKB_STATE_MODS_DEPRESSED),
                                          xkb_state_serialize_mods(m_state, XKB_STATE_MODS_LATCHED),
                                          xkb_state_serialize_mods(m_state, XKB_STATE_MODS_LOCKED), 0);
    }
    void move(QPoint place, const QRect &layout) override {
        const QPoint inside = place - layout.topLeft();
        zwlr_virtual_pointer_v1_motion_absolute(
            m_pointer, now(), static_cast<std::uint32_t>(inside.x()), static_cast<std::uint32_t>(inside.y()),
            static_cast<std::uint32_t>(layout.width()), static_cast<std::uint32_t>(layout.height()));
        zwlr_virtual_pointer_v1_frame(m_pointer);
    }
    void button(int button, bool isDown) override {
        zwlr_virtual_pointer_v1_button(m_pointer, now(), static_cast<std::uint32_t>(button), isDown ? 1 : 0);
        zwlr_virtual_pointer_v1_frame(m_pointer);
    }

private:
    zwp_virtual_keyboard_v1 *m_keyboard = nullptr;
    zwlr_virtual_pointer_v1 *m_pointer = nullptr;
    xkb_context *m_context;
    xkb_keymap *m_map;
    xkb_state *m_state;
};

class WaylandHand::FakeInput final : public Device {
public:
    FakeInput(WaylandLink &link, org_kde_kwin_fake_input *input) : m_input(input) {
        org_kde_kwin_fake_input_authenticate(m_input, "hand", "tests");
        link.finish();
    }
    void key(int key, bool isDown) override {
        org_kde_kwin_fake_input_keyboard_key(m_input, static_cast<std::uint32_t>(key), isDown ? 1 : 0);
    }
    void move(QPoint place, const QRect & /*layout*/) override {
        org_kde_kwin_fake_input_pointer_motion_absolute(m_input, wl_fixed_from_int(place.x()),
                                                        wl_fixed_from_int(place.y()));
    }
    void button(int button, bool isDown) override {
        org_kde_kwin_fake_input_button(m_input, static_cast<std::uint32_t>(button), isDown ? 1 : 0);
    }

private:
    org_kde_kwin_fake_input *m_input;
};

WaylandHand::WaylandHand() {
    auto *const keyboards = m_link.bind<zwp_virtual_keyboard_manager_v1>(zwp_virtual_keyboard_manager_v1_interface, 1);
    auto *const pointers = m_link.bind<zwlr_virtual_pointer_manager_v1>(zwlr_virtual_pointer_manager_v1_interface, 1);
    if (keyboards && pointers)
        m_device = std::make_unique<VirtualDevices>(m_link, keyboards, pointers);
    else if (auto *const input = m_link.bind<org_kde_kwin_fake_input>(org_kde_kwin_fake_input_interface, 4))
        m_device = std::make_unique<FakeInput>(m_link, input);
}

WaylandHand::~WaylandHand() = default;

bool WaylandHand::isThere() const {
    return m_device && m_link.isOpen();
}

void WaylandHand::down(int key) {
    m_device->key(key, true);
    m_link.finish();
}

void WaylandHand::up(int key) {
    m_device->key(key, false);
    m_link.finish();
}

void WaylandHand::tap(int key) {
    down(key);
    up(key);
}

void WaylandHand::chord(std::initializer_list<int> keys) {
    for (const int key : keys)
        down(key);
    for (auto key = std::rbegin(keys); key != std::rend(keys); ++key)
        up(*key);
}

void WaylandHand::type(const char *text) {
    for (; *text; ++text) {
        const Typed sign = typed(*text);
        if (sign.hasShift)
            chord({KEY_LEFTSHIFT, sign.key});
        else
            tap(sign.key);
    }
}

void WaylandHand::move(QPoint place) {
    m_device->move(place, layout());
    m_link.finish();
}

void WaylandHand::press(int button) {
    m_device->button(button, true);
    m_link.finish();
}

void WaylandHand::release(int button) {
    m_device->button(button, false);
    m_link.finish();
}

void WaylandHand::click(QPoint place, int button) {
    move(place);
    press(button);
    release(button);
}

void WaylandHand::dragAndHold(QPoint from, QPoint to) {
    move(from);
    press();
    for (int step = 1; step <= stepsOfADrag; ++step)
        move(from + (to - from) * step / stepsOfADrag);
}

void WaylandHand::drag(QPoint from, QPoint to) {
    dragAndHold(from, to);
    release();
}

QRect WaylandHand::layout() {
    static constexpr zxdg_output_v1_listener listener{
        .logical_position =
            [](void *rect, zxdg_output_v1 *, std::int32_t x, std::int32_t y) {
                static_cast<QRect *>(rect)->moveTopLeft({x, y});
            },
        .logical_size =
            [](void *rect, zxdg_output_v1 *, std::int32_t width, std::int32_t height) {
                static_cast<QRect *>(rect)->setSize({width, height});
            },
        .done = [](void *, zxdg_output_v1 *) {},
        .name = [](void *, zxdg_output_v1 *, const char *) {},
        .description = [](void *, zxdg_output_v1 *, const char *) {}};
    auto *const manager = m_link.bind<zxdg_output_manager_v1>(zxdg_output_manager_v1_interface, 2);
    std::vector<wl_output *> outputs;
    std::vector<zxdg_output_v1 *> logical;
    for (const auto &global : m_link.globals())
        if (manager && global.interface == wl_output_interface.name)
            outputs.push_back(m_link.bind<wl_output>(global, wl_output_interface, 1));
    std::vector<QRect> rects(outputs.size());
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        logical.push_back(zxdg_output_manager_v1_get_xdg_output(manager, outputs[i]));
        zxdg_output_v1_add_listener(logical.back(), &listener, &rects[i]);
    }
    m_link.finish();
    QRect all;
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        all |= rects[i];
        zxdg_output_v1_destroy(logical[i]);
        wl_output_destroy(outputs[i]);
    }
    if (manager)
        zxdg_output_manager_v1_destroy(manager);
    return all;
}

} // namespace tavrine::testing
