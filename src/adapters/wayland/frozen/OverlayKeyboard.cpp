#include "adapters/wayland/frozen/OverlayKeyboard.h"

#include "adapters/wayland/KeymapText.h"

#include <utility>

#include <linux/input-event-codes.h>
#include <sys/timerfd.h>
#include <xkbcommon/xkbcommon.h>

namespace tavrine {
namespace {

// The real modifiers have fixed places in every keymap.
constexpr std::uint32_t shiftBit = 1U << 0;
constexpr std::uint32_t controlBit = 1U << 2;
constexpr std::uint32_t kernelToXkb = 8;

/// For a keyboard whose description cannot be read: on every layout these keys lie there.
OverlayKey usualMeaning(std::uint32_t code) {
    switch (code) {
    case KEY_ESC:
        return OverlayKey::escape;
    case KEY_SPACE:
        return OverlayKey::space;
    case KEY_ENTER:
    case KEY_KPENTER:
        return OverlayKey::enter;
    case KEY_LEFT:
        return OverlayKey::left;
    case KEY_RIGHT:
        return OverlayKey::right;
    case KEY_UP:
        return OverlayKey::up;
    case KEY_DOWN:
        return OverlayKey::down;
    default:
        return OverlayKey::other;
    }
}

} // namespace

OverlayKeyboard::OverlayKeyboard() : m_timer(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)) {}

OverlayKeyboard::~OverlayKeyboard() {
    xkb_keymap_unref(m_keymap);
}

void OverlayKeyboard::setKeymap(Descriptor file, std::uint32_t bytes) {
    m_keymapFile = std::move(file);
    m_keymapBytes = bytes;
    xkb_keymap_unref(std::exchange(m_keymap, nullptr));
}

void OverlayKeyboard::setModifiers(std::uint32_t held, std::uint32_t group) {
    m_modifiers = held;
    m_group = group;
}

void OverlayKeyboard::setRepetition(int perSecond, int delayMs) {
    m_perSecond = perSecond;
    m_delayMs = delayMs;
}

void OverlayKeyboard::readKeymap() {
    const Descriptor file = std::move(m_keymapFile);
    const std::string text = keymapText(file, m_keymapBytes);
    xkb_context *const context = text.empty() ? nullptr : xkb_context_new(XKB_CONTEXT_NO_DEFAULT_INCLUDES);
    if (!context)
        return;
    m_keymap = xkb_keymap_new_from_buffer(context, text.data(), text.size(), XKB_KEYMAP_FORMAT_TEXT_V1,
                                          XKB_KEYMAP_COMPILE_NO_FLAGS);
    xkb_context_unref(context);
}

OverlayKey OverlayKeyboard::meaningOf(std::uint32_t code) {
    if (m_keymapFile.isOpen())
        readKeymap();
    if (!m_keymap)
        return usualMeaning(code);
    const xkb_keycode_t key = code + kernelToXkb;
    const xkb_layout_index_t layouts = xkb_keymap_num_layouts_for_key(m_keymap, key);
    if (layouts == 0)
        return OverlayKey::other;
    const xkb_keysym_t *symbols = nullptr;
    // What the key means without Shift, in whatever layout.
    const int count = xkb_keymap_key_get_syms_by_level(m_keymap, key, m_group < layouts ? m_group : 0, 0, &symbols);
    return count > 0 ? overlayKeyOf(symbols[0]) : OverlayKey::other;
}

std::optional<OverlayEvent> OverlayKeyboard::key(std::uint32_t code, bool isPressed) {
    if (!isPressed) {
        if (code == m_heldCode)
            forgetHeld();
        return std::nullopt;
    }
    OverlayEvent event;
    event.kind = OverlayEvent::Kind::keyPressed;
    event.key = meaningOf(code);
    event.isShift = m_modifiers & shiftBit;
    event.isControl = m_modifiers & controlBit;
    m_heldCode = code;
    m_held = event;
    m_held->isRepeated = true;
    if (m_perSecond > 0 && m_delayMs > 0)
        startTimer(static_cast<std::uint32_t>(m_delayMs), 1000U / static_cast<std::uint32_t>(m_perSecond));
    return event;
}

void OverlayKeyboard::forgetHeld() {
    m_held.reset();
    m_heldCode = 0;
    startTimer(0, 0);
}

void OverlayKeyboard::startTimer(std::uint32_t firstMs, std::uint32_t nextMs) const {
    const auto span = [](std::uint32_t ms) { return timespec{ms / 1000, static_cast<long>(ms % 1000) * 1'000'000}; };
    const itimerspec times{.it_interval = span(nextMs), .it_value = span(firstMs)};
    ::timerfd_settime(m_timer.number(), 0, &times, nullptr);
}

std::optional<OverlayEvent> OverlayKeyboard::repeated() {
    std::uint64_t times = 0;
    if (::read(m_timer.number(), &times, sizeof times) != sizeof times || !m_held)
        return std::nullopt;
    m_held->isShift = m_modifiers & shiftBit;
    m_held->isControl = m_modifiers & controlBit;
    return m_held; // what was missed meanwhile is not made up for
}

} // namespace tavrine
