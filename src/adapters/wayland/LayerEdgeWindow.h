#pragma once

#include "ports/EdgeWindow.h"

namespace tavrine {

struct LayerParts;

/// Windows at the edge of a screen as Qt widgets on the layer shell. Lives on the main thread; outlives its windows.
///
/// Their surface has the largest size from the beginning, and what is shown of it grows within it, painted. At rest
/// they are not quite in nobody's way: see `LayerEdgeView`.
class LayerEdgeWindows final : public EdgeWindows {
public:
    explicit LayerEdgeWindows(LayerParts &parts) : m_parts(parts) {}

    [[nodiscard]] std::unique_ptr<EdgeWindow> makeEdgeWindow(const EdgeWindowDescription &description) override;

private:
    LayerParts &m_parts;
};

} // namespace tavrine
