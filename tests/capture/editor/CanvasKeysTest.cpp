#include "capture/editor/CanvasKeys.h"

#include "CanvasFixture.h"

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using Step = CanvasKeys::Step;
using testing::ElementsAre;

class CanvasKeysTest : public testing::Test {
protected:
    CanvasKeysTest() {
        model.setBounds({400, 200});
        model.setParent(state.canvas());
    }
    bool enter(DrawingTool tool, const QRectF &seen = {0, 0, 400, 200}) {
        state.tool = tool;
        return keys.enter(seen);
    }
    [[nodiscard]] std::vector<QPointF> points(size_t at = 0) const { return state.drawings.at(at).points; }

    CanvasState state;
    DrawViewModel model;
    CanvasKeys keys{model};
};

TEST_F(CanvasKeysTest, returnPutsAShapeIntoTheMiddleAsADragWould) {
    EXPECT_TRUE(enter(DrawingTool::rectangle));
    ASSERT_EQ(state.drawings.size(), 1U);
    EXPECT_EQ(state.drawings[0].kind, DrawingKind::rectangle);
    EXPECT_THAT(points(), ElementsAre(QPointF(0.375, 0.375), QPointF(0.625, 0.625)));
    EXPECT_EQ(keys.selected(), state.drawings[0]);
}

TEST_F(CanvasKeysTest, theMiddleIsThatOfWhatIsSeen) {
    EXPECT_TRUE(enter(DrawingTool::oval, {200, 100, 200, 100}));
    EXPECT_THAT(points(), ElementsAre(QPointF(0.6875, 0.6875), QPointF(0.8125, 0.8125)));
}

TEST_F(CanvasKeysTest, penAndHighlighterDrawALine) {
    EXPECT_TRUE(enter(DrawingTool::highlighter));
    EXPECT_TRUE(state.drawings[0].isHighlighter);
    EXPECT_THAT(points(), ElementsAre(QPointF(0.375, 0.5), QPointF(0.625, 0.5)));
}

TEST_F(CanvasKeysTest, aStampStandsInTheMiddleAndATextIsTypedThere) {
    EXPECT_TRUE(enter(DrawingTool::numberStamp));
    EXPECT_THAT(points(), ElementsAre(QPointF(0.5, 0.5)));
    keys.letGo();
    EXPECT_TRUE(enter(DrawingTool::text));
    ASSERT_TRUE(model.activeTextField());
    EXPECT_EQ(model.activeTextField()->origin, QPointF(200, 100));
    EXPECT_EQ(keys.selected(), std::nullopt); // the field is there instead
    model.controlTextDidChange(str("words"));
    model.commitActiveText();
    ASSERT_TRUE(keys.selected());
    EXPECT_EQ(keys.selected()->text, str("words"));
}

TEST_F(CanvasKeysTest, theEraserPutsNothingThere) {
    ASSERT_TRUE(enter(DrawingTool::highlighter)); // where it would erase
    ASSERT_TRUE(keys.letGo());
    EXPECT_FALSE(enter(DrawingTool::eraser));
    EXPECT_EQ(state.drawings.size(), 1U);
}

TEST_F(CanvasKeysTest, returnOnWhatIsSelectedLetsItGoAndTheNextPutsAnother) {
    enter(DrawingTool::arrow);
    EXPECT_TRUE(enter(DrawingTool::arrow));
    EXPECT_EQ(keys.selected(), std::nullopt);
    EXPECT_EQ(state.drawings.size(), 1U);
    EXPECT_TRUE(enter(DrawingTool::arrow));
    EXPECT_EQ(state.drawings.size(), 2U);
}

TEST_F(CanvasKeysTest, stepsMoveTheWholeOrItsLastPoint) {
    enter(DrawingTool::arrow);
    EXPECT_TRUE(keys.step(Step::move, {10, -20}));
    EXPECT_THAT(points(), ElementsAre(QPointF(0.4, 0.275), QPointF(0.65, 0.525)));
    EXPECT_TRUE(keys.step(Step::resize, {-40, 2}));
    EXPECT_THAT(points(), ElementsAre(QPointF(0.4, 0.275), QPointF(0.55, 0.535)));
}

