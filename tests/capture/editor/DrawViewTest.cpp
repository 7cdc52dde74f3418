#include "capture/editor/DrawView.h"

#include "CanvasFixture.h"
#include "capture/editor/AnnotationRenderer.h"
#include "look/Look.h"

#include <QApplication>
#include <QLineEdit>
#include <QPainter>
#include <QPointingDevice>
#include <QScreen>
#include <QTabletEvent>
#include <QTest>

namespace tavrine {
namespace {

class DrawViewTest : public testing::Test {
protected:
    DrawViewTest() {
        window.resize(400, 300);
        other = new QLineEdit(&window);
        other->setGeometry(0, 270, 100, 30);
        make();
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    void make() {
        view = new DrawView(&window);
        view->setGeometry(20, 20, 320, 240);
        view->setPicture(picture());
        view->updateCanvas(state.canvas());
        view->show();
    }
    static QImage picture() {
        QImage image(320, 240, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter(&image).fillRect(100, 0, 30, 240, Qt::black);
        return image;
    }
    void use(DrawingTool tool) {
        state.tool = tool;
        view->updateCanvas(state.canvas());
    }
    void press(const QPoint &at) { QTest::mousePress(view, Qt::LeftButton, {}, at); }
    void move(const QPoint &at) {
        QMouseEvent event(QEvent::MouseMove, at, view->mapToGlobal(at), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(view, &event);
    }
    void hover(const QPoint &at) {
        QMouseEvent event(QEvent::MouseMove, at, view->mapToGlobal(at), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(view, &event);
    }
    void release(const QPoint &at) { QTest::mouseRelease(view, Qt::LeftButton, {}, at); }
    void click(const QPoint &at) {
        press(at);
        release(at);
    }
    QLineEdit *field() { return view->activeTextField(); }
    QImage shown() { return view->grab().toImage().convertToFormat(QImage::Format_RGB32); }
    /// Device pixels per point: the tests run at 1 and at 2.
    [[nodiscard]] double dots() const { return view->devicePixelRatioF(); }
    [[nodiscard]] QColor at(const QImage &image, int x, int y) const {
        return image.pixelColor(int(x * dots()), int(y * dots()));
    }
    [[nodiscard]] QRect pixels(const QRect &points) const {
        return QRectF(QPointF(points.topLeft()) * dots(), QSizeF(points.size()) * dots()).toRect();
    }
    /// The ring that shows that the keyboard is here.
    [[nodiscard]] bool hasRing(const QImage &image) const {
        return at(image, 1, 120) == look::themeOf(view).accent && at(image, 318, 120) == look::themeOf(view).accent;
    }
    /// What the window has painted so far, and keeps.
    QImage surface() {
        const QPixmap grabbed = window.screen()->grabWindow(window.winId(), 0, 0, window.width(), window.height());
        return grabbed.toImage().convertToFormat(QImage::Format_RGB32);
    }
    QImage plainly(const std::vector<DrawingPath> &drawings) {
        const QSizeF size(picture().size());
        QImage image((size * dots()).toSize(), QImage::Format_RGB32);
        QPainter painter(&image);
        painter.scale(dots(), dots());
        PictureLevels(picture()).paint(painter, {{}, size}, {{}, size}, dots());
        for (const DrawingPath &path : drawings)
            renderDrawing(painter, path, pointsIn(path, size), false);
        return image;
    }

    CanvasState state;
    QWidget window;
    QLineEdit *other = nullptr;
    DrawView *view = nullptr;
};

TEST_F(DrawViewTest, theMouseDrawsAndTheViewShowsItOverThePicture) {
    press({10, 100});
    move({200, 100});
    const QImage during = shown();
    EXPECT_TRUE(state.drawings.empty());
    EXPECT_EQ(at(during, 60, 100), QColor(Qt::red));
    release({200, 100});
    ASSERT_EQ(state.drawings.size(), 1U);
    EXPECT_EQ(shown(), plainly(state.drawings));
    EXPECT_EQ(shown(), during);
}

TEST_F(DrawViewTest, aHighlighterDarkensThePictureWhileItIsDrawnAndAfterwards) {
    state.selectedColor = Qt::yellow;
    use(DrawingTool::highlighter);
    press({10, 100});
    move({200, 100});
    EXPECT_EQ(at(shown(), 50, 100).rgb(), qRgb(255, 255, 153));
    EXPECT_EQ(at(shown(), 115, 100).rgb(), qRgb(0, 0, 0));
    release({200, 100});
    EXPECT_EQ(shown(), plainly(state.drawings));
    EXPECT_EQ(at(shown(), 50, 100).rgb(), qRgb(255, 255, 153));
}

TEST_F(DrawViewTest, piecesRepaintedDuringAGestureMakeTheWholePicture) {
    // The window's own surface, which keeps what is not repainted.
    for (const DrawingTool tool :
         {DrawingTool::pen, DrawingTool::highlighter, DrawingTool::arrow, DrawingTool::rectangle, DrawingTool::oval}) {
        use(tool);
        press({20, 20});
        for (int i = 1; i <= 30; ++i) {
            move({20 + i * 9, int(120 + 90 * std::sin(i * 0.9))});
            QEvent request(QEvent::UpdateRequest); // paints what was marked, and that alone
            QApplication::sendEvent(&window, &request);
        }
        const QImage kept = surface();
        ASSERT_FALSE(kept.isNull());
        EXPECT_EQ(kept.copy(pixels({20, 20, 320, 240})), shown()) << static_cast<int>(tool);
        release({290, 60});
        ASSERT_EQ(shown(), plainly(state.drawings)) << static_cast<int>(tool);
    }
    EXPECT_EQ(state.drawings.size(), 5U);
}

TEST_F(DrawViewTest, aHighlighterReadsWhatLiesBelowOnAWidgetsOwnSurfaceToo) {
    class Sheet : public QWidget {
    public:
        using QWidget::QWidget;
        void paintEvent(QPaintEvent *) override {
            QPainter painter(this);
            painter.fillRect(rect(), QColor(200, 220, 240));
            const DrawingPath path = highlighter({{0, 30}, {60, 30}}, 20);
            renderDrawing(painter, path, path.points, false);
        }
    };
    Sheet sheet(&window); // away from the window's corner, so that its surface is moved under it
    sheet.setGeometry(340, 20, 60, 60);
    sheet.show();
    sheet.repaint(); // at once
    const QImage onScreen = surface();
    ASSERT_FALSE(onScreen.isNull());
    EXPECT_EQ(at(onScreen, 370, 50).rgb(), qRgb(200, 220, 138));
    EXPECT_EQ(at(onScreen, 370, 30).rgb(), qRgb(200, 220, 240));
    EXPECT_EQ(at(sheet.grab().toImage(), 30, 30).rgb(), qRgb(200, 220, 138));
}

TEST_F(DrawViewTest, theEraserShowsHowFarItReachesAndTakesNothingOfTheRingAlong) {
    const auto isRingAt = [this](const QImage &image, int x, int y) {
        return at(image, x, y) != QColor(Qt::white) || at(image, x, y - 1) != QColor(Qt::white);
    };
    use(DrawingTool::eraser);
    const QImage before = shown();
    hover({200, 120});
    EXPECT_EQ(state.writes, 0) << "no button is held";
    QImage with = shown();
    EXPECT_TRUE(isRingAt(with, 200, 120 - 7));            // 0.03 of 240
    EXPECT_NE(at(with, 200 + 9, 120), QColor(Qt::white)); // and of 320
    EXPECT_EQ(at(with, 200, 120), QColor(Qt::white));
    EXPECT_EQ(at(with, 200 + 16, 120), QColor(Qt::white));
    hover({260, 60});
    with = shown();
    EXPECT_EQ(with.copy(pixels({180, 100, 40, 40})), before.copy(pixels({180, 100, 40, 40})));
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(view, &leave);
    EXPECT_EQ(shown(), before);
    hover({200, 120});
    use(DrawingTool::pen);
    EXPECT_EQ(shown(), before);
}

TEST_F(DrawViewTest, keysDrawMoveAndRemove) {
    view->setFocus();
    QTest::keyClick(view, Qt::Key_5);
    EXPECT_EQ(state.tool, DrawingTool::rectangle);
    QTest::keyClick(view, Qt::Key_Return);
    ASSERT_EQ(state.drawings.size(), 1U);
    EXPECT_EQ(state.drawings[0].points[0], QPointF(120 / 320.0, 90 / 240.0));
    QTest::keyClick(view, Qt::Key_Right);
    QTest::keyClick(view, Qt::Key_Down, Qt::ControlModifier);
    EXPECT_EQ(state.drawings[0].points[0], QPointF(121 / 320.0, 100 / 240.0));
    QTest::keyClick(view, Qt::Key_Left, Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_EQ(state.drawings[0].points[1], QPointF(191 / 320.0, 160 / 240.0));
    EXPECT_EQ(view->accessibleDescription(), str("Rectangle, 1 of 1"));
    QTest::keyClick(view, Qt::Key_Delete);
    EXPECT_TRUE(state.drawings.empty());
}

TEST_F(DrawViewTest, keysDoNothingWhileTheButtonIsHeld) {
    state.tool = DrawingTool::pen;
    view->updateCanvas(state.canvas());
    view->setFocus();
    QTest::mousePress(view, Qt::LeftButton, {}, {10, 10});
    QMouseEvent move(QEvent::MouseMove, QPointF(60, 60), view->mapToGlobal(QPointF(60, 60)), Qt::NoButton,
                     Qt::LeftButton, {});
    QApplication::sendEvent(view, &move);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_5, Qt::Key_Tab})
        QTest::keyClick(view, key);
    EXPECT_EQ(state.tool, DrawingTool::pen);
    EXPECT_TRUE(view->hasFocus());
    QTest::mouseRelease(view, Qt::LeftButton, {}, {60, 60});
    ASSERT_EQ(state.drawings.size(), 1U);
    EXPECT_EQ(state.drawings[0].points.front(), QPointF(10 / 320.0, 10 / 240.0));
}

TEST_F(DrawViewTest, whatIsSelectedHasAFrameThatIsNotPartOfIt) {
    state.tool = DrawingTool::oval;
    view->updateCanvas(state.canvas());
    view->setFocus();
    QTest::keyClick(view, Qt::Key_Return);
    const QImage framed = shown();
    EXPECT_NE(framed, plainly(state.drawings));
    QTest::keyClick(view, Qt::Key_Escape);
    EXPECT_EQ(shown(), plainly(state.drawings));
    QTest::keyClick(view, Qt::Key_Tab);
    EXPECT_EQ(shown(), framed);
    click({5, 5}); // the mouse lets it go
    EXPECT_EQ(shown(), plainly(state.drawings));
}

TEST_F(DrawViewTest, tabGoesThroughWhatIsDrawnAndThenOn) {
    state.drawings = {drawing(DrawingKind::arrow, {{0.1, 0.1}, {0.5, 0.5}}), stamp(1, {0.5, 0.5})};
    view->updateCanvas(state.canvas());
    other->setFocus();
    QTest::keyClick(other, Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), view);
    EXPECT_TRUE(view->accessibleDescription().startsWith(str("Return draws")))
        << view->accessibleDescription().toStdString();
    QTest::keyClick(view, Qt::Key_Tab);
    EXPECT_EQ(view->accessibleDescription(), str("Arrow, 1 of 2"));
    QTest::keyClick(view, Qt::Key_Tab);
    EXPECT_EQ(view->accessibleDescription(), str("Number stamp, 2 of 2"));
    QTest::keyClick(view, Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), other);
    QTest::keyClick(other, Qt::Key_Backtab);
    QTest::keyClick(view, Qt::Key_Backtab);
    EXPECT_EQ(view->accessibleDescription(), str("Number stamp, 2 of 2"));
}

TEST_F(DrawViewTest, theCanvasShowsThatTabHasBroughtTheKeyboard) {
    other->setFocus();
    const QImage before = shown();
    QTest::keyClick(other, Qt::Key_Tab);
    ASSERT_EQ(QApplication::focusWidget(), view);
    EXPECT_NE(shown(), before);
    click({5, 5});
    state.drawings.clear();
    view->updateCanvas(state.canvas());
    other->setFocus();
    EXPECT_EQ(shown(), before);
}

TEST_F(DrawViewTest, theCanvasStillShowsItAfterATextThatWasTyped) {
    state.tool = DrawingTool::text;
    view->updateCanvas(state.canvas());
    other->setFocus();
    QTest::keyClick(other, Qt::Key_Tab);
    QTest::keyClick(view, Qt::Key_Return);
    ASSERT_TRUE(field());
    QTest::keyClicks(field(), str("word"));
    QTest::keyClick(field(), Qt::Key_Return);
    ASSERT_EQ(QApplication::focusWidget(), view);
    QTest::keyClick(view, Qt::Key_Delete);
    EXPECT_TRUE(hasRing(shown()));
    use(DrawingTool::text);
    click({5, 5}); // by the mouse: its Return leaves none
    ASSERT_TRUE(field());
    QTest::keyClicks(field(), str("word"));
    QTest::keyClick(field(), Qt::Key_Return);
    ASSERT_EQ(QApplication::focusWidget(), view);
    EXPECT_FALSE(hasRing(shown()));
}

TEST_F(DrawViewTest, theCanvasShowsNoMoreThanItWasOnceReachedByTab) {
    other->setFocus();
    QTest::keyClick(other, Qt::Key_Tab);
    ASSERT_TRUE(hasRing(shown()));
    QTest::keyClick(view, Qt::Key_Backtab);
    ASSERT_EQ(QApplication::focusWidget(), other);
    view->setFocus(Qt::OtherFocusReason);
    EXPECT_FALSE(hasRing(shown()));
}

TEST_F(DrawViewTest, aTextIsTypedInTheMiddleAndThenMoved) {
    state.tool = DrawingTool::text;
    view->updateCanvas(state.canvas());
    view->setFocus();
    QTest::keyClick(view, Qt::Key_Return);
    ASSERT_TRUE(field());
    QTest::keyClicks(field(), str("1 word"));
    QTest::keyClick(field(), Qt::Key_Return);
    EXPECT_EQ(QApplication::focusWidget(), view);
    EXPECT_EQ(view->accessibleDescription(), str("Text, 1 of 1"));
    QTest::keyClick(view, Qt::Key_Up, Qt::ControlModifier);
    EXPECT_EQ(state.drawings[0].points[0], QPointF(0.5, 110 / 240.0));
    EXPECT_EQ(state.drawings[0].text, str("1 word"));
}

TEST_F(DrawViewTest, onlyTheLeftButtonDraws) {
    QTest::mousePress(view, Qt::RightButton, {}, {10, 10});
    QTest::mouseRelease(view, Qt::RightButton, {}, {10, 10});
    EXPECT_TRUE(state.drawings.empty());
}

TEST_F(DrawViewTest, aPenDrawsAtItsOwnFractionsOfAPoint) {
    const auto tablet = [this](QEvent::Type type, const QPointF &at, Qt::MouseButtons buttons) {
        QTabletEvent event(type, QPointingDevice::primaryPointingDevice(), at, view->mapToGlobal(at), 0.5, 0, 0, 0, 0,
                           0, Qt::NoModifier, type == QEvent::TabletMove ? Qt::NoButton : Qt::LeftButton, buttons);
        QApplication::sendEvent(view, &event);
        EXPECT_TRUE(event.isAccepted());
    };
    tablet(QEvent::TabletMove, {5, 5}, Qt::NoButton); // over the surface
    tablet(QEvent::TabletPress, {16.25, 24}, Qt::LeftButton);
    tablet(QEvent::TabletMove, {32.5, 48.75}, Qt::LeftButton);
    tablet(QEvent::TabletRelease, {32.5, 48.75}, Qt::NoButton);
    tablet(QEvent::TabletMove, {100, 100}, Qt::NoButton);
    ASSERT_EQ(state.drawings.size(), 1U);
    EXPECT_EQ(state.drawings[0].points, (std::vector<QPointF>{{16.25 / 320, 24.0 / 240}, {32.5 / 320, 48.75 / 240}}));
}

TEST_F(DrawViewTest, aFieldOpensAtThePointWithTheLettersOfTheText) {
    state.lineWidth = 6;
    state.selectedColor = Qt::blue;
    use(DrawingTool::text);
    click({40, 50});
    ASSERT_TRUE(field());
    EXPECT_EQ(field()->geometry(), QRect(40, 50, 220, 30));
    EXPECT_TRUE(field()->hasFocus());
    EXPECT_EQ(field()->font().pixelSize(), 24);
    EXPECT_EQ(field()->font().weight(), QFont::DemiBold);
    EXPECT_EQ(field()->palette().color(QPalette::Text), QColor(Qt::blue));
}

TEST_F(DrawViewTest, lettersGoIntoTheAnnotationAndReturnAndEscapeKeepThem) {
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) {
        state.drawings.clear();
        use(DrawingTool::text);
        click({40, 50});
        QTest::keyClicks(field(), str("Hi there"));
        EXPECT_EQ(state.drawings.at(0).text, str("Hi there"));
        QTest::keyClick(field(), key);
        EXPECT_FALSE(field());
        EXPECT_EQ(state.drawings.size(), 1U);
        EXPECT_EQ(state.tool, DrawingTool::pen);
        EXPECT_TRUE(view->hasFocus());
    }
    EXPECT_EQ(shown(), plainly(state.drawings));
}

TEST_F(DrawViewTest, spacesAndReturnLeaveNothing) {
    use(DrawingTool::text);
    click({40, 50});
    QTest::keyClicks(field(), str("   "));
    QTest::keyClick(field(), Qt::Key_Return);
    EXPECT_TRUE(state.drawings.empty());
}

TEST_F(DrawViewTest, aClickOnTheCanvasEndsTheTypingAndDrawsNothing) {
    use(DrawingTool::text);
    click({40, 50});
    QTest::keyClicks(field(), str("Hi"));
    click({200, 200});
    EXPECT_FALSE(field());
    EXPECT_EQ(state.tool, DrawingTool::pen);
    EXPECT_EQ(state.drawings.size(), 1U);
    click({200, 200});
    EXPECT_EQ(state.drawings.size(), 2U);
}

TEST_F(DrawViewTest, aFieldThatLosesTheKeyboardToAnotherIsCommitted) {
    use(DrawingTool::text);
    click({40, 50});
    QTest::keyClicks(field(), str("Hi"));
    other->setFocus(Qt::TabFocusReason);
    EXPECT_FALSE(field());
    EXPECT_EQ(state.drawings.at(0).text, str("Hi"));
    EXPECT_EQ(state.tool, DrawingTool::text);
    EXPECT_TRUE(other->hasFocus());
}

TEST_F(DrawViewTest, aFieldWhoseWindowGoesToTheBackStays) {
    use(DrawingTool::text);
    click({40, 50});
    QFocusEvent away(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
    QApplication::sendEvent(field(), &away);
    EXPECT_TRUE(field());
    QFocusEvent menu(QEvent::FocusOut, Qt::PopupFocusReason);
    QApplication::sendEvent(field(), &menu);
    EXPECT_TRUE(field());
}

TEST_F(DrawViewTest, anUpdateLeavesTheGestureAndTheFieldAlone) {
    use(DrawingTool::text);
    click({40, 50});
    QTest::keyClicks(field(), str("Hi"));
    QLineEdit *before = field();
    view->updateCanvas(state.canvas());
    EXPECT_EQ(field(), before);
    EXPECT_EQ(field()->text(), str("Hi"));
    EXPECT_TRUE(field()->hasFocus());
}

TEST_F(DrawViewTest, aNewCanvasDiscardsWhatIsBeingTypedWithoutCommittingIt) {
    use(DrawingTool::text);
    click({40, 50});
    QTest::keyClicks(field(), str("  "));
    const int writes = state.writes;
    delete view;
    EXPECT_EQ(state.writes, writes); // a commit would remove the blank annotation
    ASSERT_EQ(state.drawings.size(), 1U);
    EXPECT_EQ(state.tool, DrawingTool::text);
    make();
    EXPECT_FALSE(field());
}

TEST_F(DrawViewTest, drawingsThatWereChangedElsewhereAreShownWithTheNextUpdate) {
    click({10, 10});
    shown();
    state.drawings = {stamp(1, {0.5, 0.5}), highlighter({{0.1, 0.1}, {0.9, 0.9}})};
    view->updateCanvas(state.canvas());
    EXPECT_EQ(shown(), plainly(state.drawings));
    state.drawings.erase(state.drawings.begin());
    view->updateCanvas(state.canvas());
    EXPECT_EQ(shown(), plainly(state.drawings));
}

TEST_F(DrawViewTest, annotationsFollowTheViewsSize) {
    state.drawings = {drawing(DrawingKind::path, {{0.1, 0.5}, {0.9, 0.5}}, Qt::red, 6)};
    view->updateCanvas(state.canvas());
    view->resize(160, 120);
    EXPECT_EQ(at(shown(), 80, 60), QColor(Qt::red));
    press({16, 12});
    release({16, 12});
    EXPECT_EQ(state.drawings.back().points, (std::vector<QPointF>{{0.1, 0.1}}));
}

TEST_F(DrawViewTest, aViewWithoutAnAreaOrAPictureDoesNoHarm) {
    view->resize(0, 0);
    view->repaint();
    view->setPicture({});
    view->resize(50, 50);
    EXPECT_FALSE(shown().isNull());
}

} // namespace
} // namespace tavrine
