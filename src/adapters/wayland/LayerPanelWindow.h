#pragma once

#include "ports/PanelWindow.h"

namespace tavrine {

struct LayerParts;

/// Panels as Qt widgets on the layer shell. Lives on the main thread; outlives its panels.
///
/// A panel that is made key has the keyboard until it goes, whatever is clicked meanwhile: a compositor has no half-way
/// that all of them keep. A large window of this program that opens takes it from the panels. The pixels of a window
/// cannot be kept from others here, so `sharing` changes nothing.
class LayerPanelWindows final : public PanelWindows {
public:
    explicit LayerPanelWindows(LayerParts &parts) : m_parts(parts) {}

    [[nodiscard]] std::unique_ptr<PanelWindow> makePanel(const PanelDescription &description) override;
    [[nodiscard]] bool isComposited() const override { return true; }
    [[nodiscard]] bool isAsking() const override;

private:
    LayerParts &m_parts;
};

} // namespace tavrine