TEST_F(CanvasKeysTest, aStampHasNoSizeAndIsMoved) {
    enter(DrawingTool::numberStamp);
    EXPECT_TRUE(keys.step(Step::resize, {40, 0}));
    EXPECT_THAT(points(), ElementsAre(QPointF(0.6, 0.5)));
}

TEST_F(CanvasKeysTest, nothingIsMovedOverTheEdgeAndItKeepsItsSize) {
    enter(DrawingTool::rectangle);
    keys.step(Step::move, {-1000, 1000});
    EXPECT_THAT(points(), ElementsAre(QPointF(0, 0.75), QPointF(0.25, 1)));
    keys.step(Step::resize, {1000, 1000});
    EXPECT_THAT(points(), ElementsAre(QPointF(0, 0.75), QPointF(1, 1)));
}

TEST_F(CanvasKeysTest, whatStandsBeyondTheEdgeMayComeBackButGoesNoFurther) {
    state.drawings = {drawing(DrawingKind::number, {{1.25, 0.5}})};
    keys.selectNext(true);
    keys.step(Step::move, {40, 0});
    EXPECT_THAT(points(), ElementsAre(QPointF(1.25, 0.5)));
    keys.step(Step::move, {-40, 0});
    EXPECT_THAT(points(), ElementsAre(QPointF(1.15, 0.5)));
}

TEST_F(CanvasKeysTest, theSelectionGoesThroughAllAndOutAtBothEnds) {
    EXPECT_FALSE(keys.selectNext(true));
    EXPECT_FALSE(keys.selectNext(false));
    state.drawings = {drawing(DrawingKind::arrow, {{0, 0}, {1, 1}}), stamp(1, {0.5, 0.5})};
    EXPECT_TRUE(keys.selectNext(true));
    EXPECT_EQ(keys.words(), str("Arrow, 1 of 2"));
    EXPECT_TRUE(keys.selectNext(true));
    EXPECT_EQ(keys.words(), str("Number stamp, 2 of 2"));
    EXPECT_FALSE(keys.selectNext(true));
    EXPECT_EQ(keys.words(), QString());
    EXPECT_TRUE(keys.selectNext(false));
    EXPECT_EQ(keys.selected(), state.drawings[1]);
    EXPECT_TRUE(keys.selectNext(false));
    EXPECT_FALSE(keys.selectNext(false));
}

TEST_F(CanvasKeysTest, removingTakesTheSelectedOneAlone) {
    EXPECT_FALSE(keys.remove());
    state.drawings = {stamp(1, {0.5, 0.5}), stamp(2, {0.5, 0.5})};
    state.nextStampNumber = 3;
    keys.selectNext(true);
    EXPECT_TRUE(keys.remove());
    ASSERT_EQ(state.drawings.size(), 1U);
    EXPECT_EQ(state.drawings[0].number, 2);
    EXPECT_EQ(state.nextStampNumber, 3); // as the eraser leaves it
    EXPECT_FALSE(keys.remove());
}

TEST_F(CanvasKeysTest, aSelectionWhoseAnnotationWentIsNone) {
    enter(DrawingTool::oval);
    state.drawings.clear(); // an undo
    EXPECT_EQ(keys.selected(), std::nullopt);
    EXPECT_FALSE(keys.step(Step::move, {1, 0}));
    EXPECT_FALSE(keys.letGo());
    EXPECT_TRUE(keys.words().isEmpty());
}

TEST_F(CanvasKeysTest, withoutACanvasNothingHappens) {
    model.setParent(std::nullopt);
    EXPECT_FALSE(keys.enter({0, 0, 400, 200}));
    EXPECT_FALSE(keys.selectNext(true));
    EXPECT_FALSE(keys.remove());
    EXPECT_FALSE(keys.step(Step::move, {1, 1}));
}

} // namespace
} // namespace tavrine
