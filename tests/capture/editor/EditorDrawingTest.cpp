// What is drawn and typed in the window of the editor.
#include "EditorWindowTest.h"

namespace tavrine {
namespace {

// Drawing.

TEST_F(EditorWindowTest, theDialogOfColoursGoesWithItsPicture) {
    const auto choose = [this] {
        button("Annotation color")->click();
        QApplication::processEvents();
        for (QAbstractButton *each : QApplication::activePopupWidget()->findChildren<QAbstractButton *>())
            if (each->text() == str("Custom"))
                return each->click();
    };
    edit();
    choose();
    ASSERT_EQ(window->findChildren<QColorDialog *>().size(), 1);
    edit(picture(30, 20));
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(window->findChildren<QColorDialog *>().size(), 0);
    choose();
    auto *dialog = window->findChild<QColorDialog *>();
    ASSERT_TRUE(dialog);
    dialog->setCurrentColor(Qt::darkYellow);
    EXPECT_EQ(model().selectedColor(), QColor(Qt::darkYellow));
}

TEST_F(EditorWindowTest, theDialogOfColoursStandsWhollyOnTheScreen) {
    edit();
    const QRect usable = window->screen()->availableGeometry();
    window->move(usable.bottomRight() - QPoint(60, 60));
    button("Color")->click();
    QApplication::activePopupWidget()->findChildren<QAbstractButton *>()[8]->click();
    auto *dialog = window->findChild<QColorDialog *>();
    ASSERT_TRUE(dialog);
    QApplication::processEvents();
    EXPECT_TRUE(usable.contains(dialog->frameGeometry()));
}

TEST_F(EditorWindowTest, aStrokeIsStoredInFractionsAndShowsThePill) {
    edit();
    EXPECT_FALSE(pill("Unsaved changes")->isVisible());
    drag(canvas(), {0, 0}, QPoint(canvas()->width() / 2, canvas()->height() / 2));
    ASSERT_EQ(model().drawings().size(), 1U);
    EXPECT_EQ(model().drawings()[0].points.back(), QPointF(0.5, 0.5));
    EXPECT_EQ(model().drawings()[0].lineWidth, 3.0);
    EXPECT_TRUE(pill("Unsaved changes")->isVisible());
    button("Save & Copy")->click();
    EXPECT_FALSE(pill("Unsaved changes")->isVisible());
    EXPECT_TRUE(pasteboard.image());
}

TEST_F(EditorWindowTest, anUndoneStampGivesItsNumberToTheNext) {
    edit();
    model().setCurrentTool(DrawingTool::numberStamp);
    const auto stamp = [this](int x) { QTest::mouseClick(canvas(), Qt::LeftButton, {}, {x, 100}); };
    const auto numbers = [this] {
        std::vector<int> all;
        for (const DrawingPath &each : model().drawings())
            all.push_back(each.number.value_or(0));
        return all;
    };
    stamp(100);
    stamp(200);
    EXPECT_THAT(numbers(), ElementsAre(1, 2));
    button("Undo")->click();
    EXPECT_THAT(numbers(), ElementsAre(1));
    EXPECT_EQ(model().nextStampNumber(), 2);
    stamp(300);
    EXPECT_THAT(numbers(), ElementsAre(1, 2));
    EXPECT_NEAR(model().drawings().back().points.front().x() * canvas()->width(), 300, 1);
}

TEST_F(EditorWindowTest, undoTakesOneAfterTheOtherFromTheEndAndOnlyAStampGivesItsNumberBack) {
    edit();
    const auto draw = [this](DrawingTool tool, int y) {
        model().setCurrentTool(tool);
        if (tool == DrawingTool::numberStamp)
            QTest::mouseClick(canvas(), Qt::LeftButton, {}, {100, y});
        else
            drag(canvas(), {100, y}, {200, y + 20});
    };
    const QImage empty = model().flattenedImage();
    std::vector<QImage> pictures;
    std::vector<int> numbers;
    int y = 20;
    for (const DrawingTool tool : {DrawingTool::pen, DrawingTool::numberStamp, DrawingTool::arrow,
                                   DrawingTool::numberStamp, DrawingTool::rectangle}) {
        pictures.push_back(model().flattenedImage());
        numbers.push_back(model().nextStampNumber());
        draw(tool, y += 40);
    }
    EXPECT_THAT(numbers, ElementsAre(1, 1, 2, 2, 3));
    ASSERT_EQ(model().drawings().size(), 5U);
    for (size_t left = 5; left-- > 0;) {
        command(Qt::Key_Z);
        EXPECT_EQ(model().drawings().size(), left);
        EXPECT_EQ(model().flattenedImage(), pictures[left]) << left;
        EXPECT_EQ(model().nextStampNumber(), numbers[left]) << left;
        EXPECT_EQ(pill("Unsaved changes")->isVisible(), left > 0);
    }
    command(Qt::Key_Z);
    EXPECT_EQ(model().flattenedImage(), empty);
    EXPECT_EQ(model().nextStampNumber(), 1);
}

TEST_F(EditorWindowTest, theCanvasLiesExactlyOverThePictureAtEveryZoom) {
    edit(picture(3000, 2000));
    for (const Qt::Key key : {Qt::Key_0, Qt::Key_1, Qt::Key_Minus, Qt::Key_Plus}) {
        command(key);
        EXPECT_EQ(canvas()->geometry(), stage().imageRect());
    }
    window->resize(1100, 700);
    EXPECT_EQ(canvas()->geometry(), stage().imageRect());
}

TEST_F(EditorWindowTest, aPictureOfTwoPixelsAPointIsShownCroppedAndDrawnOnInItsPoints) {
    QImage image = picture(1600, 800);
    image.setDevicePixelRatio(2);
    edit(image);
    command(Qt::Key_1);
    EXPECT_EQ(stage().imageRect().size(), QSize(800, 400));
    EXPECT_EQ(stage().scale(), 1);
    drag(canvas(), {100, 200}, {700, 200});
    const QImage flat = model().flattenedImage();
    EXPECT_EQ(flat.size(), QSize(1600, 800));
    EXPECT_EQ(flat.devicePixelRatio(), 2);
    int thick = 0; // three points are six pixels
    for (int y = 380; y < 420; ++y)
        thick += flat.pixelColor(800, y) == QColor(0xFF, 0x3B, 0x30);
    EXPECT_EQ(thick, 6);
    model().toggleCropping();
    model().dragCrop({0, 0}, {0.5, 0.5}, {1, 1});
    model().applyCrop();
    command(Qt::Key_1);
    EXPECT_EQ(stage().imageRect().size(), QSize(800, 400)) << "a crop has a point for each pixel";
}

TEST_F(EditorWindowTest, zoomingTouchesNoStoredPoint) {
    edit(picture(3000, 2000));
    drag(canvas(), {10, 10}, {200, 150});
    const std::vector<DrawingPath> before = model().drawings();
    command(Qt::Key_1);
    EXPECT_EQ(stage().scale(), 1);
    wheel({300, 200}, 2, Qt::ControlModifier);
    EXPECT_GT(stage().scale(), 1.2);
    wheel({300, 200}, -1, Qt::NoModifier);
    wheel({300, 200}, -1, Qt::ShiftModifier);
    command(Qt::Key_0);
    EXPECT_TRUE(stage().isFit());
    EXPECT_EQ(model().drawings(), before);
}

TEST_F(EditorWindowTest, aFieldFollowsThePictureWhenItIsZoomed) {
    edit(picture(3000, 2000));
    startTyping("abc");
    const QPointF place = model().drawings().back().points.front();
    QLineEdit *field = canvas()->activeTextField();
    for (const double factor : {1.0, 2.0}) {
        wheel({300, 200}, int(4 * factor), Qt::ControlModifier);
        EXPECT_NEAR(field->x(), place.x() * canvas()->width(), 1);
        EXPECT_NEAR(field->y(), place.y() * canvas()->height(), 1);
    }
    window->resize(1100, 700);
    EXPECT_NEAR(field->x(), place.x() * canvas()->width(), 1);
    EXPECT_EQ(field->text(), str("abc"));
}

TEST_F(EditorWindowTest, whateverTheZoomOnlyWhatShowsIsKeptAndItIsSharp) {
    QImage image = picture(4000, 2000, Qt::white);
    image.setPixelColor(2000, 1000, Qt::black);
    edit(image);
    const QPoint middle = stage().imageRect().center();
    for (int i = 0; i < 30; ++i)
        wheel(middle, 1, Qt::ControlModifier);
    EXPECT_EQ(stage().scale(), ImageZoom::largest);
    EXPECT_EQ(canvas()->width(), 64000);
    const QPoint away = stage().rect().center() - stage().imageRect().topLeft() - QPoint(2000 * 16, 1000 * 16);
    wheel(middle, away.x() / 60, Qt::ShiftModifier); // a notch is 60 points
    wheel(middle, away.y() / 60, Qt::NoModifier);
    QApplication::processEvents();
    const QImage shown = stage().grab().toImage();
    const QPoint corner = stage().imageRect().topLeft() + QPoint(2000 * 16, 1000 * 16);
    ASSERT_TRUE(stage().rect().contains(QRect(corner, QSize(16, 16))));
    EXPECT_EQ(at(shown, corner), QColor(Qt::black));
    EXPECT_EQ(at(shown, corner + QPoint(15, 15)), QColor(Qt::black));
    EXPECT_EQ(at(shown, corner + QPoint(16, 16)), QColor(Qt::white));
    EXPECT_EQ(at(shown, corner - QPoint(1, 1)), QColor(Qt::white));
    // A stroke far from the canvas' corner, and what is moved into sight afterwards.
    const QPoint from = canvas()->mapFrom(&stage(), QPoint(100, 150));
    drag(canvas(), from, from + QPoint(200, 0));
    EXPECT_EQ(at(stage().grab().toImage(), {200, 150}), QColor(0xFF, 0x3B, 0x30));
    wheel({300, 200}, 2, Qt::NoModifier);
    EXPECT_EQ(at(stage().grab().toImage(), {200, 270}), QColor(0xFF, 0x3B, 0x30));
}

TEST_F(EditorWindowTest, theMiddleButtonMovesThePictureAndDrawsNothing) {
    edit(picture(3000, 2000));
    command(Qt::Key_1);
    const QRect before = stage().imageRect();
    const QPoint from = canvas()->mapFrom(&stage(), QPoint(300, 200));
    QTest::mousePress(canvas(), Qt::MiddleButton, {}, from);
    QMouseEvent move(QEvent::MouseMove, from, canvas()->mapToGlobal(from + QPoint(40, 30)), Qt::NoButton,
                     Qt::MiddleButton, {});
    QApplication::sendEvent(canvas(), &move);
    QTest::mouseRelease(canvas(), Qt::MiddleButton);
    EXPECT_EQ(stage().imageRect().topLeft() - before.topLeft(), QPoint(40, 30));
    EXPECT_TRUE(model().drawings().empty());
}

// Typing.

TEST_F(EditorWindowTest, undoDropsWhatIsBeingTyped) {
    edit();
    startTyping("half a wo");
    EXPECT_EQ(model().drawings().size(), 1U);
    button("Undo")->click();
    EXPECT_TRUE(model().drawings().empty());
    EXPECT_FALSE(canvas()->activeTextField());
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(model().drawings().empty());
}

TEST_F(EditorWindowTest, theFieldsOwnUndoStaysWithTheField) {
    edit();
    startTyping("abc");
    command(Qt::Key_Z);
    EXPECT_EQ(model().drawings().size(), 1U);
    EXPECT_TRUE(canvas()->activeTextField());
}

TEST_F(EditorWindowTest, anotherToolLeavesTheTypingAsItIs) {
    edit();
    startTyping("abc");
    model().setCurrentTool(DrawingTool::rectangle);
    ASSERT_TRUE(canvas()->activeTextField());
    EXPECT_EQ(canvas()->activeTextField()->text(), str("abc"));
    EXPECT_EQ(model().drawings()[0].text, str("abc"));
}

TEST_F(EditorWindowTest, escapeKeepsTheTextAndTheEditor) {
    edit();
    startTyping("abc");
    press(Qt::Key_Escape);
    EXPECT_FALSE(canvas()->activeTextField());
    ASSERT_EQ(model().drawings().size(), 1U);
    EXPECT_EQ(model().drawings()[0].text, str("abc"));
    EXPECT_EQ(model().currentTool(), DrawingTool::pen);
    EXPECT_EQ(closes, 0);
}

TEST_F(EditorWindowTest, copyingTakesWhatWasTypedSoFar) {
    edit();
    const QImage before = model().flattenedImage();
    startTyping("abc");
    button("Copy")->click();
    EXPECT_NE(pasteboard.image()->convertToFormat(before.format()), before);
}

TEST_F(EditorWindowTest, croppingKeepsWhatWasTypedAndDropsAnEmptyText) {
    edit();
    startTyping("abc");
    button("Crop image area")->click();
    ASSERT_EQ(model().drawings().size(), 1U);
    EXPECT_EQ(model().drawings()[0].text, str("abc"));
    press(Qt::Key_Escape);
    startTyping("  ");
    button("Crop image area")->click();
    EXPECT_EQ(model().drawings().size(), 1U);
}

TEST_F(EditorWindowTest, theWindowMayCloseWhileSomethingIsTyped) {
    edit();
    startTyping("abc");
    window.reset();
    time.advance(5s);
}

} // namespace
} // namespace tavrine
