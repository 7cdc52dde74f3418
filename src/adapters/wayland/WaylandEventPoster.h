#pragma once

#include "adapters/linux/PasteChord.h"
#include "adapters/wayland/WaylandClient.h"
#include "adapters/wayland/WaylandWindows.h"
#include "ports/EventPoster.h"

#include <QString>

#include <functional>
#include <memory>

namespace tavrine {

class PrimaryText;
class Typist;

/// Types through a virtual keyboard where the compositor takes one, else through KWin's fake input.
///
/// While the compositor stands still, a chord is held back: it would come before what it is to follow, as the end of
/// our panel, which is on its way on another connection. So is one while it has not told what keys there are.
///
/// Lives on the main thread. The keyboard is plugged in when this is made: programs need a
/// moment to hear of the first keyboard of a seat, and what is typed before is lost.
class WaylandEventPoster final : public EventPoster {
public:
    /// The chord is that of the active one of `windows`. `text` gives the text that is being pasted: a program that
    /// pastes the primary selection gets it as that. `reader`: for a part in its connection; null for one of its own.
    WaylandEventPoster(std::shared_ptr<WaylandWindows> windows, std::function<QString()> text,
                       std::shared_ptr<WaylandReader> reader = nullptr);
    ~WaylandEventPoster() override;

    void postKeyboardEvent(int keyCode, bool isKeyDown, quint32 flags) override;
    [[nodiscard]] bool isHeldBack() const override { return m_isHeldBack; }
    [[nodiscard]] QString failure() const override { return m_failure; }

    /// True when this compositor lets the program post events.
    [[nodiscard]] bool canPost() const { return m_typist && m_client.isConnected(); }

private:
    [[nodiscard]] PasteChord pasteChordOfTarget();
    /// Nothing when it was typed.
    [[nodiscard]] QString pressPaste();
    void release();

    WaylandClient m_client;
    std::shared_ptr<WaylandWindows> m_windows;
    std::function<QString()> m_text;
    std::unique_ptr<Typist> m_typist;
    std::unique_ptr<PrimaryText> m_primary;
    QString m_failure;
    bool m_isPressed = false;
    bool m_isHeldBack = false;
};

} // namespace tavrine
