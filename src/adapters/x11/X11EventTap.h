#pragma once

#include "adapters/linux/SessionEvents.h"
#include "adapters/x11/KeyboardSilence.h"
#include "ports/EventTap.h"

namespace tavrine {

/// A tap as a grab of every master keyboard, on a connection of its own: when that ends, for whatever reason, the
/// server frees the keyboards.
///
/// Lives on the main thread and waits for the server in bounded time. While another program holds a keyboard, it is
/// tried again every few milliseconds from the event loop. A menu of our own that is open holds the keyboard too; it
/// lends it for as long as the tap lives. A keyboard that appears meanwhile is taken as soon as the server tells of it.
///
/// A lock screen that begins while the keyboard is held could not take it, and the person would be shut out. So a tap
/// ends at the first word that the machine goes to sleep or that the session is locked, and closes the menus that lent
/// it the keyboard, for they hold the pointer.
class X11EventTaps final : public EventTaps {
public:
    /// `silence` is begun and ended with each tap.
    explicit X11EventTaps(std::shared_ptr<KeyboardSilence> silence) : m_silence(std::move(silence)) {}

    [[nodiscard]] std::unique_ptr<EventTap> create(std::function<void()> onChange) override;

private:
    std::shared_ptr<KeyboardSilence> m_silence;
    SessionEvents m_sessionEvents;
};

} // namespace tavrine
