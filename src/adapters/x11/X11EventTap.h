#pragma once

#include "adapters/x11/KeyboardSilence.h"
#include "ports/EventTap.h"

namespace tavrine {

/// A tap as a grab of every master keyboard, on a connection of its own: when that ends, for whatever reason, the
/// server frees the keyboards.
///
/// Lives on the main thread and waits for the server in bounded time. While another program holds a keyboard, it is
/// tried again every few milliseconds from the event loop. A menu of our own that is open holds the keyboard too; it
/// lends it for as long as the tap lives. A keyboard that appears meanwhile is taken as soon as the server tells of it.
class X11EventTaps final : public EventTaps {
public:
    /// `silence` is begun and ended with each tap.
    explicit X11EventTaps(std::shared_ptr<KeyboardSilence> silence) : m_silence(std::move(silence)) {}

    [[nodiscard]] std::unique_ptr<EventTap> create(std::function<void()> onChange) override;

private:
    std::shared_ptr<KeyboardSilence> m_silence;
};

} // namespace tavrine
