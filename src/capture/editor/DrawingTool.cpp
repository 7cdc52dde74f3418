#include "capture/editor/DrawingTool.h"

#include <algorithm>

namespace tavrine {
namespace {

const DrawingToolEntry &entryOf(DrawingTool tool) {
    const auto found = std::find_if(drawingTools.begin(), drawingTools.end(),
                                    [tool](const DrawingToolEntry &entry) { return entry.tool == tool; });
    return found == drawingTools.end() ? drawingTools.front() : *found;
}

const AnnotationThicknessEntry &entryOf(AnnotationThickness thickness) {
    const auto found =
        std::find_if(annotationThicknesses.begin(), annotationThicknesses.end(),
                     [thickness](const AnnotationThicknessEntry &entry) { return entry.thickness == thickness; });
    return found == annotationThicknesses.end() ? annotationThicknesses.front() : *found;
}

} // namespace

DrawingKind kindOf(DrawingTool tool) {
    return entryOf(tool).kind;
}

QString iconOf(DrawingTool tool) {
    return QStringView(entryOf(tool).icon).toString();
}

QString labelOf(DrawingTool tool) {
    return QStringView(entryOf(tool).label).toString();
}

double lineWidthOf(AnnotationThickness thickness) {
    return entryOf(thickness).lineWidth;
}

QString labelOf(AnnotationThickness thickness) {
    return QStringView(entryOf(thickness).label).toString();
}

QString rawValueOf(AnnotationThickness thickness) {
    return QStringView(entryOf(thickness).rawValue).toString();
}

std::optional<AnnotationThickness> annotationThickness(const QString &rawValue) {
    for (const AnnotationThicknessEntry &entry : annotationThicknesses) {
        if (rawValue == QStringView(entry.rawValue))
            return entry.thickness;
    }
    return std::nullopt;
}

} // namespace tavrine
