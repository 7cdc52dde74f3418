#pragma once

#include "adapters/pasteboard/PasteboardTransfer.h"
#include "adapters/wayland/DataControl.h"
#include "adapters/wayland/DescriptorSet.h"
#include "adapters/wayland/WaylandBarrier.h"

#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

/// One target that its owner writes into a pipe. Lives on the reader's thread.
///
/// A pipe that ends says neither that everything was written nor that the offer still stood: a program that is killed
/// ends its pipes too, and some compositors answer an old offer with the newest contents. So the end counts once the
/// compositor has been asked whether anything else has happened meanwhile; what it tells of comes first.
class PipeTransfer final : public PasteboardTransfer {
public:
    /// What a pipe holds: as much is written in one go, and is whole though its owner ends right after it.
    static constexpr qsizetype pipeBytes = qsizetype{64} * 1024;

    /// `onEnded` is called in a turn of the link's. All must outlive this object.
    PipeTransfer(WaylandLink &link, const DescriptorSet &descriptors, DataOffer &offer, const QByteArray &target,
                 qsizetype maxBytes, std::function<void()> onEnded);
    ~PipeTransfer() override;
    PipeTransfer(const PipeTransfer &) = delete;
    PipeTransfer &operator=(const PipeTransfer &) = delete;

    [[nodiscard]] int descriptor() const { return m_pipe; }
    /// Takes what is in the pipe.
    void read();
    /// Takes nothing more of it.
    void close();
    [[nodiscard]] bool isRunning() const override { return m_state != State::ended; }
    [[nodiscard]] bool hasBegun() const override { return m_state != State::asked; }
    [[nodiscard]] TimePoint lastProgress() const override { return m_lastProgress; }
    /// What was in the pipe by then, if the pipe could hold all of it, else nothing; without `onEnded`.
    void ownerEnded() override;

    /// Once it has ended; none when it was refused or is too large.
    [[nodiscard]] std::optional<QByteArray> takeBytes() { return std::exchange(m_bytes, std::nullopt); }

private:
    enum class State { asked, coming, confirmed, ended };

    void confirm(int times);
    void end();

    WaylandLink &m_link;
    const DescriptorSet &m_descriptors;
    const qsizetype m_maxBytes;
    const std::function<void()> m_onEnded;
    int m_pipe = -1;
    State m_state = State::asked;
    TimePoint m_lastProgress;
    std::optional<QByteArray> m_bytes;
    std::unique_ptr<WaylandBarrier> m_barrier;
};

} // namespace tavrine
