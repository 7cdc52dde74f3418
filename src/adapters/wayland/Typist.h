#pragma once

#include <QtGlobal>

#include <memory>

namespace tavrine {

class WaylandClient;

/// One key with modifiers.
struct WaylandChord {
    int key = 0; ///< the kernel's number; 0 for the key that types `letter`
    char letter = 0;
    bool hasShift = false;
    bool hasControl = false;
    bool hasAlt = false;
};

/// Presses chords and lets them go, as one kind of compositor takes them. Main thread.
class Typist {
public:
    virtual ~Typist() = default;

    /// False while the compositor has not told what keys there are; waits for it for a fifth of a second at most.
    [[nodiscard]] virtual bool isReady() { return true; }
    /// False when the keyboard has no such letter; then nothing is pressed.
    [[nodiscard]] virtual bool press(const WaylandChord &chord) = 0;
    virtual void release() = 0;

    /// A keyboard of its own, whose modifiers are its own too: what the person holds stays held and does not count.
    /// Null where the compositor takes none.
    [[nodiscard]] static std::unique_ptr<Typist> virtualKeyboard(WaylandClient &client);
    /// KWin's fake input, which types on the person's keyboard. What is held is let go for the chord and stays so, as
    /// nobody tells a program what is held; the person's own release of it does nothing then. Null where it is not
    /// offered, as to a program that KWin does not know.
    [[nodiscard]] static std::unique_ptr<Typist> fakeInput(WaylandClient &client);
};

} // namespace tavrine
