#pragma once

#include "ports/Dragging.h"

#include <QObject>

#include <memory>
#include <vector>

namespace tavrine {

/// Drops that are read beside the main thread, whatever the protocol. Lives on the main thread.
class Drops final : public QObject {
public:
    /// Runs on a thread of its own. Comes back soon once the descriptor can be read: nobody waits for it any more.
    using Reading = std::function<DroppedContent(int stop)>;
    using Completion = std::function<void(const DroppedContent &)>;

    Drops();
    ~Drops() override;

    /// Waits for the content as long as a program may hold its drop's event up, and calls `completion` within the call.
    /// What is not here by then follows in a turn of its own.
    void read(Reading reading, Completion completion);

private:
    class Drop;

    void finish(const Drop *drop);

    std::vector<std::unique_ptr<Drop>> m_late;
};

} // namespace tavrine
