#pragma once

#include <cstdint>
#include <span>

/// The compiled symbols: read-only data that the build makes out of resources/symbols. Only Symbols.cpp reads it.
namespace tavrine::symboltable {

/// How a layer is painted: over an empty ground, as a badge with a gap round it, small inside, or cut out.
enum class LayerWay : std::uint8_t { whole, badge, inside, cut };

/// One icon of a symbol: `count` numbers from `first` on, scaled and then moved, in units of the icon.
struct Layer {
    std::uint32_t first;
    std::uint32_t count;
    float scale;
    float x;
    float y;
    LayerWay way;
};

struct Entry {
    const char *name;
    std::uint16_t firstLayer;
    std::uint16_t layerCount;
};

/// Paths as numbers: 0 and a point moves, 1 and a point draws a line, 2 and three points a cubic curve, 3 closes.
extern const std::span<const std::int16_t> numbers;
extern const std::span<const Layer> layers;
/// Sorted by name.
extern const std::span<const Entry> entries;
extern const float unitsPerIcon;
extern const float stepsPerUnit;

} // namespace tavrine::symboltable
