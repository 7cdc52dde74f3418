// Cropping in the window of the editor, and what lies over its picture.
#include "EditorWindowTest.h"
#include "support/PaintedWords.h"

namespace tavrine {
namespace {

// Crop.

TEST_F(EditorWindowTest, cropModeGivesWayToADragAndReturnApplies) {
    edit();
    button("Crop image area")->click();
    EXPECT_FALSE(canvas());
    EXPECT_TRUE(pill("Drag selection box to crop")->isVisible());
    EXPECT_FALSE(button("Draw")->isEnabled());
    auto *overlay = window->findChild<CropOverlayView *>();
    ASSERT_TRUE(overlay);
    EXPECT_EQ(overlay->geometry(), stage().imageRect());
    drag(overlay, QPoint(overlay->width() / 2, overlay->height() / 2), QPoint(0, 0));
    press(Qt::Key_Return);
    EXPECT_EQ(model().shownImage().size(), QSize(400, 200));
    EXPECT_TRUE(canvas());
    EXPECT_EQ(canvas()->geometry(), stage().imageRect());
    EXPECT_FALSE(pill("Drag selection box to crop")->isVisible());
    EXPECT_TRUE(pill("Unsaved changes")->isVisible());
    EXPECT_TRUE(button("Draw")->isEnabled());
}

TEST_F(EditorWindowTest, whatIsUnsavedIsToldInCropModeToo) {
    edit();
    drag(canvas(), {10, 10}, {100, 100});
    QWidget *unsaved = pill("Unsaved changes");
    QWidget *crop = pill("Drag selection box to crop");
    const QRect alone = unsaved->geometry();
    button("Crop image area")->click();
    ASSERT_TRUE(unsaved->isVisible());
    EXPECT_TRUE(crop->isVisible());
    EXPECT_FALSE(unsaved->geometry().intersects(crop->geometry()));
    EXPECT_TRUE(stage().geometry().contains(unsaved->geometry()));
    button("Save & Copy")->click();
    time.advance(1s);
    EXPECT_FALSE(unsaved->isVisible());
    EXPECT_TRUE(crop->isVisible());
    EXPECT_TRUE(model().isCropping());
    button("Cancel")->click();
    drag(canvas(), {20, 20}, {90, 90});
    time.advance(1s);
    EXPECT_EQ(unsaved->geometry(), alone);
}

TEST_F(EditorWindowTest, theOverlaySaysHowToCropUntilSomethingIsSelected) {
    edit(picture(800, 400));
    button("Crop image area")->click();
    auto *overlay = window->findChild<CropOverlayView *>();
    ASSERT_TRUE(overlay);
    const auto words = [&overlay] {
        test::WordsDevice device(overlay->size());
        overlay->render(&device);
        return device.words();
    };
    EXPECT_THAT(words(), ElementsAre(str("Drag on the image to select crop area")));
    drag(overlay, QPoint(overlay->width() / 2, overlay->height() / 2), {0, 0});
    EXPECT_THAT(words(), ElementsAre(str("400 × 200"))) << "of the picture's pixels";
    button("Cancel")->click();
    button("Crop image area")->click();
    overlay = window->findChild<CropOverlayView *>();
    ASSERT_TRUE(overlay);
    EXPECT_THAT(words(), ElementsAre(str("Drag on the image to select crop area")));
}

TEST_F(EditorWindowTest, keysSelectWhatIsCroppedPixelByPixel) {
    edit(picture(800, 400));
    button("Crop image area")->click();
    press(Qt::Key_Right); // the first shows where it begins
    EXPECT_EQ(model().crop().rect(), QRectF(0.25, 0.25, 0.5, 0.5));
    press(Qt::Key_Right);
    press(Qt::Key_Up, Qt::ControlModifier);
    EXPECT_EQ(model().crop().rect(), QRectF(201 / 800.0, 90 / 400.0, 0.5, 0.5));
    press(Qt::Key_Left, Qt::ShiftModifier | Qt::ControlModifier);
    press(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(window->findChild<CropOverlayView *>()->accessibleDescription(), str("Area of 390 × 201"));
    for (int i = 0; i < 100; ++i)
        press(Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(model().crop().rect().left(), 0);
    press(Qt::Key_Return);
    EXPECT_EQ(model().shownImage().size(), QSize(390, 201));
    EXPECT_EQ(QApplication::focusWidget(), canvas());
}

TEST_F(EditorWindowTest, aCropThatIsBeingDraggedKeepsItsPlaceOnThePictureWhenItIsZoomed) {
    edit(picture(3000, 2000));
    button("Crop image area")->click();
    auto *overlay = window->findChild<CropOverlayView *>();
    const auto dragTo = [overlay](double across, double down) {
        const QPointF place(overlay->width() * across, overlay->height() * down);
        QMouseEvent move(QEvent::MouseMove, place, overlay->mapToGlobal(place), Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(overlay, &move);
    };
    QTest::mousePress(overlay, Qt::LeftButton, {}, QPoint(overlay->width() / 4, overlay->height() / 4));
    dragTo(0.5, 0.5);
    command(Qt::Key_1);
    dragTo(0.75, 0.5);
    const QRectF part = model().crop().rect();
    EXPECT_NEAR(part.x(), 0.25, 0.003);
    EXPECT_NEAR(part.y(), 0.25, 0.003);
    EXPECT_NEAR(part.right(), 0.75, 0.003);
}

TEST_F(EditorWindowTest, escapeAndCancelLeaveCropMode) {
    edit();
    button("Crop image area")->click();
    press(Qt::Key_Escape);
    EXPECT_FALSE(model().isCropping());
    EXPECT_TRUE(canvas());
    button("Crop image area")->click();
    button("Cancel")->click();
    EXPECT_FALSE(model().isCropping());
    EXPECT_EQ(model().shownImage().size(), QSize(800, 400));
}

TEST_F(EditorWindowTest, theButtonAppliesTheCrop) {
    edit();
    button("Crop image area")->click();
    model().dragCrop({0, 0}, {0.5, 1}, {1, 1});
    button("Apply Crop")->click();
    EXPECT_EQ(model().shownImage().size(), QSize(400, 400));
}

TEST_F(EditorWindowTest, undoInCropModeTakesAnAnnotationAndKeepsTheMode) {
    edit();
    drag(canvas(), {10, 10}, {100, 100});
    button("Crop image area")->click();
    command(Qt::Key_Z);
    EXPECT_TRUE(model().drawings().empty());
    EXPECT_TRUE(model().isCropping());
    EXPECT_TRUE(window->findChild<CropOverlayView *>());
}

TEST_F(EditorWindowTest, theOutsideOfTheSelectionIsDimmed) {
    edit();
    const auto colourAt = [this](double x, double y) {
        const QRect rect = stage().imageRect();
        return at(stage().grab().toImage(), rect.topLeft() + QPoint(int(rect.width() * x), int(rect.height() * y)));
    };
    const QColor plain = colourAt(0.2, 0.2);
    button("Crop image area")->click();
    model().dragCrop({0.5, 0.5}, {0.9, 0.9}, {1, 1});
    EXPECT_LT(colourAt(0.2, 0.2).lightness(), plain.lightness());
    EXPECT_EQ(colourAt(0.7, 0.7), plain);
}

// What others put over the picture.

TEST_F(EditorWindowTest, theOverlayLayerFollowsThePictureAndLetsClicksThroughBesideItsChildren) {
    edit();
    auto *bubble = new QWidget;
    bubble->setParent(view().overlayLayer());
    bubble->setGeometry(10, 10, 50, 20);
    bubble->show();
    EXPECT_EQ(view().overlayLayer()->geometry(), stage().imageRect());
    const QPoint corner = stage().imageRect().topLeft();
    EXPECT_EQ(stage().childAt(corner + QPoint(20, 20)), bubble);
    EXPECT_EQ(stage().childAt(corner + QPoint(200, 100)), canvas());
    command(Qt::Key_1);
    EXPECT_EQ(view().overlayLayer()->geometry(), stage().imageRect());
    const QPointer<QWidget> watched = bubble;
    button("Crop image area")->click();
    model().dragCrop({0, 0}, {0.5, 1}, {1, 1});
    press(Qt::Key_Return);
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(watched);
}

TEST_F(EditorWindowTest, theScanningOverlayCoversThePictureUntilItIsTakenAway) {
    edit();
    view().setScanningOverlay(str("Extracting text…"));
    const QPoint middle = stage().geometry().center();
    EXPECT_NE(view().childAt(middle), canvas());
    view().setScanningOverlay({});
    EXPECT_EQ(view().childAt(middle), canvas());
}

TEST_F(EditorWindowTest, aSheetTakesTheKeysAndEscapeDismissesIt) {
    edit();
    drag(canvas(), {10, 10}, {100, 100});
    const QPointer<QWidget> sheet = new QWidget;
    sheet->setFocusPolicy(Qt::StrongFocus);
    sheet->setMinimumSize(200, 100);
    view().presentSheet(sheet);
    EXPECT_TRUE(sheet->isVisible());
    command(Qt::Key_Z);
    EXPECT_EQ(model().drawings().size(), 1U);
    ASSERT_EQ(window->focusWidget(), sheet);
    for (const Qt::Key away : {Qt::Key_Tab, Qt::Key_Backtab}) {
        press(away);
        EXPECT_EQ(window->focusWidget(), sheet);
        press(Qt::Key_Return); // would draw on what is behind it
        EXPECT_EQ(model().drawings().size(), 1U);
    }
    press(Qt::Key_Escape);
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(sheet);
    command(Qt::Key_Z);
    EXPECT_TRUE(model().drawings().empty());
}

} // namespace
} // namespace tavrine
