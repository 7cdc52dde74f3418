#pragma once

#include "capture/editor/DrawingPath.h"

#include <array>
#include <optional>

namespace tavrine {

/// What the tool row shows of a tool: one entry for each, in the order of the row.
struct DrawingToolEntry {
    DrawingTool tool;
    DrawingKind kind; ///< what the tool leaves behind; of the eraser, what it would draw
    const char16_t *icon;
    const char16_t *label;
};

inline constexpr std::array<DrawingToolEntry, 8> drawingTools{{
    {DrawingTool::pen, DrawingKind::path, u"pencil", u"Draw"},
    {DrawingTool::highlighter, DrawingKind::path, u"highlighter", u"Highlighter"},
    {DrawingTool::arrow, DrawingKind::arrow, u"arrow.up.right", u"Arrow"},
    {DrawingTool::text, DrawingKind::text, u"textformat", u"Text"},
    {DrawingTool::rectangle, DrawingKind::rectangle, u"rectangle", u"Rectangle"},
    {DrawingTool::oval, DrawingKind::oval, u"circle", u"Circle"},
    {DrawingTool::numberStamp, DrawingKind::number, u"number.circle", u"Number stamp"},
    {DrawingTool::eraser, DrawingKind::path, u"eraser", u"Erase"},
}};

[[nodiscard]] DrawingKind kindOf(DrawingTool tool);
[[nodiscard]] QString iconOf(DrawingTool tool);
[[nodiscard]] QString labelOf(DrawingTool tool);

/// The three widths of lines, in their order, with the text that stands for each and the one in the picker.
struct AnnotationThicknessEntry {
    AnnotationThickness thickness;
    const char16_t *rawValue;
    double lineWidth; ///< in points
    const char16_t *label;
};

inline constexpr std::array<AnnotationThicknessEntry, 3> annotationThicknesses{{
    {AnnotationThickness::thin, u"thin", 3.0, u"Thin"},
    {AnnotationThickness::medium, u"medium", 6.0, u"Medium"},
    {AnnotationThickness::thick, u"thick", 10.0, u"Thick"},
}};

[[nodiscard]] double lineWidthOf(AnnotationThickness thickness);
[[nodiscard]] QString labelOf(AnnotationThickness thickness);
[[nodiscard]] QString rawValueOf(AnnotationThickness thickness);
/// None for a text that stands for no thickness.
[[nodiscard]] std::optional<AnnotationThickness> annotationThickness(const QString &rawValue);

} // namespace tavrine
