#include "capture/editor/DrawViewModel.h"

#include "CanvasFixture.h"

#include <limits>

namespace tavrine {
namespace {

constexpr double none = std::numeric_limits<double>::quiet_NaN();

class DrawViewModelTest : public testing::Test {
protected:
    DrawViewModelTest() {
        model.setBounds({400, 200});
        bind();
    }
    void bind() { model.setParent(state.canvas()); }
    void use(DrawingTool tool) { state.tool = tool; }
    void drag(const std::vector<QPointF> &way) {
        model.mouseDown(way.front());
        for (size_t i = 1; i < way.size(); ++i)
            model.mouseDragged(way[i]);
        model.mouseUp();
    }
    void click(const QPointF &at) { drag({at}); }
    void typeInto(const QPointF &at, const char *text) {
        use(DrawingTool::text);
        click(at);
        model.controlTextDidChange(str(text));
    }
    const DrawingPath &last() { return state.drawings.back(); }

    CanvasState state;
    int fieldsShown = 0;
    int fieldsRemoved = 0;
    int focused = 0;
    QRectF redrawn;
    DrawViewModel model{{[this](const QRectF &area) { redrawn |= area; }, [] {},
                         [this](const DrawViewModel::TextField &) { ++fieldsShown; },
                         [this] {
                             ++fieldsRemoved;
                             model.controlTextDidEndEditing(); // as a field that loses the keyboard does
                         },
                         [this] { ++focused; }}};
};

TEST_F(DrawViewModelTest, aPenStrokeIsWrittenInFractionsOfTheCanvasWhenTheButtonGoesUp) {
    model.mouseDown({40, 20});
    model.mouseDragged({200, 100});
    EXPECT_TRUE(state.drawings.empty());
    model.mouseDragged({400, 50});
    model.mouseUp();
    ASSERT_EQ(state.drawings.size(), 1U);
    EXPECT_EQ(last().kind, DrawingKind::path);
    EXPECT_EQ(last().points, (std::vector<QPointF>{{0.1, 0.1}, {0.5, 0.5}, {1, 0.25}}));
    EXPECT_EQ(last().color, QColor(Qt::red));
    EXPECT_EQ(last().lineWidth, 3.0);
    EXPECT_FALSE(last().isHighlighter);
    EXPECT_EQ(last().text, std::nullopt);
    EXPECT_EQ(last().number, std::nullopt);
    EXPECT_TRUE(model.currentPoints().empty());
}

TEST_F(DrawViewModelTest, aStrokeStaysWhereItIsOnThePictureWhenTheViewGetsAnotherSize) {
    model.mouseDown({40, 20});
    model.mouseDragged({80, 40});
    model.setBounds({800, 200});
    model.mouseDragged({240, 60});
    model.mouseUp();
    EXPECT_EQ(last().points, (std::vector<QPointF>{{0.1, 0.1}, {0.2, 0.2}, {0.3, 0.3}}));
}

TEST_F(DrawViewModelTest, aViewThatHadNoAreaForAMomentLosesNoStroke) {
    model.mouseDown({40, 20});
    model.setBounds({0, 0});
    model.setBounds({400, 200});
    model.mouseDragged({80, 40});
    model.mouseUp();
    EXPECT_EQ(last().points, (std::vector<QPointF>{{0.1, 0.1}, {0.2, 0.2}}));
}

TEST_F(DrawViewModelTest, theFieldStaysWhereItIsOnThePictureWhenTheViewGetsAnotherSize) {
    typeInto({40, 20}, "a");
    model.setBounds({800, 600});
    ASSERT_TRUE(model.activeTextField());
    EXPECT_EQ(model.activeTextField()->origin, QPointF(80, 60));
    EXPECT_EQ(model.activeTextField()->string, str("a"));
    EXPECT_EQ(last().points, (std::vector<QPointF>{{0.1, 0.1}}));
}

TEST_F(DrawViewModelTest, aClickThatEndsTheTypingStartsNoStrokeThoughThePointerMoves) {
    typeInto({40, 20}, "a");
    drag({{200, 100}, {201, 100}, {260, 140}});
    EXPECT_EQ(state.drawings.size(), 1U);
    EXPECT_EQ(state.tool, DrawingTool::pen);
    drag({{200, 100}, {201, 100}});
    EXPECT_EQ(state.drawings.size(), 2U);
}

TEST_F(DrawViewModelTest, eachAnnotationHasAnIdentityOfItsOwn) {
    drag({{1, 1}, {2, 2}});
    drag({{1, 1}, {2, 2}});
    ASSERT_EQ(state.drawings.size(), 2U);
    EXPECT_EQ(state.drawings[0].id.size(), 36);
    EXPECT_NE(state.drawings[0].id, state.drawings[1].id);
}

TEST_F(DrawViewModelTest, aPenClickLeavesAnAnnotationOfOnePoint) {
    click({40, 20});
    ASSERT_EQ(state.drawings.size(), 1U);
    EXPECT_EQ(last().points, (std::vector<QPointF>{{0.1, 0.1}}));
}

TEST_F(DrawViewModelTest, aThickHighlighterIsFortyWideWithFourTenthsOfTheColour) {
    use(DrawingTool::highlighter);
    state.lineWidth = 10;
    state.selectedColor = Qt::yellow;
    bind();
    drag({{0, 0}, {10, 10}});
    ASSERT_EQ(state.drawings.size(), 1U);
    EXPECT_EQ(last().kind, DrawingKind::path);
    EXPECT_TRUE(last().isHighlighter);
    EXPECT_EQ(last().lineWidth, 40);
    EXPECT_NEAR(last().color.alphaF(), 0.4, 1e-4);
    EXPECT_EQ(last().color.rgb(), QColor(Qt::yellow).rgb());
}

TEST_F(DrawViewModelTest, aHighlighterClickIsAnAnnotationToo) {
    use(DrawingTool::highlighter);
    click({40, 20});
    EXPECT_EQ(state.drawings.size(), 1U);
}

TEST_F(DrawViewModelTest, arrowsRectanglesAndOvalsHaveTheFirstAndTheLastPoint) {
    for (const auto &[tool, kind] :
         {std::pair{DrawingTool::arrow, DrawingKind::arrow}, std::pair{DrawingTool::rectangle, DrawingKind::rectangle},
          std::pair{DrawingTool::oval, DrawingKind::oval}}) {
        use(tool);
        model.mouseDown({0, 0});
        model.mouseDragged({100, 100});
        model.mouseDragged({200, 100});
        EXPECT_EQ(model.currentPoints(), (std::vector<QPointF>{{0, 0}, {200, 100}}));
        model.mouseUp();
        EXPECT_EQ(last().kind, kind);
        EXPECT_EQ(last().points, (std::vector<QPointF>{{0, 0}, {0.5, 0.5}}));
    }
    EXPECT_EQ(state.drawings.size(), 3U);
}

TEST_F(DrawViewModelTest, aPlainClickOfArrowRectangleOrOvalLeavesNothing) {
    for (const DrawingTool tool : {DrawingTool::arrow, DrawingTool::rectangle, DrawingTool::oval}) {
        use(tool);
        click({40, 20});
        EXPECT_TRUE(model.currentPoints().empty());
    }
    EXPECT_TRUE(state.drawings.empty());
}

TEST_F(DrawViewModelTest, aDragThatBeganNowhereDragsOutNoShape) {
    use(DrawingTool::arrow);
    model.mouseDragged({10, 10});
    EXPECT_TRUE(model.currentPoints().empty());
    use(DrawingTool::pen); // a pen takes every point that it is told of
    model.mouseDragged({10, 10});
    EXPECT_EQ(model.currentPoints().size(), 1U);
}

TEST_F(DrawViewModelTest, aDragWithTextOrStampDoesNothing) {
    use(DrawingTool::numberStamp);
    drag({{10, 10}, {20, 20}, {30, 30}});
    EXPECT_EQ(state.drawings.size(), 1U);
    use(DrawingTool::text);
    drag({{10, 10}, {20, 20}});
    EXPECT_EQ(state.drawings.size(), 2U);
    EXPECT_TRUE(model.currentPoints().empty());
}

TEST_F(DrawViewModelTest, aStampTakesTheNextNumberAndStaysSelected) {
    use(DrawingTool::numberStamp);
    state.lineWidth = 6;
    state.nextStampNumber = 7;
    bind();
    click({40, 20});
    click({80, 20});
    ASSERT_EQ(state.drawings.size(), 2U);
    EXPECT_EQ(state.drawings[0].kind, DrawingKind::number);
    EXPECT_EQ(state.drawings[0].points, (std::vector<QPointF>{{0.1, 0.1}}));
    EXPECT_EQ(state.drawings[0].number, 7);
    EXPECT_EQ(state.drawings[0].text, std::nullopt);
    EXPECT_EQ(state.drawings[0].lineWidth, 6);
    EXPECT_EQ(state.drawings[1].number, 8);
    EXPECT_EQ(state.nextStampNumber, 9);
    EXPECT_EQ(state.tool, DrawingTool::numberStamp);
}

TEST_F(DrawViewModelTest, afterAnUndoneStampItsNumberIsGivenAgain) {
    use(DrawingTool::numberStamp);
    click({40, 20});
    click({80, 20});
    state.drawings.pop_back(); // as the editor undoes
    state.nextStampNumber = std::max(state.nextStampNumber - 1, 1);
    click({120, 20});
    ASSERT_EQ(state.drawings.size(), 2U);
    EXPECT_EQ(state.drawings[0].number, 1);
    EXPECT_EQ(state.drawings[1].number, 2);
}

TEST_F(DrawViewModelTest, aDragOfTheEraserErasesAlongItsWayAndKeepsTheNextNumber) {
    use(DrawingTool::numberStamp);
    click({40, 20});
    click({200, 100});
    click({360, 180});
    use(DrawingTool::eraser);
    drag({{41, 20}, {120, 60}, {360, 181}});
    ASSERT_EQ(state.drawings.size(), 1U);
    EXPECT_EQ(last().number, 2);
    EXPECT_EQ(state.nextStampNumber, 4);
    EXPECT_TRUE(model.currentPoints().empty());
}

TEST_F(DrawViewModelTest, theErasersReachIsAFractionOfEachSide) {
    use(DrawingTool::numberStamp);
    click({200, 100});
    use(DrawingTool::eraser);
    click({200, 106.1}); // 0.0305 of the height
    EXPECT_EQ(state.drawings.size(), 1U);
    click({211.9, 100}); // 0.02975 of the width
    EXPECT_TRUE(state.drawings.empty());
}

TEST_F(DrawViewModelTest, anEraserThatHitsNothingWritesNothing) {
    use(DrawingTool::numberStamp);
    click({200, 100});
    const int before = state.writes;
    use(DrawingTool::eraser);
    drag({{10, 10}, {20, 20}});
    EXPECT_EQ(state.writes, before);
}

TEST_F(DrawViewModelTest, textBeginsWithAnEmptyAnnotationAndAFieldAtThePoint) {
    state.selectedColor = Qt::blue;
    state.lineWidth = 10;
    bind();
    use(DrawingTool::text);
    click({40, 20});
    ASSERT_EQ(state.drawings.size(), 1U);
    EXPECT_EQ(last().kind, DrawingKind::text);
    EXPECT_EQ(last().points, (std::vector<QPointF>{{0.1, 0.1}}));
    EXPECT_EQ(last().text, std::nullopt);
    EXPECT_EQ(last().number, std::nullopt);
    EXPECT_EQ(last().lineWidth, 10);
    EXPECT_EQ(model.activeTextID(), last().id);
    EXPECT_EQ(model.activeTextField(), (DrawViewModel::TextField{{40, 20}, Qt::blue, 10, {}}));
    EXPECT_EQ(fieldsShown, 1);
    EXPECT_EQ(state.tool, DrawingTool::text);
}

TEST_F(DrawViewModelTest, eachLetterChangesTheAnnotationBehindTheField) {
    typeInto({40, 20}, "H");
    EXPECT_EQ(last().text, str("H"));
    model.controlTextDidChange(str("Hi"));
    EXPECT_EQ(last().text, str("Hi"));
    EXPECT_EQ(state.drawings.size(), 1U);
    EXPECT_TRUE(model.activeTextField());
}

TEST_F(DrawViewModelTest, clickingAwayCommitsAndTurnsToThePenAndTheNextClickDraws) {
    typeInto({40, 20}, "Hi");
    click({300, 100});
    EXPECT_EQ(state.tool, DrawingTool::pen);
    ASSERT_EQ(state.drawings.size(), 1U);
    EXPECT_EQ(last().text, str("Hi"));
    EXPECT_FALSE(model.activeTextField());
    EXPECT_FALSE(model.activeTextID());
    EXPECT_EQ(fieldsRemoved, 1);
    click({300, 100});
    ASSERT_EQ(state.drawings.size(), 2U);
    EXPECT_EQ(last().kind, DrawingKind::path);
}

TEST_F(DrawViewModelTest, returnAndEscapeBothKeepTheTextAndTurnToThePen) {
    for (const auto command : {DrawViewModel::Command::insertNewline, DrawViewModel::Command::cancelOperation}) {
        typeInto({40, 20}, " kept ");
        EXPECT_TRUE(model.doCommand(command));
        EXPECT_EQ(last().text, str(" kept "));
        EXPECT_EQ(state.tool, DrawingTool::pen);
        EXPECT_FALSE(model.activeTextField());
    }
    EXPECT_EQ(state.drawings.size(), 2U);
    EXPECT_EQ(focused, 2);
}

TEST_F(DrawViewModelTest, anyOtherKeyIsLeftToTheField) {
    typeInto({40, 20}, "Hi");
    EXPECT_FALSE(model.doCommand(DrawViewModel::Command::other));
    EXPECT_TRUE(model.activeTextField());
    EXPECT_EQ(state.tool, DrawingTool::text);
    EXPECT_EQ(focused, 0);
}

TEST_F(DrawViewModelTest, aTextOfNothingButSpaceIsRemoved) {
    for (const char *blank : {"", "   ", " \t\n "}) {
        typeInto({40, 20}, "x");
        model.controlTextDidChange(str(blank));
        model.doCommand(DrawViewModel::Command::insertNewline);
        EXPECT_TRUE(state.drawings.empty()) << '"' << blank << '"';
    }
    typeInto({40, 20}, "  . ");
    model.doCommand(DrawViewModel::Command::insertNewline);
    EXPECT_EQ(state.drawings.size(), 1U);
}

TEST_F(DrawViewModelTest, aTextThatLosesTheKeyboardIsCommittedAndTheToolStays) {
    typeInto({40, 20}, "Hi");
    model.controlTextDidEndEditing();
    EXPECT_FALSE(model.activeTextField());
    EXPECT_EQ(last().text, str("Hi"));
    EXPECT_EQ(state.tool, DrawingTool::text);
}

TEST_F(DrawViewModelTest, anotherTextOrAStampCommitsTheTextBefore) {
    typeInto({40, 20}, "one");
    model.beginText({80, 40});
    EXPECT_EQ(state.drawings.size(), 2U);
    EXPECT_EQ(model.activeTextID(), last().id);
    model.placeStamp({90, 90});
    EXPECT_FALSE(model.activeTextField());
    ASSERT_EQ(state.drawings.size(), 2U); // the second text stayed empty
    EXPECT_EQ(state.drawings[0].text, str("one"));
    EXPECT_EQ(state.drawings[1].kind, DrawingKind::number);
}

TEST_F(DrawViewModelTest, aTextWhoseAnnotationIsGoneIsTypedIntoNothing) {
    typeInto({40, 20}, "one");
    state.drawings.clear();
    model.controlTextDidChange(str("two"));
    model.commitActiveText();
    EXPECT_TRUE(state.drawings.empty());
    EXPECT_FALSE(model.activeTextField());
}

TEST_F(DrawViewModelTest, aNewParentLeavesTheGestureAndTheFieldAsTheyAre) {
    model.mouseDown({10, 10});
    model.mouseDragged({20, 20});
    state.selectedColor = Qt::green;
    bind();
    EXPECT_EQ(model.currentPoints().size(), 2U);
    model.mouseUp();
    EXPECT_EQ(last().color, QColor(Qt::green));
    typeInto({40, 20}, "Hi");
    bind();
    ASSERT_TRUE(model.activeTextField());
    EXPECT_EQ(model.activeTextField()->string, str("Hi"));
}

TEST_F(DrawViewModelTest, aSetterThatReplacesTheParentIsSafe) {
    DrawingCanvas canvas = state.canvas();
    const auto rebinding = [this](auto setter) {
        return [this, setter](auto now) {
            model.setParent(state.canvas());
            setter(std::move(now));
        };
    };
    canvas.tool.set = rebinding(canvas.tool.set);
    canvas.drawings.set = rebinding(canvas.drawings.set);
    canvas.nextStampNumber.set = rebinding(canvas.nextStampNumber.set);
    for (const DrawingTool tool :
         {DrawingTool::pen, DrawingTool::numberStamp, DrawingTool::text, DrawingTool::eraser}) {
        use(tool);
        model.setParent(canvas);
        drag({{10, 10}, {200, 20}});
        model.setParent(canvas);
        model.doCommand(DrawViewModel::Command::insertNewline);
    }
    EXPECT_TRUE(state.drawings.empty()); // all began where the eraser began
    EXPECT_EQ(state.nextStampNumber, 2);
}

TEST_F(DrawViewModelTest, withoutAParentEveryHandlerDoesNothing) {
    model.setParent(std::nullopt);
    drag({{10, 10}, {20, 20}});
    model.eraseAt({10, 10});
    model.beginText({10, 10});
    model.placeStamp({10, 10});
    model.updateActiveText(str("x"));
    model.commitActiveText();
    EXPECT_TRUE(model.currentPoints().empty());
    EXPECT_FALSE(model.gesture());
    EXPECT_TRUE(state.drawings.empty());
}

TEST_F(DrawViewModelTest, aParentThatWentAwayEndsTheTypingWithoutItsDrawings) {
    typeInto({40, 20}, "Hi");
    model.setParent(std::nullopt);
    model.commitActiveText();
    EXPECT_FALSE(model.activeTextField());
    EXPECT_EQ(fieldsRemoved, 1);
}

TEST_F(DrawViewModelTest, aPointOutsideTheCanvasIsAPointLikeOthers) {
    drag({{-40, 10}, {800, 300}});
    EXPECT_EQ(last().points, (std::vector<QPointF>{{-0.1, 0.05}, {2, 1.5}}));
}

TEST_F(DrawViewModelTest, pointsThatAreNoNumbersArePassedOver) {
    drag({{10, 10}, {none, 20}, {20, std::numeric_limits<double>::infinity()}, {40, 20}});
    EXPECT_EQ(last().points.size(), 2U);
    state.drawings.clear();
    for (const DrawingTool tool : {DrawingTool::text, DrawingTool::numberStamp, DrawingTool::eraser, DrawingTool::arrow,
                                   DrawingTool::highlighter}) {
        use(tool);
        click({none, 10});
    }
    EXPECT_TRUE(state.drawings.empty());
}

TEST_F(DrawViewModelTest, aCanvasWithoutAnAreaTakesNoMouse) {
    for (const QSizeF &size : {QSizeF(0, 200), QSizeF(400, 0), QSizeF(-1, 5), QSizeF(none, 200), QSizeF(200, none)}) {
        model.setBounds(size);
        for (const DrawingTool tool : {DrawingTool::pen, DrawingTool::text, DrawingTool::numberStamp,
                                       DrawingTool::eraser, DrawingTool::rectangle}) {
            use(tool);
            drag({{10, 10}, {20, 20}});
        }
    }
    EXPECT_TRUE(state.drawings.empty());
    EXPECT_FALSE(model.activeTextField());
}

TEST_F(DrawViewModelTest, theGestureLooksAsWhatItWillLeaveInTheViewsOwnPoints) {
    use(DrawingTool::highlighter);
    model.mouseDown({10, 10});
    model.mouseDragged({20, 20});
    const std::optional<DrawingPath> gesture = model.gesture();
    ASSERT_TRUE(gesture);
    EXPECT_EQ(gesture->points, (std::vector<QPointF>{{10, 10}, {20, 20}}));
    EXPECT_TRUE(gesture->isHighlighter);
    EXPECT_EQ(gesture->lineWidth, 12);
    EXPECT_NEAR(gesture->color.alphaF(), 0.4, 1e-4);
    use(DrawingTool::eraser); // the tool was changed by a key, in the middle
    EXPECT_EQ(model.gesture()->color.alpha(), 0);
    EXPECT_EQ(model.gesture()->lineWidth, 30);
    EXPECT_FALSE(model.gesture()->isHighlighter);
    model.mouseUp();
    EXPECT_FALSE(model.gesture());
    EXPECT_TRUE(state.drawings.empty());
}

TEST_F(DrawViewModelTest, whatIsRedrawnHoldsTheNewSegmentAndTheWholeGestureWhenItEnds) {
    state.lineWidth = 10;
    bind();
    model.mouseDown({100, 100});
    redrawn = {};
    model.mouseDragged({150, 100});
    EXPECT_TRUE(redrawn.contains(QRectF(95, 95, 60, 10)));
    redrawn = {};
    model.mouseDragged({200, 100});
    EXPECT_TRUE(redrawn.contains(QRectF(145, 95, 60, 10)));
    EXPECT_FALSE(redrawn.contains(QPointF(100, 100)));
    redrawn = {};
    model.mouseUp();
    EXPECT_TRUE(redrawn.contains(QRectF(95, 95, 110, 10)));
}

} // namespace
} // namespace tavrine
