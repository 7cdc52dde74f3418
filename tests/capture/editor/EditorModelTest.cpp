#include "capture/editor/EditorModel.h"

#include "adapters/fake/FakeFilePanels.h"
#include "adapters/fake/FakeImageCoder.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/SerialQueue.h"
#include "upload/PlayedUpload.h"

#include <QDir>
#include <QTemporaryDir>

#include <mutex>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

QString str(const char *text) {
    return QString::fromUtf8(text);
}

QImage picture(int width, int height, const QColor &color = Qt::darkGreen) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

DrawingPath annotation(DrawingKind kind = DrawingKind::path) {
    DrawingPath path;
    path.id = freshUuidString();
    path.kind = kind;
    path.points = {{0.1, 0.1}, {0.9, 0.1}};
    path.color = Qt::red;
    if (kind == DrawingKind::number)
        path.number = 1;
    return path;
}

class EditorModelTest : public testing::Test {
protected:
    EditorModelTest() { make(picture(400, 200)); }

    void make(const QImage &image) {
        model = std::make_unique<EditorModel>(
            image, EditorModel::Ports{time, pasteboard, panels, coder, center, documents, files},
            EditorModel::Actions{.openNewImage = [this](const QImage &opened) { openedImages.push_back(opened); },
                                 .close = [this] { ++closes; },
                                 .extractText = [this] { ++extracts; },
                                 .scanQr = [this] { ++scans; }});
    }
    void draw(DrawingKind kind = DrawingKind::path) {
        std::vector<DrawingPath> drawings = model->drawings();
        drawings.push_back(annotation(kind));
        model->setDrawings(drawings);
    }
    void select(double left, double top, double right, double bottom) {
        if (!model->isCropping())
            model->toggleCropping();
        model->dragCrop({left, top}, {right, bottom}, {1, 1});
    }
    std::string outputOf(const std::function<void()> &work) {
        testing::internal::CaptureStdout();
        work();
        return testing::internal::GetCapturedStdout();
    }
    /// What is said until the file that was asked for is written, or is not.
    std::string outputOfTheSave() {
        return outputOf([this] {
            time.advance(0ms);
            files.sync([] {});
            time.advance(0ms);
        });
    }

    QTemporaryDir home;
    QString documents = home.filePath(str("Documents"));
    VirtualTime time;
    FakePasteboard pasteboard;
    test::PlayedUpload played{time, pasteboard};
    FakeFilePanels panels{time};
    FakeImageCoder coder;
    NotificationCenter center;
    SerialQueue files{str("com.tavrine.snip")};
    std::vector<QImage> openedImages;
    int closes = 0;
    int extracts = 0;
    int scans = 0;
    std::unique_ptr<EditorModel> model;
};

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
    const QImage shown = model->flattenedImage();
    EXPECT_EQ(model->flattenedImage().cacheKey(), shown.cacheKey());
    model->undo();
    model->undo();
    EXPECT_EQ(model->flattenedImage(), picture(400, 200));
    model->cancelCrop();
    draw();
    EXPECT_EQ(model->flattenedImage().pixel(200, 20), shown.pixel(200, 20));
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

// Copy.

TEST_F(EditorModelTest, copyPutsTheFlattenedPictureOnThePasteboardOnce) {
    draw();
    model->copyFlattened();
    ASSERT_TRUE(pasteboard.image());
    EXPECT_EQ(pasteboard.image()->size(), QSize(400, 200));
    EXPECT_EQ(pasteboard.image()->pixel(100, 20), model->flattenedImage().pixel(100, 20));
    EXPECT_EQ(pasteboard.clearCount(), 1);
    EXPECT_TRUE(model->hasUnsavedChanges());
}

