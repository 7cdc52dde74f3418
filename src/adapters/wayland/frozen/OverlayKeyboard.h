#pragma once

#include "adapters/frozen/OverlayEvent.h"
#include "base/Descriptor.h"

#include <cstdint>
#include <optional>
#include <string>

struct xkb_keymap;

namespace tavrine {

/// What the keys of a Wayland keyboard mean over a frozen screen, and the repetition of those that are held, which is
/// each program's own there. One thread.
///
/// The compositor's description of the keyboard is read with the first key: it takes longer than all else that stands
/// between a hot key and the frozen screen.
class OverlayKeyboard {
public:
    OverlayKeyboard();
    ~OverlayKeyboard();
    OverlayKeyboard(const OverlayKeyboard &) = delete;
    OverlayKeyboard &operator=(const OverlayKeyboard &) = delete;

    // As the compositor tells it.
    void setKeymap(Descriptor file, std::uint32_t bytes);
    void setModifiers(std::uint32_t held, std::uint32_t group);
    void setRepetition(int perSecond, int delayMs);
    /// `code` is of the kernel. The event of a press; none for a release.
    [[nodiscard]] std::optional<OverlayEvent> key(std::uint32_t code, bool isPressed);
    /// The keyboard went elsewhere.
    void forgetHeld();

    /// Becomes readable when a held key repeats; `repeated` is the event.
    [[nodiscard]] int repetition() const { return m_timer.number(); }
    [[nodiscard]] std::optional<OverlayEvent> repeated();

private:
    [[nodiscard]] OverlayKey meaningOf(std::uint32_t code);
    void readKeymap();
    void startTimer(std::uint32_t firstMs, std::uint32_t nextMs) const;

    Descriptor m_keymapFile;
    std::uint32_t m_keymapBytes = 0;
    xkb_keymap *m_keymap = nullptr;
    std::uint32_t m_group = 0;
    std::uint32_t m_modifiers = 0;
    int m_perSecond = 25;
    int m_delayMs = 600;
    Descriptor m_timer;
    std::uint32_t m_heldCode = 0;
    std::optional<OverlayEvent> m_held;
};

} // namespace tavrine
