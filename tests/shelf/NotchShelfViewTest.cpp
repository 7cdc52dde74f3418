#include "look/Button.h"
#include "shelf/NotchShape.h"
#include "shelf/ShelfViewTest.h"
#include "support/PaintedSymbols.h"

#include <QAccessible>
#include <QMimeData>
#include <QPainter>

namespace tavrine {
namespace {

using Content = NotchShelfView::Content;

TEST(NotchOutline, fillsTheFrameButForItsShouldersAndRoundLowerCorners) {
    for (const QSizeF size : {QSizeF(300, 24), QSizeF(300, 79), QSizeF(550, 224)}) {
        const QPainterPath shape = notchOutline(size);
        EXPECT_EQ(shape.boundingRect(), QRectF({}, size));
        EXPECT_TRUE(shape.contains(QPointF(size.width() / 2, size.height() - 1)));
        EXPECT_TRUE(shape.contains(QPointF(notchShoulder + 1, size.height() / 2)));
        EXPECT_FALSE(shape.contains(QPointF(notchShoulder + 1, size.height() - 1)));
        EXPECT_FALSE(shape.contains(QPointF(size.width() - notchShoulder - 1, size.height() - 1)));
        EXPECT_FALSE(shape.contains(QPointF(1, size.height() / 2)));
    }
}

TEST(NotchOutline, ofNothingIsNothing) {
    for (const QSizeF size : {QSizeF(), QSizeF(0, 0), QSizeF(300, 0), QSizeF(10, 24), QSizeF(300, -5)})
        EXPECT_TRUE(notchOutline(size).isEmpty());
    EXPECT_FALSE(notchOutline({300, 1}).isEmpty());
}

TEST(ItemCount, isToldInWords) {
    EXPECT_EQ(itemCountText(1), text("1 item"));
    EXPECT_EQ(itemCountText(2), text("2 items"));
    EXPECT_EQ(itemCountText(0), text("0 items"));
}

class NotchShelf : public ShelfViewTest {
protected:
    /// How the content looks, in one size.
    [[nodiscard]] QStringList symbols() {
        test::WordsDevice device(view.size());
        view.render(&device, {}, {}, QWidget::DrawChildren);
        return test::symbolsOn(device);
    }
    [[nodiscard]] QImage look() {
        QImage image(view.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        view.render(&image, {}, {}, QWidget::DrawChildren);
        return image;
    }
    /// Of the prompt's words.
    [[nodiscard]] double opacity() {
        test::WordsDevice device(view.size());
        view.render(&device);
        return device.painted().empty() ? 0.0 : double(device.painted().front().colour.alphaF());
    }
    [[nodiscard]] look::Button &clearAll() const { return *view.findChild<look::Button *>(); }
};

TEST_F(NotchShelf, atRestThereIsNothingButTheBlackShape) {
    view.resize(300, 24);
    QImage shape(view.size(), QImage::Format_ARGB32_Premultiplied);
    shape.fill(Qt::transparent);
    QPainter painter(&shape);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(notchOutline(shape.size()), Qt::black);
    painter.end();
    EXPECT_EQ(look(), shape);
    EXPECT_EQ(shelf->content(), Content::nothing);
}

TEST_F(NotchShelf, whatItShowsFollowsFromTheModel) {
    model.setFileDragActive(true);
    EXPECT_EQ(shelf->content(), Content::dropHint);
    model.setDragTargetActive(true);
    EXPECT_EQ(shelf->content(), Content::dropTarget);
    model.setDragTargetActive(false);
    model.setFileDragActive(false);
    EXPECT_EQ(shelf->content(), Content::nothing);
    model.setHovering(true);
    EXPECT_EQ(shelf->content(), Content::nothing);
    addFiles(1);
    EXPECT_EQ(shelf->content(), Content::items);
    model.setFileDragActive(true);
    EXPECT_EQ(shelf->content(), Content::nothing); // neither the items nor the hint
    EXPECT_THAT(tiles(), IsEmpty());
    model.setFileDragActive(false);
    EXPECT_EQ(shelf->content(), Content::items);
    model.clearAll();
    EXPECT_EQ(shelf->content(), Content::nothing);
}

TEST_F(NotchShelf, anEmptyShelfSaysDropHereAndWhereTheDragIsOverItAFullOneTooDropFilesHere) {
    view.resize(300, 79);
    const auto words = [this] {
        test::WordsDevice device(view.size());
        view.render(&device);
        return device.words().join(u' ');
    };
    model.setFileDragActive(true);
    rest();
    EXPECT_EQ(words(), text("Drop here"));
    model.setFileDragActive(false);
    addFiles(2);
    model.setFileDragActive(true);
    rest();
    EXPECT_EQ(words(), QString());
    model.setDragTargetActive(true);
    rest();
    EXPECT_EQ(shelf->content(), Content::dropTarget);
    EXPECT_EQ(words(), text("Drop files here"));
}

TEST_F(NotchShelf, eachPromptLooksDifferent) {
    view.resize(300, 79);
    const QImage nothing = look();
    EXPECT_THAT(symbols(), IsEmpty());
    model.setFileDragActive(true);
    rest();
    const QImage hint = look();
    EXPECT_THAT(symbols(), testing::Contains(text("plus.circle.fill")));
    model.setDragTargetActive(true);
    rest();
    EXPECT_THAT(symbols(), testing::Contains(text("tray.and.arrow.down.fill")));
    EXPECT_NE(hint, nothing);
    EXPECT_NE(look(), hint);
    EXPECT_NE(look(), nothing);
}

TEST_F(NotchShelf, theRowIsHeadedByTheNumberOfItems) {
    addFiles(1);
    const auto names = [this] {
        QStringList all;
        for (const auto *widget : view.findChildren<QWidget *>())
            all << widget->accessibleName();
        return all;
    };
    EXPECT_THAT(names(), testing::Contains(text("1 item")));
    rest();
    EXPECT_THAT(symbols(), testing::Contains(text("tray.fill")));
    addFiles(2);
    EXPECT_THAT(names(), testing::Contains(text("3 items")));
}

TEST_F(NotchShelf, clearAllEmptiesTheShelf) {
    addFiles(3);
    EXPECT_EQ(clearAll().text(), text("Clear All"));
    QTest::mouseClick(&clearAll(), Qt::LeftButton);
    EXPECT_THAT(model.items(), IsEmpty());
    EXPECT_THAT(tiles(), IsEmpty());
}

TEST_F(NotchShelf, thePromptsSymbolSwellsAndSinksAndRestsBefore) {
    EXPECT_EQ(shelf->pulseScale(), 1.0);
    model.setDragTargetActive(true);
    double most = 1;
    double least = 2;
    for (int i = 0; i < 200; ++i) {
        time.advance(16ms);
        most = std::max(most, shelf->pulseScale());
        least = std::min(least, shelf->pulseScale());
    }
    EXPECT_GT(most, 1.1);
    EXPECT_LT(most, 1.2);
    EXPECT_LT(least, 1.02);
    time.advance(400ms); // half of the way
    EXPECT_GT(shelf->pulseScale(), 1.01);
    model.setDragTargetActive(false);
    EXPECT_EQ(shelf->pulseScale(), 1.0);
    rest();
    EXPECT_FALSE(look::Look::current()->clock().isTicking());
}

TEST_F(NotchShelf, nothingTicksAtRest) {
    addFiles(3);
    EXPECT_FALSE(look::Look::current()->clock().isTicking());
    model.setFileDragActive(true);
    EXPECT_TRUE(look::Look::current()->clock().isTicking());
    rest();
    EXPECT_FALSE(look::Look::current()->clock().isTicking()); // no prompt: the shelf is not empty
    model.setFileDragActive(false);
    model.setHovering(false);
    rest();
    EXPECT_FALSE(look::Look::current()->clock().isTicking());
}

TEST_F(NotchShelf, whereTheDesktopWantsNoMotionNothingMoves) {
    appearance.set({.reducesMotion = true});
    addFiles(2);
    const QImage before = look();
    model.setDragTargetActive(true);
    EXPECT_FALSE(look::Look::current()->clock().isTicking());
    const QImage prompt = look();
    rest();
    EXPECT_EQ(look(), prompt);
    model.setDragTargetActive(false);
    EXPECT_EQ(look(), before); // there at once
    EXPECT_EQ(shelf->pulseScale(), 1.0);
}

TEST_F(NotchShelf, aDragOverTheWindowBringsAndTakesItsPromptWithASpringOfItsOwn) {
    view.resize(300, 79);
    const look::Spring spring = look::Spring::responding(0.3, 0.7);
    model.setDragTargetActive(true);
    rest();
    const double whole = opacity();
    EXPECT_GT(whole, 0.8);
    for (const bool isThere : {false, true}) {
        model.setDragTargetActive(isThere);
        for (const auto frame : {16ms, 32ms, 48ms, 64ms, 80ms, 96ms}) {
            time.advance(16ms);
            const double part = std::min(spring.at(frame), 1.0);
            EXPECT_NEAR(opacity() / whole, isThere ? part : 1 - part, 0.01) << isThere << ' ' << frame.count();
        }
        rest();
    }
}

TEST_F(NotchShelf, whatThePointerBringsAndTakesFollowsTheViewsSpring) {
    addFiles(1);
    model.setHovering(false);
    EXPECT_EQ(shelf->content(), Content::nothing);
    const Seconds settled = look::Spring::responding(0.35, 0.8).settled();
    time.advance(settled);
    EXPECT_TRUE(look::Look::current()->clock().isTicking());
    time.advance(look::MotionClock::frame);
    EXPECT_FALSE(look::Look::current()->clock().isTicking());
}

TEST_F(NotchShelf, aDragOfFilesBringsAndTakesItsPromptIn180Milliseconds) {
    view.resize(300, 79);
    model.setFileDragActive(true);
    rest();
    const double whole = opacity();
    EXPECT_GT(whole, 0.8);
    model.setFileDragActive(false);
    time.advance(160ms);
    EXPECT_GT(opacity(), 0);
    time.advance(40ms); // a frame beyond it
    EXPECT_EQ(opacity(), 0);
    model.setFileDragActive(true);
    time.advance(90ms);
    EXPECT_NEAR(opacity(), whole / 2, 0.2);
    time.advance(70ms);
    EXPECT_LT(opacity(), whole);
    time.advance(40ms);
    EXPECT_EQ(opacity(), whole);
}

TEST_F(NotchShelf, theRowHangsFromTheWindowsLowerEdge) {
    addFiles(1);
    const int below = view.height() - tile().mapTo(&view, QPoint(0, 0)).y();
    view.resize(300, 120); // on its way
    EXPECT_EQ(view.height() - tile().mapTo(&view, QPoint(0, 0)).y(), below);
}

TEST_F(NotchShelf, escapeLeavesTheShelf) {
    addFiles(1);
    row().setFocus(Qt::TabFocusReason);
    QTest::keyClick(&row(), Qt::Key_Escape);
    EXPECT_EQ(dismissals, 1);
    clearAll().setFocus(Qt::TabFocusReason);
    QTest::keyClick(&clearAll(), Qt::Key_Escape);
    EXPECT_EQ(dismissals, 2);
}

TEST_F(NotchShelf, aWindowThatGetsTheKeyboardGivesItToTheRowAndOneThatLosesItIsLeft) {
    addFiles(2);
    clearAll().setFocus();
    QEvent activate(QEvent::WindowActivate);
    QCoreApplication::sendEvent(shelf, &activate);
    EXPECT_TRUE(row().hasFocus());
    EXPECT_EQ(row().current(), 0);
    QEvent deactivate(QEvent::WindowDeactivate);
    QCoreApplication::sendEvent(shelf, &deactivate);
    EXPECT_EQ(dismissals, 1);
}

TEST_F(NotchShelf, tabGoesFromTheRowToTheButtonAndBack) {
    addFiles(2);
    row().setFocus(Qt::TabFocusReason);
    QTest::keyClick(&row(), Qt::Key_Tab);
    EXPECT_TRUE(clearAll().hasFocus());
    QTest::keyClick(&clearAll(), Qt::Key_Backtab);
    EXPECT_TRUE(row().hasFocus());
}

TEST_F(NotchShelf, aModelThatGoesFirstLeavesAnEmptyView) {
    auto other = std::make_unique<NotchViewModel>(modelPorts());
    NotchShelfView orphan(*other, {time, icons, dragging, pasteboard, urls}, {});
    other->addText(text("held"));
    other->setHovering(true);
    time.runPending();
    orphan.resize(open);
    orphan.show();
    other.reset();
    rest();
    QTest::keyClick(&orphan.row(), Qt::Key_Delete);
    QTest::keyClick(&orphan, Qt::Key_Escape);
}

// Drops.

class DropDetection : public ShelfViewTest {
protected:
    DropDetection() {
        data.setUrls({file("/home/ada/report.pdf")});
        dragging.setDroppedContent({.types = {text("text/uri-list")},
                                    .fileUrls = {file("/home/ada/report.pdf")},
                                    .fileUrlString = {},
                                    .images = {},
                                    .string = {}});
    }
    Qt::DropAction enter() { return enter(view); }
    /// The toolkit gives moves and drops to what was entered last.
    Qt::DropAction enter(QWidget &into) {
        QDragEnterEvent event({10, 10}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
        event.ignore();
        QCoreApplication::sendEvent(&into, &event);
        return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
    }
    void leave() {
        QDragLeaveEvent event;
        QCoreApplication::sendEvent(&view, &event);
    }
    Qt::DropAction drop() { return drop(view); }
    Qt::DropAction drop(QWidget &onto) {
        QDropEvent event({10, 10}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
        event.setDropAction(Qt::MoveAction);
        QCoreApplication::sendEvent(&onto, &event);
        return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
    }
    QMimeData data;
};

TEST_F(DropDetection, aDragThatEntersOpensTheShelfInALaterTurnAndIsAnsweredWithACopy) {
    EXPECT_EQ(enter(), Qt::CopyAction);
    EXPECT_EQ(output(), "[NotchShelf] Drag entered!\n");
    EXPECT_FALSE(model.isDragTargetActive());
    time.runPending();
    EXPECT_TRUE(model.isDragTargetActive());
    EXPECT_TRUE(model.isHovering());
}

TEST_F(DropDetection, everyMoveIsAnsweredWithACopy) {
    enter();
    QDragMoveEvent move({20, 10}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
    move.setDropAction(Qt::MoveAction);
    move.ignore();
    QCoreApplication::sendEvent(&view, &move);
    EXPECT_TRUE(move.isAccepted());
    EXPECT_EQ(move.dropAction(), Qt::CopyAction);
}

TEST_F(DropDetection, aDragThatLeavesIsForgottenButNotThePointer) {
    enter();
    time.runPending();
    output();
    leave();
    EXPECT_EQ(output(), "[NotchShelf] Drag exited\n");
    time.runPending();
    EXPECT_FALSE(model.isDragTargetActive());
    EXPECT_TRUE(model.isHovering());
}

TEST_F(DropDetection, aDropIsHeldAsACopyAndEndsTheDrag) {
    enter();
    time.runPending();
    output();
    EXPECT_EQ(drop(), Qt::CopyAction); // the other program keeps its file
    time.runPending();
    EXPECT_EQ(output(), "[NotchShelf] Performing drag operation!\n"
                        "[NotchShelf] Pasteboard types: [text/uri-list]\n"
                        "[NotchShelf] Found 1 file URLs\n"
                        "[NotchShelf] Drag ended\n");
    ASSERT_EQ(model.items().size(), 1);
    EXPECT_FALSE(model.isDragTargetActive());
}

TEST_F(DropDetection, aDragThatHasBeenHereIsToldToEndHoweverItEnds) {
    for (const bool leavesFirst : {false, true}) { // it is cancelled in here, or dropped elsewhere
        enter();
        if (leavesFirst)
            leave();
        output();
        model.endDrag();
        time.advance(300ms);
        EXPECT_EQ(output(), "[NotchShelf] Drag ended\n");
        model.endDrag(); // of one that has never been here
        time.advance(1s);
        EXPECT_EQ(output(), "");
    }
    EXPECT_FALSE(model.isDragTargetActive());
}

TEST_F(DropDetection, aDropThatComesAfterItsDragsEndIsToldOnce) {
    enter();
    model.endDrag();
    time.advance(250ms);
    output();
    drop();
    time.advance(1s);
    EXPECT_THAT(output(), testing::EndsWith("[NotchShelf] Found 1 file URLs\n[NotchShelf] Drag ended\n"));
}

TEST_F(DropDetection, theEndOfADragIsNotThatOfTheNextOne) {
    enter();
    model.endDrag();
    time.advance(200ms);
    enter();
    output();
    time.advance(1s);
    EXPECT_EQ(output(), "");
}

TEST_F(DropDetection, aDropOfWhatCannotBeReadClosesTheShelf) {
    dragging.setDroppedContent({});
    enter();
    time.runPending();
    drop();
    time.runPending();
    EXPECT_THAT(model.items(), IsEmpty());
    EXPECT_FALSE(model.isDragTargetActive());
}

TEST_F(DropDetection, aDropThatLeavesNothingOnTheShelfIsRefused) {
    dragging.setDroppedContent(
        {.types = {text("text/uri-list")}, .fileUrls = {}, .fileUrlString = {}, .images = {}, .string = {}});
    enter();
    EXPECT_EQ(drop(), Qt::IgnoreAction);
    dragging.setDroppedContent(
        {.types = {}, .fileUrls = {}, .fileUrlString = {}, .images = {}, .string = text("words")});
    enter();
    EXPECT_EQ(drop(), Qt::CopyAction);
}

TEST_F(DropDetection, aDropThatIsNotReadInTimeIsTakenAndComesLater) {
    dragging.beSlow();
    enter();
    EXPECT_EQ(drop(), Qt::CopyAction);
    EXPECT_THAT(model.items(), IsEmpty());
    time.runPending();
    EXPECT_EQ(model.items().size(), 1);
}

TEST_F(DropDetection, whatCanNeverBeKeptIsNotTaken) {
    data.clear();
    data.setData(text("application/x-color"), "red");
    EXPECT_EQ(enter(), Qt::IgnoreAction);
    time.runPending();
    EXPECT_FALSE(model.isDragTargetActive());
    for (const char *type : {"text/uri-list", "text/plain", "text/html", "image/png", "application/octet-stream",
                             "application/rtf", "application/x-qt-image"}) {
        data.clear();
        data.setData(text(type), "x");
        EXPECT_EQ(enter(), Qt::CopyAction) << type;
    }
}

TEST_F(DropDetection, aViewThatGoesBeforeTheContentHasComeDoesNoHarm) {
    auto *other = new DropDetectionView(model, time, dragging);
    dragging.beSlow();
    enter(*other);
    time.runPending();
    drop(*other);
    EXPECT_TRUE(model.isDragTargetActive());
    delete other;
    time.runPending();
    EXPECT_EQ(model.items().size(), 1);
    EXPECT_FALSE(model.isDragTargetActive());
}

TEST_F(DropDetection, withoutAModelADropIsRefusedInWords) {
    auto other = std::make_unique<NotchViewModel>(modelPorts());
    DropDetectionView orphan(*other, time, dragging);
    dragging.beSlow();
    enter(orphan);
    other.reset();
    drop(orphan);
    output();
    time.runPending();
    EXPECT_THAT(output(), HasSubstr("[NotchShelf] Error: viewModel is nil\n"));
}

} // namespace
} // namespace tavrine
