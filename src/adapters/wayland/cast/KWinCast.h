#pragma once

#include "adapters/cast/CastSource.h"
#include "adapters/wayland/screen/WaylandOutputs.h"

struct zkde_screencast_stream_unstable_v1;
struct zkde_screencast_unstable_v1;

namespace tavrine {

/// An output of KWin's, which casts it to the program of a desktop file that asks for it. Over a connection of its own.
class KWinCast final : public CastSource {
public:
    KWinCast() = default;
    ~KWinCast() override;

    [[nodiscard]] std::variant<QString, Cast> open(const StreamPlan &plan,
                                                   const ScreenStreamConfiguration &configuration) override;
    [[nodiscard]] int descriptor() const override { return m_link.descriptor(); }
    [[nodiscard]] std::optional<QString> lost() override;

private:
    [[nodiscard]] std::optional<WaylandOutput> output(const QString &name) const;

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
