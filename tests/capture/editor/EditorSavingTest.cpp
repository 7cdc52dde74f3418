// Copies, saves and uploads of the editor.
#include "EditorModelTest.h"

namespace tavrine {
namespace {

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
