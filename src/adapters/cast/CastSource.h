#pragma once

#include "adapters/stream/ThreadedScreenStream.h"
#include "base/Descriptor.h"

#include <variant>

namespace tavrine {

/// Pictures of a screen that a compositor gives over PipeWire.
struct Cast {
    std::uint32_t node = 0; ///< PipeWire's
    /// What is wanted of pictures of that size; none when they are not what was asked for.
    std::function<std::optional<QRect>(QSize pictures)> areaIn;
    Descriptor remote = {}; ///< a connection to PipeWire that sees the node; the session's own when it is not open

    [[nodiscard]] static Cast of(std::uint32_t node, QSize pictures, const QRect &area) {
        return {.node = node, .areaIn = [pictures, area](QSize size) {
                    return size == pictures ? std::optional(area) : std::nullopt;
                }};
    }
};

/// Has a compositor cast its screen for as long as this lives. Made and used on a stream's thread; all waiting is
/// bounded.
class CastSource {
public:
    virtual ~CastSource() = default;
    /// Or why there is none, in words. Ends soon once the session is over.
    [[nodiscard]] virtual std::variant<QString, Cast> open(const StreamPlan &plan,
                                                           const ScreenStreamConfiguration &configuration,
                                                           const ThreadedScreenStream::Session &session) = 0;
    /// Becomes readable when something has come for `lost` to look at; -1 for never.
    [[nodiscard]] virtual int descriptor() const { return -1; }
    /// The compositor has ended the cast: why, in words.
    [[nodiscard]] virtual std::optional<QString> lost() { return std::nullopt; }
};

} // namespace tavrine