TEST_F(EditorModelTest, theConfirmationOfACopyLastsTwoSeconds) {
    model->copyFlattened();
    EXPECT_TRUE(model->isCopied());
    time.advance(1'999ms);
    EXPECT_TRUE(model->isCopied());
    time.advance(1ms);
    EXPECT_FALSE(model->isCopied());
}

TEST_F(EditorModelTest, theFirstOfTwoCopiesEndsTheConfirmation) {
    model->copyFlattened();
    time.advance(1'500ms);
    model->copyFlattened();
    time.advance(500ms);
    EXPECT_FALSE(model->isCopied());
}

TEST_F(EditorModelTest, saveAndCopyCopiesAndWritesNoFile) {
    draw();
    model->saveAndCopy();
    EXPECT_TRUE(pasteboard.image());
    EXPECT_TRUE(model->isCopied());
    EXPECT_FALSE(model->hasUnsavedChanges());
    time.advance(5s);
    EXPECT_FALSE(panels.isOpen());
    EXPECT_FALSE(QDir(documents).exists());
    EXPECT_EQ(model->drawings().size(), 1U);
}

TEST_F(EditorModelTest, aClosedEditorLeavesNothingBehind) {
    std::vector<uchar> pixels(400 * 200 * 4);
    bool isReleased = false;
    make(QImage(
        pixels.data(), 400, 200, QImage::Format_RGB32, [](void *released) { *static_cast<bool *>(released) = true; },
        &isReleased));
    model->copyFlattened();
    model->setUploadButton(played.makeButton(UploadButton::AfterLink::returnToIdle));
    model->upload();
    played.prepare();
    played.succeed();
    model->openImageFile();
    pasteboard.clearContents();
    EXPECT_FALSE(isReleased);
    model.reset();
    EXPECT_TRUE(isReleased) << "something that waits for its time holds the picture";
    panels.choose(str("/any.png"));
    time.advance(10s);
    EXPECT_TRUE(openedImages.empty());
}

// Save.

TEST_F(EditorModelTest, aSaveIsNamedAfterTheDayAndTheTime) {
    const QTimeZone utc = QTimeZone::utc();
    const QLocale english(QLocale::English, QLocale::UnitedStates);
    EXPECT_EQ(EditorModel::saveFileName({1769860800.0}, english, utc), str("snip_January 31_12.00PM.png"));
    EXPECT_EQ(EditorModel::saveFileName({1769860800.0 - 12 * 3600}, english, utc), str("snip_January 31_12.00AM.png"));
    EXPECT_EQ(EditorModel::saveFileName({1769860800.0 + 4 * 86400 + 3 * 3600 + 5 * 60}, english, utc),
              str("snip_February 04_03.05PM.png"));
    EXPECT_EQ(EditorModel::saveFileName({1769860800.0}, english, QTimeZone(-3600)), str("snip_January 31_11.00AM.png"));
}

TEST_F(EditorModelTest, theSavePanelStandsInTheFolderThatIsMadeForIt) {
    model->saveFlattened();
    ASSERT_EQ(panels.savePanels().size(), 1);
    const SavePanel &panel = panels.savePanels().first();
    EXPECT_EQ(panel.title, str("Save Snip"));
    EXPECT_EQ(panel.directory, documents + str("/tavrine"));
    EXPECT_TRUE(QDir(panel.directory).exists());
    EXPECT_EQ(QFile::permissions(panel.directory) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
    EXPECT_EQ(panel.fileName, EditorModel::saveFileName(time.now(), QLocale(), QTimeZone::systemTimeZone()));
    EXPECT_TRUE(panel.filter.contains(str("*.png")));
}

TEST_F(EditorModelTest, theAnswerWritesThePictureAndKeepsTheFlag) {
    draw();
    model->saveFlattened();
    const QString path = home.filePath(str("mine.png"));
    panels.choose(path);
    const std::string output = outputOfTheSave();
    EXPECT_EQ(output, "Image saved to: " + path.toStdString() + "\n");
    const QImage saved(path);
    EXPECT_EQ(saved.size(), QSize(400, 200));
    EXPECT_EQ(saved.pixel(100, 20), model->flattenedImage().pixel(100, 20));
    EXPECT_TRUE(model->hasUnsavedChanges());
}

TEST_F(EditorModelTest, whatIsSavedIsWhatWasSeenWhenThePanelOpened) {
    model->saveFlattened();
    draw();
    const QString path = home.filePath(str("mine.png"));
    panels.choose(path);
    outputOfTheSave();
    EXPECT_EQ(QImage(path).pixel(100, 20), picture(1, 1).pixel(0, 0));
}

TEST_F(EditorModelTest, anEditorThatWasClosedMeanwhileStillSaves) {
    model->saveFlattened();
    model.reset();
    const QString path = home.filePath(str("mine.png"));
    panels.choose(path);
    EXPECT_THAT(outputOfTheSave(), HasSubstr("Image saved to: "));
    EXPECT_TRUE(QFile::exists(path));
}

TEST_F(EditorModelTest, aCancelledPanelSaysAndWritesNothing) {
    model->saveFlattened();
    panels.cancel();
    EXPECT_EQ(outputOfTheSave(), "");
    EXPECT_TRUE(QDir(documents + str("/tavrine")).isEmpty());
}

TEST_F(EditorModelTest, thePersonHearsOfAFailedSaveForAWhile) {
    const auto fail = [this] {
        model->saveFlattened();
        panels.choose(home.filePath(str("no/such/folder/mine.png")));
        outputOfTheSave();
    };
    fail();
    EXPECT_THAT(model->saveFailure().toStdString(), HasSubstr("mine.png"));
    time.advance(4s);
    fail();
    time.advance(Seconds(4.999));
    EXPECT_FALSE(model->saveFailure().isEmpty());
    time.advance(Seconds(0.001));
    EXPECT_TRUE(model->saveFailure().isEmpty());
}

TEST_F(EditorModelTest, thePictureIsEncodedWhileTheMainThreadGoesOn) {
    std::mutex gate;
    gate.lock();
    files.async([&] { const std::lock_guard opened(gate); });
    model->saveFlattened();
    const QString path = home.filePath(str("mine.png"));
    panels.choose(path);
    time.advance(0ms); // returns, though the queue stands still
    EXPECT_FALSE(QFile::exists(path));
    gate.unlock();
    EXPECT_EQ(outputOfTheSave(), "Image saved to: " + path.toStdString() + "\n");
    EXPECT_TRUE(QFile::exists(path));
}

TEST_F(EditorModelTest, withoutMemoryForACopyTheChangesStayUnsaved) {
    make(QImage()); // what a picture is for which there is no memory
    draw();
    model->saveAndCopy();
    EXPECT_TRUE(model->hasUnsavedChanges());
    EXPECT_FALSE(model->isCopied());
}

TEST_F(EditorModelTest, aFailedWriteIsTold) {
    model->saveFlattened();
    panels.choose(home.filePath(str("no/such/folder/mine.png")));
    EXPECT_THAT(outputOfTheSave(), testing::StartsWith("Failed to save image: "));
}

TEST_F(EditorModelTest, withoutADocumentsFolderNothingIsAsked) {
    documents.clear();
    make(picture(4, 4));
    model->saveFlattened();
    EXPECT_TRUE(panels.savePanels().isEmpty());
}

TEST_F(EditorModelTest, aFolderThatCannotBeMadeDoesNotEndTheSave) {
    QFile file(documents);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)); // a file stands where the folder would
    model->saveFlattened();
    EXPECT_EQ(panels.savePanels().size(), 1);
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
    for (const char *suffix : {"*.png", "*.jpg", "*.jpeg", "*.webp", "*.heic", "*.tiff"})
        EXPECT_TRUE(panels.openPanels().first().filter.contains(QLatin1String(suffix))) << suffix;
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

// Upload.

TEST_F(EditorModelTest, aPressGoesToTheUploadButtonAndItsNewsAreTheModels) {
    model->upload(); // there is no button yet
    int changes = 0;
    QObject::connect(model.get(), &EditorModel::uploadChanged, [&changes] { ++changes; });
    model->setUploadButton(played.makeButton(UploadButton::AfterLink::returnToIdle));
    EXPECT_EQ(changes, 1);
    model->upload();
    played.prepare();
    EXPECT_EQ(played.runs.size(), 1U);
    EXPECT_EQ(changes, 2);
    played.succeed();
    EXPECT_EQ(model->uploadButton()->state(), UploadButtonState::done);
    EXPECT_EQ(changes, 3);
}

} // namespace
} // namespace tavrine
