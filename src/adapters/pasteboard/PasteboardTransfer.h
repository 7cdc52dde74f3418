#pragma once

#include <QByteArray>

#include <chrono>
#include <cstdint>

namespace tavrine {

/// What an owner handed over for one target, as it came.
struct Received {
    QByteArray target;
    QByteArray bytes;
    std::uint32_t type = 0; ///< the desktop's number for what it says the bytes are, where it has such numbers
    int format = 8;         ///< bits of a unit
};

/// One target on its way from the owner to us. Lives on the reader's thread. Deadlines are the caller's: it sees the
/// progress.
class PasteboardTransfer {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    virtual ~PasteboardTransfer() = default;

    [[nodiscard]] virtual bool isRunning() const = 0;
    /// The owner has answered something.
    [[nodiscard]] virtual bool hasBegun() const = 0;
    [[nodiscard]] virtual TimePoint lastProgress() const = 0;

    /// The owner has ended: what is certain to be whole already ends the transfer.
    virtual void ownerEnded() {}

    /// Whether a question can get lost, so that it is worth asking again while nothing has begun.
    [[nodiscard]] virtual bool mayBeAskedAgain() const { return false; }
    virtual void askAgain() {}
    [[nodiscard]] virtual int questions() const { return 1; }
};

} // namespace tavrine
