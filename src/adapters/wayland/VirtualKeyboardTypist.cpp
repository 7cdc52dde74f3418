#include "adapters/wayland/Typist.h"
#include "adapters/wayland/WaylandClient.h"
#include "base/Descriptor.h"
#include "base/VirtualKeys.h"

#include <chrono>
#include <string_view>

#include <sys/mman.h>
#include <unistd.h>
#include <wayland/virtual-keyboard-unstable-v1.h>

namespace tavrine {
namespace {

// An American keyboard, whatever the person's layout is: programs know a chord by its letter.
constexpr std::string_view keymap = "xkb_keymap {\n"
                                    "xkb_keycodes { include \"evdev+aliases(qwerty)\" };\n"
                                    "xkb_types { include \"complete\" };\n"
                                    "xkb_compat { include \"complete\" };\n"
                                    "xkb_symbols { include \"pc+us+inet(evdev)\" };\n"
                                    "};\n";
// The bits of the modifiers in every such map.
constexpr std::uint32_t shift = 1U << 0;
constexpr std::uint32_t control = 1U << 2;
constexpr std::uint32_t alt = 1U << 3;

std::uint32_t milliseconds() {
    using namespace std::chrono;
    return static_cast<std::uint32_t>(
        duration_cast<std::chrono::milliseconds>(steady_clock::now().time_since_epoch()).count());
}

std::optional<int> positionOf(char letter) {
    constexpr std::string_view rows[] = {"qwertyuiop", "asdfghjkl", "zxcvbnm"};
    constexpr int firsts[] = {16, 30, 44};
    for (std::size_t row = 0; row < std::size(rows); ++row)
        if (const auto column = rows[row].find(letter); column != std::string_view::npos)
            return firsts[row] + static_cast<int>(column);
    return std::nullopt;
}

class VirtualKeyboard final : public Typist {
public:
    VirtualKeyboard(WaylandClient &client, zwp_virtual_keyboard_manager_v1 *manager, wl_seat *seat)
        : m_client(client), m_manager(manager), m_seat(seat),
          m_keyboard(zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(manager, seat)) {
        const Descriptor file(memfd_create("keymap", MFD_CLOEXEC));
        // With the null that ends it.
        if (write(file.number(), keymap.data(), keymap.size() + 1) != static_cast<ssize_t>(keymap.size() + 1))
            return;
        zwp_virtual_keyboard_v1_keymap(m_keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file.number(),
                                       static_cast<std::uint32_t>(keymap.size() + 1));
        m_client.flush();
        m_hasKeymap = true;
    }

    ~VirtualKeyboard() override {
        zwp_virtual_keyboard_v1_destroy(m_keyboard);
        wl_seat_destroy(m_seat);
        zwp_virtual_keyboard_manager_v1_destroy(m_manager);
    }
    VirtualKeyboard(const VirtualKeyboard &) = delete;
    VirtualKeyboard &operator=(const VirtualKeyboard &) = delete;

    [[nodiscard]] bool press(const WaylandChord &chord) override {
        const int position = chord.key ? chord.key : positionOf(chord.letter).value_or(0);
        if (!m_hasKeymap || position == 0)
            return false;
        m_pressed = static_cast<std::uint32_t>(position);
        hold((chord.hasShift ? shift : 0) | (chord.hasControl ? control : 0) | (chord.hasAlt ? alt : 0));
        zwp_virtual_keyboard_v1_key(m_keyboard, milliseconds(), m_pressed, WL_KEYBOARD_KEY_STATE_PRESSED);
        m_client.flush();
        return true;
    }

    void release() override {
        zwp_virtual_keyboard_v1_key(m_keyboard, milliseconds(), m_pressed, WL_KEYBOARD_KEY_STATE_RELEASED);
        hold(0);
        m_client.flush();
    }

private:
    void hold(std::uint32_t modifiers) { zwp_virtual_keyboard_v1_modifiers(m_keyboard, modifiers, 0, 0, 0); }

    WaylandClient &m_client;
    zwp_virtual_keyboard_manager_v1 *m_manager;
    wl_seat *m_seat;
    zwp_virtual_keyboard_v1 *m_keyboard;
    std::uint32_t m_pressed = 0;
    bool m_hasKeymap = false;
};

} // namespace

std::unique_ptr<Typist> Typist::virtualKeyboard(WaylandClient &client) {
    WaylandLink &link = client.link();
    auto *const manager = link.bind<zwp_virtual_keyboard_manager_v1>(zwp_virtual_keyboard_manager_v1_interface, 1);
    auto *const seat = manager ? link.bind<wl_seat>(wl_seat_interface, 1) : nullptr;
    return seat ? std::make_unique<VirtualKeyboard>(client, manager, seat) : nullptr;
}

} // namespace tavrine
