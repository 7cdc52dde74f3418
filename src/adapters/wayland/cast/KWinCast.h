#pragma once

#include "adapters/cast/CastSource.h"
#include "adapters/wayland/screen/WaylandOutputs.h"

struct zkde_screencast_stream_unstable_v1;
struct zkde_screencast_unstable_v1;

namespace tavrine {

/// An output of KWin's, which casts it to the program of a desktop file that asks for it. Over a connection of its own.
class KWinCast final : public CastSource {
public:
    /// It makes a stream of PipeWire's before it answers.
    explicit KWinCast(WaylandLink::Wait longestAnswer = std::chrono::seconds(5)) : m_longestAnswer(longestAnswer) {}
    ~KWinCast() override;

    [[nodiscard]] std::variant<QString, Cast> open(const StreamPlan &plan,
                                                   const ScreenStreamConfiguration &configuration,
                                                   const ThreadedScreenStream::Session &session) override;
    [[nodiscard]] int descriptor() const override { return m_link.descriptor(); }
    [[nodiscard]] std::optional<QString> lost() override;

private:
    [[nodiscard]] bool waitUntil(const std::function<bool()> &isDone, WaylandLink::Wait longest,
                                 const ThreadedScreenStream::Session &session);
    [[nodiscard]] bool finish(const ThreadedScreenStream::Session &session);
    [[nodiscard]] std::optional<WaylandOutput> output(const QString &name) const;

    const WaylandLink::Wait m_longestAnswer;
    WaylandLink m_link;
    std::optional<WaylandOutputs> m_outputs;
    QSize m_pixels; ///< of the output
    QString m_name;
    zkde_screencast_unstable_v1 *m_casts = nullptr;
    zkde_screencast_stream_unstable_v1 *m_stream = nullptr;
    std::optional<std::uint32_t> m_node;
    std::optional<QString> m_end;
};

} // namespace tavrine
