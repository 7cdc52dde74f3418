#include "capture/editor/DrawingTool.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

TEST(DrawingTools, areEightInTheOrderOfTheRowWithTheirIconsAndLabels) {
    struct Row {
        DrawingTool tool;
        int ordinal;
        DrawingKind kind;
        const char *icon;
        const char *label;
    };
    constexpr Row rows[] = {
        {DrawingTool::pen, 0, DrawingKind::path, "pencil", "Draw"},
        {DrawingTool::highlighter, 1, DrawingKind::path, "highlighter", "Highlighter"},
        {DrawingTool::arrow, 3, DrawingKind::arrow, "arrow.up.right", "Arrow"},
        {DrawingTool::text, 4, DrawingKind::text, "textformat", "Text"},
        {DrawingTool::rectangle, 5, DrawingKind::rectangle, "rectangle", "Rectangle"},
        {DrawingTool::oval, 6, DrawingKind::oval, "circle", "Circle"},
        {DrawingTool::numberStamp, 7, DrawingKind::number, "number.circle", "Number stamp"},
        {DrawingTool::eraser, 2, DrawingKind::path, "eraser", "Erase"},
    };
    ASSERT_EQ(drawingTools.size(), std::size(rows));
    for (size_t i = 0; i < std::size(rows); ++i) {
        const Row &row = rows[i];
        EXPECT_EQ(drawingTools[i].tool, row.tool) << i;
        EXPECT_EQ(static_cast<int>(row.tool), row.ordinal) << i;
        EXPECT_EQ(kindOf(row.tool), row.kind) << i;
        EXPECT_EQ(iconOf(row.tool), QString::fromLatin1(row.icon)) << i;
        EXPECT_EQ(labelOf(row.tool), QString::fromLatin1(row.label)) << i;
    }
}

TEST(DrawingTools, kindsAreNumberedFromPathToNumber) {
    EXPECT_EQ(static_cast<int>(DrawingKind::path), 0);
    EXPECT_EQ(static_cast<int>(DrawingKind::arrow), 1);
    EXPECT_EQ(static_cast<int>(DrawingKind::rectangle), 2);
    EXPECT_EQ(static_cast<int>(DrawingKind::oval), 3);
    EXPECT_EQ(static_cast<int>(DrawingKind::text), 4);
    EXPECT_EQ(static_cast<int>(DrawingKind::number), 5);
}

TEST(AnnotationThicknesses, areThreeSixAndTenPointsWithTheirTexts) {
    struct Row {
        AnnotationThickness thickness;
        double width;
        const char *raw;
        const char *label;
    };
    constexpr Row rows[] = {
        {AnnotationThickness::thin, 3.0, "thin", "Thin"},
        {AnnotationThickness::medium, 6.0, "medium", "Medium"},
        {AnnotationThickness::thick, 10.0, "thick", "Thick"},
    };
    ASSERT_EQ(annotationThicknesses.size(), std::size(rows));
    for (size_t i = 0; i < std::size(rows); ++i) {
        const Row &row = rows[i];
        EXPECT_EQ(annotationThicknesses[i].thickness, row.thickness);
        EXPECT_EQ(static_cast<size_t>(row.thickness), i);
        EXPECT_EQ(lineWidthOf(row.thickness), row.width);
        EXPECT_EQ(rawValueOf(row.thickness), QString::fromLatin1(row.raw));
        EXPECT_EQ(labelOf(row.thickness), QString::fromLatin1(row.label));
        EXPECT_EQ(annotationThickness(QString::fromLatin1(row.raw)), row.thickness);
    }
}

TEST(AnnotationThicknesses, anUnknownTextStandsForNone) {
    EXPECT_EQ(annotationThickness(QStringLiteral("Thin")), std::nullopt);
    EXPECT_EQ(annotationThickness(QString()), std::nullopt);
}

} // namespace
} // namespace tavrine
