#pragma once

#include "adapters/frozen/MagnifierGeometry.h"
#include "adapters/frozen/OverlayMonitor.h"
#include "programs/screencapture/SelectionModel.h"

#include <functional>
#include <string>
#include <vector>

namespace tavrine {

/// All that stands on the frozen screen at one moment, as places and texts. A value: two of them tell what must be
/// painted again.
struct OverlayScene {
    struct Label {
        QRect area;
        std::u32string text;
        bool operator==(const Label &) const = default;
    };
    /// The room that a label's text takes at a scale; empty before the letters are there.
    using LabelSize = std::function<QSize(const std::u32string &text, double scale)>;

    /// How large the picture of an area will be.
    using WrittenSize = std::function<QSize(const QRect &area)>;

    double scale = 1;
    std::optional<QRect> clear; ///< what is not dimmed
    bool isPicked = false;      ///< `clear` is a window to be taken, not a dragged selection
    std::vector<QRect> crossLines;
    std::optional<MagnifierGeometry> magnifier;
    std::vector<Label> labels;

    [[nodiscard]] static OverlayScene of(const SelectionModel &model, const std::vector<OverlayMonitor> &monitors,
                                         const LabelSize &labelSize, const WrittenSize &writtenSize = {});

    /// The width of the frame, which lies outside of what is taken.
    [[nodiscard]] int frameWidth() const;

    bool operator==(const OverlayScene &) const = default;
};

/// What is different between the two on the screen.
[[nodiscard]] std::vector<QRect> changedAreas(const OverlayScene &before, const OverlayScene &after);

/// Where the label with a selection's size goes: above its left end, below, or within it, whatever is first on the
/// monitor and clear of `avoid`.
[[nodiscard]] QRect sizeLabelPlace(const QRect &selection, QSize label, const QRect &monitor, const QRect &avoid,
                                   double scale);

} // namespace tavrine
