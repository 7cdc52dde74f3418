#pragma once

#include "adapters/wayland/DescriptorSet.h"

#include <QByteArray>

#include <chrono>
#include <optional>
#include <vector>

namespace tavrine {

/// What other programs are pasting from us, each through a pipe that it may empty, leave or never look at. Lives on the
/// reader's thread.
class OutgoingPipes {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// `stall`: who takes nothing for so long has gone or is hung. Only `most` are served at the same time.
    OutgoingPipes(const DescriptorSet &descriptors, std::chrono::milliseconds stall, int most);
    ~OutgoingPipes();
    OutgoingPipes(const OutgoingPipes &) = delete;
    OutgoingPipes &operator=(const OutgoingPipes &) = delete;

    /// Writes the bytes, as far as the pipe takes them now, and goes on with `proceed`; then closes it. Takes the
    /// descriptor. What is no pipe is closed at once: to write to a file may wait for ever.
    void write(int descriptor, const QByteArray &bytes);
    /// There is room in the pipe.
    void proceed(int descriptor);

    [[nodiscard]] std::optional<TimePoint> deadline() const;
    void expire(TimePoint now);

private:
    struct Outgoing {
        int descriptor;
        QByteArray bytes;
        qsizetype offset;
        TimePoint lastProgress;
    };

    /// True when there is nothing left to be done.
    [[nodiscard]] static bool writeSome(Outgoing &outgoing);
    void drop(const Outgoing &outgoing) const;

    const DescriptorSet &m_descriptors;
    const std::chrono::milliseconds m_stall;
    const std::size_t m_most;
    std::vector<Outgoing> m_outgoing;
};

} // namespace tavrine
