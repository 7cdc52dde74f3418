#pragma once

#include "adapters/stream/StreamPlan.h"

#include <optional>
#include <variant>

namespace tavrine {

/// Pictures of a screen that a compositor gives over PipeWire.
struct Cast {
    std::uint32_t node = 0; ///< PipeWire's
    QSize pictures;         ///< the size of its pictures; others are not what was asked for
    QRect area;             ///< of them: what is wanted
};

/// Has a compositor cast its screen for as long as this lives. Made and used on a stream's thread; all waiting is
/// bounded.
class CastSource {
public:
    virtual ~CastSource() = default;
    /// Or why there is none, in words.
    [[nodiscard]] virtual std::variant<QString, Cast> open(const StreamPlan &plan,
                                                           const ScreenStreamConfiguration &configuration) = 0;
    /// Becomes readable when something has come for `lost` to look at; -1 for never.
    [[nodiscard]] virtual int descriptor() const { return -1; }
    /// The compositor has ended the cast: why, in words.
    [[nodiscard]] virtual std::optional<QString> lost() { return std::nullopt; }
};

} // namespace tavrine
