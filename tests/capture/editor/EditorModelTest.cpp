#include "EditorModelTest.h"

namespace tavrine {
namespace {

TEST_F(EditorModelTest, beginsWithAThinRedPenOnAnUntouchedPicture) {
    EXPECT_EQ(model->currentTool(), DrawingTool::pen);
    EXPECT_EQ(model->selectedColor(), EditorModel::colorPresets()[0]);
    EXPECT_EQ(model->lineThickness(), AnnotationThickness::thin);
    EXPECT_EQ(model->nextStampNumber(), 1);
    EXPECT_TRUE(model->drawings().empty());
    EXPECT_FALSE(model->isCropping());
    EXPECT_TRUE(model->crop().isEmpty());
    EXPECT_FALSE(model->hasUnsavedChanges());
    EXPECT_FALSE(model->isCopied());
    EXPECT_FALSE(model->uploadButton());
    EXPECT_EQ(model->shownImage().size(), QSize(400, 200));
}

TEST_F(EditorModelTest, offersEightColoursInTheirOrder) {
    const auto &presets = EditorModel::colorPresets();
    ASSERT_EQ(presets.size(), 8U);
    EXPECT_NEAR(presets[2].redF(), 1.0, 0.001);
    EXPECT_NEAR(presets[2].greenF(), 0.85, 0.001);
    EXPECT_NEAR(presets[2].blueF(), 0.0, 0.001);
    EXPECT_NEAR(presets[4].redF(), 0.0, 0.001);
    EXPECT_NEAR(presets[4].greenF(), 0.85, 0.001);
    EXPECT_NEAR(presets[4].blueF(), 0.85, 0.001);
    EXPECT_EQ(presets[7], QColor(Qt::white));
    // Red, orange, yellow, green, cyan, blue and purple by their hues.
    const std::array hues{3, 35, 51, 135, 180, 211, 280};
    for (size_t i = 0; i < hues.size(); ++i)
        EXPECT_NEAR(presets[i].hsvHue(), hues[i], 2) << i;
}

TEST_F(EditorModelTest, aColourThatIsNoneIsNotTaken) {
    model->setSelectedColor(QColor());
    EXPECT_EQ(model->selectedColor(), EditorModel::colorPresets()[0]);
    model->setSelectedColor(Qt::blue);
    EXPECT_EQ(model->selectedColor(), QColor(Qt::blue));
}

// Unsaved changes.

TEST_F(EditorModelTest, anAnnotationIsAnUnsavedChange) {
    draw();
    EXPECT_TRUE(model->hasUnsavedChanges());
    model->undo();
    EXPECT_FALSE(model->hasUnsavedChanges());
}

TEST_F(EditorModelTest, theFlagFollowsTheNumberOfAnnotationsAndNotTheirContents) {
    draw();
    model->saveAndCopy();
    EXPECT_FALSE(model->hasUnsavedChanges());
    std::vector<DrawingPath> drawings = model->drawings();
    drawings[0].color = Qt::blue;
    model->setDrawings(drawings);
    EXPECT_FALSE(model->hasUnsavedChanges());
    draw();
    EXPECT_TRUE(model->hasUnsavedChanges());
}

TEST_F(EditorModelTest, erasingOneOfTwoLeavesUnsavedChanges) {
    draw();
    draw();
    model->saveAndCopy();
    model->setDrawings({model->drawings()[1]});
    EXPECT_TRUE(model->hasUnsavedChanges());
}

TEST_F(EditorModelTest, afterACropWithoutAnnotationsAStrokeAndItsUndoHideThePill) {
    select(0, 0, 0.5, 0.5);
    model->applyCrop();
    EXPECT_TRUE(model->hasUnsavedChanges());
    draw();
    EXPECT_TRUE(model->hasUnsavedChanges());
    model->undo();
    EXPECT_FALSE(model->hasUnsavedChanges());
}

TEST_F(EditorModelTest, aCropThatBurnsAnnotationsInTakesThePillAway) {
    draw();
    select(0, 0, 0.5, 0.5);
    model->applyCrop();
    EXPECT_FALSE(model->hasUnsavedChanges());
}

// Crop.

TEST_F(EditorModelTest, croppingBurnsTheAnnotationsIn) {
    draw();
    const QRgb before = model->shownImage().pixel(200, 20);
    const QRgb drawn = model->flattenedImage().pixel(200, 20);
    ASSERT_NE(before, drawn);
    select(0, 0, 1, 0.5);
    model->applyCrop();
    EXPECT_TRUE(model->drawings().empty());
    EXPECT_EQ(model->shownImage().size(), QSize(400, 100));
    EXPECT_EQ(model->shownImage().pixel(200, 20), drawn);
    EXPECT_FALSE(model->isCropping());
    EXPECT_TRUE(model->crop().isEmpty());
}

TEST_F(EditorModelTest, whatIsShownInCropModeIsFlattenedOnceUntilAnAnnotationGoes) {
    draw();
    draw();
    model->toggleCropping();
    const QImage first = model->flattenedImage();
    EXPECT_EQ(model->flattenedImage().cacheKey(), first.cacheKey());
    model->undo();
    model->undo();
    EXPECT_EQ(model->flattenedImage(), picture(400, 200));
    model->cancelCrop();
    draw();
    EXPECT_EQ(model->flattenedImage().pixel(200, 20), first.pixel(200, 20));
}

TEST_F(EditorModelTest, aSecondCropWorksOnWhatTheFirstLeft) {
    select(0, 0, 0.5, 0.5);
    model->applyCrop();
    EXPECT_EQ(model->shownImage().size(), QSize(200, 100));
    select(0.5, 0.5, 1, 1);
    model->applyCrop();
    EXPECT_EQ(model->shownImage().size(), QSize(100, 50));
}

TEST_F(EditorModelTest, aHundredthOfANarrowPictureIsTooSmallAndEndsTheModeOnly) {
    make(picture(299, 400)); // two whole pixels
    select(0.5, 0.5, 0.5, 0.5);
    model->applyCrop();
    EXPECT_EQ(model->shownImage().size(), QSize(299, 400));
    EXPECT_FALSE(model->hasUnsavedChanges());
    EXPECT_FALSE(model->isCropping());
    EXPECT_TRUE(model->crop().isEmpty());
}

TEST_F(EditorModelTest, aHundredthOfAWidePictureIsCropped) {
    make(picture(300, 300)); // three pixels
    select(0.5, 0.5, 0.5, 0.5);
    model->applyCrop();
    EXPECT_EQ(model->shownImage().size(), QSize(3, 3));
}

TEST_F(EditorModelTest, aSmallCropKeepsTheAnnotations) {
    make(picture(100, 100));
    draw();
    select(0.5, 0.5, 0.5, 0.5);
    model->applyCrop();
    EXPECT_EQ(model->drawings().size(), 1U);
    EXPECT_TRUE(model->hasUnsavedChanges());
}

TEST_F(EditorModelTest, applyingWithoutASelectionTakesTheWholePicture) {
    draw();
    model->toggleCropping();
    model->applyCrop();
    EXPECT_EQ(model->shownImage().size(), QSize(400, 200));
    EXPECT_TRUE(model->drawings().empty());
}

TEST_F(EditorModelTest, eachToggleOfTheModeClearsTheSelection) {
    select(0.1, 0.1, 0.2, 0.2);
    model->toggleCropping();
    EXPECT_FALSE(model->isCropping());
    EXPECT_TRUE(model->crop().isEmpty());
    model->toggleCropping();
    EXPECT_TRUE(model->isCropping());
    EXPECT_TRUE(model->crop().isEmpty());
}

TEST_F(EditorModelTest, cancellingLeavesTheModeAndClearsTheSelection) {
    select(0.1, 0.1, 0.2, 0.2);
    model->cancelCrop();
    EXPECT_FALSE(model->isCropping());
    EXPECT_TRUE(model->crop().isEmpty());
    EXPECT_EQ(model->shownImage().size(), QSize(400, 200));
    model->cancelCrop();
    EXPECT_FALSE(model->isCropping());
}

TEST_F(EditorModelTest, outsideOfTheModeNothingIsSelectedOrCropped) {
    model->dragCrop({0, 0}, {0.5, 0.5}, {1, 1});
    EXPECT_TRUE(model->crop().isEmpty());
    model->applyCrop();
    EXPECT_FALSE(model->hasUnsavedChanges());
    EXPECT_FALSE(model->isCropping());
}

TEST_F(EditorModelTest, undoDoesNotTakeACropBack) {
    select(0, 0, 0.5, 0.5);
    model->applyCrop();
    model->undo();
    EXPECT_EQ(model->shownImage().size(), QSize(200, 100));
    EXPECT_TRUE(model->hasUnsavedChanges());
}

TEST_F(EditorModelTest, aPictureOfOnePixelCanBeDrawnOnAndCopiedAndNotCropped) {
    make(picture(1, 1));
    draw();
    select(0, 0, 1, 1);
    model->applyCrop();
    EXPECT_EQ(model->drawings().size(), 1U);
    model->copyFlattened();
    EXPECT_EQ(pasteboard.image()->size(), QSize(1, 1));
}

TEST_F(EditorModelTest, aPictureWithoutPixelsLeavesThePasteboardAndWritesNoFile) {
    make(QImage());
    pasteboard.copyFromOutside(str("words"));
    model->copyFlattened();
    EXPECT_EQ(pasteboard.string(), str("words"));
    EXPECT_FALSE(model->isCopied());
    select(0, 0, 1, 1);
    model->applyCrop();
    EXPECT_FALSE(model->hasUnsavedChanges());
    model->saveFlattened();
    panels.choose(home.filePath(str("none.png")));
    EXPECT_EQ(outputOfTheSave(), "");
    EXPECT_FALSE(QFile::exists(home.filePath(str("none.png"))));
}

// Undo and stamps.

TEST_F(EditorModelTest, undoWithoutAnnotationsDoesNothing) {
    int replaced = 0;
    QObject::connect(model.get(), &EditorModel::canvasReplaced, [&replaced] { ++replaced; });
    model->undo();
    EXPECT_EQ(replaced, 0);
    draw();
    model->undo();
    EXPECT_EQ(replaced, 1);
}

TEST_F(EditorModelTest, undoTakesTheLastAnnotationAlone) {
    draw();
    draw(DrawingKind::arrow);
    const QString first = model->drawings()[0].id;
    model->undo();
    ASSERT_EQ(model->drawings().size(), 1U);
    EXPECT_EQ(model->drawings()[0].id, first);
}

TEST_F(EditorModelTest, theCanvasIsReplacedBeforeTheAnnotationGoes) {
    draw(DrawingKind::text);
    size_t countThen = 0;
    QObject::connect(model.get(), &EditorModel::canvasReplaced, [&] { countThen = model->drawings().size(); });
    model->undo();
    EXPECT_EQ(countThen, 1U);
    EXPECT_TRUE(model->drawings().empty());
}

TEST_F(EditorModelTest, undoingAStampGivesItsNumberBack) {
    draw(DrawingKind::number);
    model->setNextStampNumber(2);
    draw(DrawingKind::number);
    model->setNextStampNumber(3);
    model->undo();
    EXPECT_EQ(model->nextStampNumber(), 2);
}

TEST_F(EditorModelTest, undoingAStampAtOneKeepsOne) {
    draw(DrawingKind::number);
    EXPECT_EQ(model->nextStampNumber(), 1);
    model->undo();
    EXPECT_EQ(model->nextStampNumber(), 1);
}

TEST_F(EditorModelTest, undoingAnythingElseKeepsTheNumber) {
    model->setNextStampNumber(5);
    draw(DrawingKind::rectangle);
    model->undo();
    EXPECT_EQ(model->nextStampNumber(), 5);
}

TEST_F(EditorModelTest, theStepperGoesDownToOneAndUpAlways) {
    EXPECT_FALSE(model->canDecreaseStampNumber());
    model->decreaseStampNumber();
    EXPECT_EQ(model->nextStampNumber(), 1);
    model->increaseStampNumber();
    EXPECT_EQ(model->nextStampNumber(), 2);
    EXPECT_TRUE(model->canDecreaseStampNumber());
    model->decreaseStampNumber();
    EXPECT_EQ(model->nextStampNumber(), 1);
    model->setNextStampNumber(std::numeric_limits<int>::max());
    model->increaseStampNumber();
    EXPECT_EQ(model->nextStampNumber(), std::numeric_limits<int>::max());
}

// Opening, new captures, closing.

TEST_F(EditorModelTest, aChosenFileIsHandedOn) {
    const QString path = home.filePath(str("other.png"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("fake picture 30 20\n");
    file.close();
    model->openImageFile();
    ASSERT_EQ(panels.openPanels().size(), 1);
    EXPECT_EQ(panels.openPanels().first().title, str("Select Image to Edit"));
    EXPECT_FALSE(panels.openPanels().first().choosesDirectories);
    EXPECT_EQ(panels.openPanels().first().kind, str("image/")) << "whatever they are called";
    EXPECT_EQ(panels.openPanels().first().filter, str("Images (*)"));
    panels.choose(path);
    time.advance(0ms);
    ASSERT_EQ(openedImages.size(), 1U);
    EXPECT_EQ(openedImages[0].size(), QSize(30, 20));
}

TEST_F(EditorModelTest, anUnreadableFileDoesNothing) {
    model->openImageFile();
    panels.choose(home.filePath(str("missing.png")));
    time.advance(0ms);
    EXPECT_TRUE(openedImages.empty());
}

TEST_F(EditorModelTest, anEditorWithoutTheClosureOpensNoFile) {
    EXPECT_TRUE(model->canOpenNewImage());
    EditorModel single(picture(4, 4), {time, pasteboard, panels, coder, center, documents, files}, {});
    EXPECT_FALSE(single.canOpenNewImage());
    single.openImageFile();
    EXPECT_TRUE(panels.openPanels().isEmpty());
    single.close(); // none of these has anyone to call
    single.extractText();
    single.scanQr();
    single.upload();
}

TEST_F(EditorModelTest, anAnswerAfterTheEditorIsGoneOpensNothing) {
    model->openImageFile();
    model.reset();
    panels.choose(home.filePath(str("other.png")));
    time.advance(0ms);
    EXPECT_TRUE(openedImages.empty());
}

TEST_F(EditorModelTest, aNewSnipIsPosted) {
    int posted = 0;
    const auto token = center.addObserver(str("com.tavrine.restartSnip"), [&posted](const Notification &notification) {
        EXPECT_TRUE(notification.userInfo.isEmpty());
        ++posted;
    });
    EXPECT_EQ(outputOf([this] { model->takeNewSnip(); }),
              "DEBUG: EditorView - 'New Snip' requested. Posting notification...\n");
    EXPECT_EQ(posted, 1);
}

TEST_F(EditorModelTest, theButtonsOfOthersCallThem) {
    model->extractText();
    model->scanQr();
    model->close();
    EXPECT_EQ(extracts, 1);
    EXPECT_EQ(scans, 1);
    EXPECT_EQ(closes, 1);
}

} // namespace
} // namespace tavrine
