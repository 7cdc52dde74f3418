#pragma once

#include "base/Descriptor.h"
#include "programs/screencapture/SelectionModel.h"

#include <functional>
#include <string>

namespace tavrine {

/// Tells TavrineNarrator, a process of its own, where the person has come to, so that a screen reader says it. Owned by
/// the capture; one thread.
///
///  1. Keys and clicks are told, a pointer on its way is not: what follows it would be talk without an end.
///  2. Nobody waits for the other: what it does not take is dropped, and a capture without it is one all the same.
class Narration {
public:
    /// How large the picture of an area will be.
    using WrittenSize = std::function<QSize(const QRect &area)>;

    /// `writtenSize` none: as large as the area.
    explicit Narration(const QRect &screen, WrittenSize writtenSize = {});

    /// Starts it from beside this program. To be called when the overlay is shown.
    void begin();
    /// As `begin`, with somebody who listens already on a socket.
    void beginWith(Descriptor listener);
    /// What the model has made of an event.
    void follow(OverlayEvent::Kind kind, const SelectionModel &model);
    /// Where the model stands now, unless that was said last.
    void tell(const SelectionModel &model);

private:
    void send(const std::string &line);

    QRect m_screen;
    WrittenSize m_writtenSize;
    Descriptor m_listener;
    std::string m_last;
};

} // namespace tavrine
