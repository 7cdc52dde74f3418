#pragma once

namespace tavrine {

class LayerRole;

/// A toolkit's window that floats by a role of its own.
class LayerHost {
public:
    virtual ~LayerHost() = default;
    /// Null while it is hidden.
    [[nodiscard]] virtual const LayerRole *role() const = 0;
};

} // namespace tavrine
