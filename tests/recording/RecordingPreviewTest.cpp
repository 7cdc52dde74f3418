// What becomes of a recording: the preview, saving, copying, and what an earlier run has left.
#include "recording/RecorderTest.h"
#include "recording/RecordingLeftovers.h"
#include "recording/RecordingTexts.h"

namespace tavrine {
namespace {

class Preview : public RecorderTest {
protected:
    [[nodiscard]] ScreenRecordingPreviewModel &preview() { return *recorder->previewModel(); }
    [[nodiscard]] QString shot(const char *name) { return *shots + text("/") + text(name); }
    [[nodiscard]] QList<QUrl> copied() const { return pasteboard.writtenFileUrls(); }
};

TEST(RecordingTexts, theClockHasNoHours) {
    EXPECT_EQ(clockText(0s), text("00:00"));
    EXPECT_EQ(clockText(Seconds{59.999}), text("00:59"));
    EXPECT_EQ(clockText(3700s), text("61:40"));
    EXPECT_EQ(clockText(6000s), text("100:00"));
}

TEST(RecordingTexts, sizesAreToldInThousands) {
    const std::vector<std::pair<qint64, const char *>> sizes{{0, "Zero KB"},
                                                             {1, "1 byte"},
                                                             {999, "999 bytes"},
                                                             {1000, "1 KB"},
                                                             {1499, "1 KB"},
                                                             {999'499, "999 KB"},
                                                             {999'500, "1 MB"},
                                                             {1'250'000, "1.3 MB"},
                                                             {12'000'000, "12 MB"},
                                                             {999'949'999, "999.9 MB"},
                                                             {999'950'000, "1 GB"},
                                                             {1'234'567'890, "1.23 GB"},
                                                             {7'000'000'000'000, "7 TB"}};
    for (const auto &[bytes, words] : sizes)
        EXPECT_EQ(fileSizeText(bytes), text(words)) << bytes;
}

TEST_F(Preview, itComesInTheCornerWithTheKeyboard) {
    recordAndStop();
    const auto &window = fake(recorder->previewWindow());
    EXPECT_EQ(window.frame(), QRectF(24, 48, 380, 430));
    EXPECT_TRUE(window.isKey());
    EXPECT_EQ(window.description().level, 3);
    EXPECT_FALSE(window.description().hasShadow);
    EXPECT_EQ(events.last(), text("activate"));
}

TEST_F(Preview, itComesToTheScreenOfThePointer) {
    screens.setScreens(
        {{.number = 1, .localizedName = {}, .frame = QRectF(0, 0, 1440, 900), .visibleFrame = QRectF(0, 0, 1440, 876)},
         {.number = 2,
          .localizedName = {},
          .frame = QRectF(1440, -200, 800, 900),
          .visibleFrame = QRectF(1440, -200, 800, 900)}});
    screens.setKeyboardScreen(0);
    record();
    screens.setMouseLocation({1500, 100});
    recorder->stopRecording();
    ASSERT_TRUE(happens([this] { return recorder->previewModel(); }));
    EXPECT_EQ(recorder->previewWindow()->frame(), QRectF(1440 + 24, -200 + 48, 380, 430));
}

TEST_F(Preview, theCornerIsTakenWhileItIsOpen) {
    const QRectF screen(0, 0, 1440, 900);
    const QRectF other(18, 18, 340, 248);
    EXPECT_EQ(corner.clearOf(screen, other, 18), other);
    auto &preview = recordAndStop();
    EXPECT_FALSE(corner.clearOf(screen, other, 18).intersects(recorder->previewWindow()->frame()));
    preview.pressDelete();
    EXPECT_EQ(corner.clearOf(screen, other, 18), other);
}

TEST_F(Preview, theNameIsTheMomentInLocalTime) {
    time.setWallClock({1769860799.9}); // a moment before noon, UTC
    EXPECT_EQ(recordAndStop().fileName(), text("recording_2026-01-31_20.59.59"));
}

TEST_F(Preview, theFolderIsTheOneWhereRecordingsGo) {
    EXPECT_EQ(recordAndStop().targetFolder(), *shots);
}

TEST_F(Preview, withoutSuchAFolderItIsTheChosenOneOrTheStandardOne) {
    shots.reset();
    EXPECT_EQ(recordAndStop().targetFolder(), home.filePath(text("Documents/Tavrine QuickShots")));
    preview().pressDelete();
    customFolder = text("/far/away");
    EXPECT_EQ(recordAndStop().targetFolder(), text("/far/away"));
}

TEST_F(Preview, untilTheFileHasSpokenItIsWideAndHasSound) {
    asset.setFacts(MovieFacts{.naturalSize = {600, 800}, .hasAudioTrack = false, .duration = 61s});
    auto &model = recordAndStop();
    EXPECT_DOUBLE_EQ(model.videoAspectRatio(), 16.0 / 9.0);
    EXPECT_TRUE(model.hasAudioTrack());
    EXPECT_EQ(model.duration(), std::nullopt);
    EXPECT_EQ(model.fileSizeText(), text("5 bytes"));
    asset.answer();
    EXPECT_DOUBLE_EQ(model.videoAspectRatio(), 0.75);
    EXPECT_FALSE(model.hasAudioTrack());
    EXPECT_EQ(model.audioText(), text("No Audio Recorded"));
    EXPECT_EQ(model.duration(), 61s);
}

TEST_F(Preview, aMovieWithoutASizeKeepsTheShape) {
    asset.setFacts(MovieFacts{.naturalSize = {600, 0}, .hasAudioTrack = true, .duration = 1s});
    auto &model = recordAndStop();
    asset.answer();
    EXPECT_DOUBLE_EQ(model.videoAspectRatio(), 16.0 / 9.0);
}

TEST_F(Preview, factsThatComeTooLateAreLeftAlone) {
    recordAndStop().pressDelete();
    time.runPending();
    asset.answer();
    EXPECT_FALSE(recorder->previewModel());
}

TEST_F(Preview, theMovieIsPlayedUntilTheWindowGoes) {
    recordAndStop().play({320, 180});
    const auto movie = players.movies().front();
    EXPECT_EQ(movie->path, preview().filePath());
    EXPECT_EQ(movie->pictureSize, QSize(320, 180));
    EXPECT_TRUE(movie->isHeard());
    preview().toggleMuted();
    EXPECT_FALSE(movie->isHeard());
    EXPECT_EQ(preview().audioText(), text("Muted (Silent)"));
    preview().toggleMuted();
    EXPECT_TRUE(movie->isHeard());
    EXPECT_EQ(preview().audioText(), text("Include Audio"));
    preview().pressDelete();
    EXPECT_TRUE(movie->isDropped);
}

TEST_F(Preview, theMovieRestsBeforeItIsSavedOrCopied) {
    QStringList ways;
    const auto tell = [&](const char *way) {
        return [&ways, this, way](const ScreenRecordingPreviewModel::Choice &) {
            ways << text(way) + text(players.movies().back()->isPlaying ? " while it plays" : " at rest");
        };
    };
    ScreenRecordingPreviewModel model(
        leftover("movie.mp4"), text("clip"), *shots, {asset, players, filePanels},
        {.onSave = tell("save"), .onCopy = tell("copy"), .onCancel = [] {}, .onFolderChosen = [](const QString &) {}});
    for (const auto press : {&ScreenRecordingPreviewModel::pressSave, &ScreenRecordingPreviewModel::pressCopy}) {
        model.play({320, 180});
        ASSERT_TRUE(players.movies().back()->isPlaying);
        (model.*press)();
    }
    EXPECT_THAT(ways, ElementsAre(text("save at rest"), text("copy at rest")));
}

TEST_F(Preview, aMovieWithoutSoundCannotBeMuted) {
    asset.setFacts(MovieFacts{.naturalSize = {600, 800}, .hasAudioTrack = false, .duration = 1s});
    recordAndStop();
    asset.answer();
    preview().toggleMuted();
    EXPECT_FALSE(preview().isMuted());
}

TEST_F(Preview, aMovieThatCannotBeShownCanStillBeSaved) {
    players.failNext(text("no decoder"));
    recordAndStop().play({320, 180});
    time.runPending();
    EXPECT_EQ(preview().failure(), text("no decoder"));
    preview().setFileName(text("clip"));
    preview().pressSave();
    EXPECT_THAT(savedFiles(), ElementsAre(text("clip.mp4")));
}

// Leaving.

TEST_F(Preview, deletingRemovesTheFile) {
    recordAndStop().pressDelete();
    EXPECT_FALSE(recorder->previewWindow());
    EXPECT_THAT(temporaryFiles(), IsEmpty());
    EXPECT_THAT(saved, IsEmpty());
}

TEST_F(Preview, savingHandsTheTrimmedNameOnAndKeepsTheFolder) {
    auto &model = recordAndStop();
    model.setFileName(text(" Demo of it!\n"));
    events.clear();
    model.pressSave();
    EXPECT_FALSE(recorder->previewWindow());
    EXPECT_THAT(saved, ElementsAre(text("Demo of it!")));
    EXPECT_THAT(events, ElementsAre(text("folder Shots")));
    EXPECT_THAT(temporaryFiles(), IsEmpty());
    EXPECT_THAT(toasts, IsEmpty());
}

TEST_F(Preview, aNameOfNothingBecomesRecording) {
    auto &model = recordAndStop();
    model.setFileName(text(" \n\t"));
    model.pressSave();
    EXPECT_THAT(saved, ElementsAre(text("recording")));
}

TEST_F(Preview, aSecondPressDoesNothing) {
    const auto &model = recordAndStop();
    auto &pressed = const_cast<ScreenRecordingPreviewModel &>(model);
    pressed.pressSave();
    pressed.pressSave(); // its window goes a turn later
    pressed.pressDelete();
    pressed.pressCopy();
    pressed.pressChange();
    EXPECT_EQ(saved.size(), 1);
    EXPECT_THAT(filePanels.openPanels(), IsEmpty());
}

TEST_F(Preview, anotherFolderIsAskedForAndKept) {
    auto &model = recordAndStop();
    model.pressChange();
    ASSERT_EQ(filePanels.openPanels().size(), 1);
    const OpenPanel &panel = filePanels.openPanels().first();
    EXPECT_EQ(panel.prompt, text("Select Folder"));
    EXPECT_EQ(panel.directory, *shots);
    EXPECT_TRUE(panel.choosesDirectories);
    filePanels.choose(text("/else/where"));
    time.runPending();
    EXPECT_EQ(model.targetFolder(), text("/else/where"));
    EXPECT_EQ(customFolder, text("/else/where"));
    model.pressChange();
    filePanels.cancel();
    time.runPending();
    EXPECT_EQ(model.targetFolder(), text("/else/where"));
}

TEST_F(Preview, copyingPutsTheSavedFileOnThePasteboardAndSaysSo) {
    auto &model = recordAndStop();
    model.setFileName(text(" a  b!"));
    savedAs = text("a__b_");
    model.pressCopy();
    EXPECT_THAT(copied(), ElementsAre(QUrl::fromLocalFile(shot("a__b_.mp4"))));
    EXPECT_THAT(toasts, ElementsAre(text("Video Copied to Clipboard!|doc.on.doc.fill")));
}

TEST_F(Preview, aNameThatWasTakenCopiesTheNewRecordingAndNotTheOldOne) {
    ASSERT_TRUE(QFile::copy(leftover("old.mp4"), shot("clip.mp4")));
    auto &model = recordAndStop();
    model.setFileName(text("clip"));
    savedAs = text("clip_4F21AB");
    model.pressCopy();
    EXPECT_THAT(copied(), ElementsAre(QUrl::fromLocalFile(shot("clip_4F21AB.mp4"))));
}

TEST_F(Preview, whatCouldNotBeSavedIsCopiedFromWhereItIsAndShownAgain) {
    saves = false;
    const QString path = recordAndStop().filePath();
    preview().setFileName(text(" My clip "));
    preview().pressCopy();
    EXPECT_THAT(copied(), ElementsAre(QUrl::fromLocalFile(path)));
    EXPECT_EQ(toasts.last(), text("Couldn't save the recording|exclamationmark.triangle.fill"));
    time.runPending();
    ASSERT_TRUE(recorder->previewModel());
    EXPECT_EQ(preview().filePath(), path);
    EXPECT_EQ(preview().fileName(), text("My clip"));
    saves = true;
    preview().pressSave();
    EXPECT_THAT(temporaryFiles(), IsEmpty());
}

TEST_F(Preview, whatCouldNotBeSavedIsNotMistakenForWhatHasItsName) {
    ASSERT_TRUE(QFile::copy(leftover("old.mp4"), shot("clip.mp4")));
    saves = false;
    const QString path = recordAndStop().filePath();
    preview().setFileName(text("clip"));
    preview().pressCopy();
    EXPECT_THAT(copied(), ElementsAre(QUrl::fromLocalFile(path)));
}

TEST_F(Preview, aMovieOnItsWayToAnotherDiskIsToldAndTheNextIsShownAfterIt) {
    savesSlowly = true;
    auto &model = recordAndStop();
    model.setFileName(text("clip"));
    recorder->offer({leftover("tavrine-rec-1.mp4")});
    model.pressCopy();
    EXPECT_FALSE(recorder->previewWindow());
    time.advance(299ms);
    EXPECT_THAT(toasts, IsEmpty());
    time.advance(1ms);
    EXPECT_THAT(toasts, ElementsAre(text("Saving the recording…|square.and.arrow.down")));
    EXPECT_THAT(copied(), IsEmpty());
    time.advance(10s);
    EXPECT_EQ(toasts.last(), text("Video Copied to Clipboard!|doc.on.doc.fill"));
    EXPECT_THAT(copied(), ElementsAre(QUrl::fromLocalFile(shot("clip.mp4"))));
    EXPECT_TRUE(recorder->previewModel());
}

TEST_F(Preview, theEndOfTheProgramWhileAMovieIsOnItsWayIsNobodysLoss) {
    savesSlowly = true;
    recordAndStop().pressSave();
    recorder.reset();
    time.advance(10s);
    EXPECT_EQ(savedFiles().size(), 1);
}

TEST_F(Preview, aMutedRecordingIsSavedAsACopyWithoutSound) {
    auto &model = recordAndStop();
    const QString original = model.filePath();
    model.setFileName(text("clip"));
    model.toggleMuted();
    model.pressSave();
    EXPECT_FALSE(recorder->previewWindow());
    EXPECT_THAT(saved, IsEmpty()); // not before the copy is made
    ASSERT_EQ(asset.copies().size(), 1);
    EXPECT_EQ(asset.copies().first().source, original);
    EXPECT_THAT(asset.copies().first().target.toStdString(),
                testing::MatchesRegex(folders.temporary.toStdString() + "/tavrine-muted-[0-9A-F-]{36}\\.mp4"));
    asset.answer();
    time.runPending();
    EXPECT_THAT(savedFiles(), ElementsAre(text("clip.mp4")));
    EXPECT_THAT(temporaryFiles(), IsEmpty()); // the one with sound is not wanted any more
}

TEST_F(Preview, aMutedRecordingIsCopiedAsTheFileWithoutSound) {
    auto &model = recordAndStop();
    model.setFileName(text("clip"));
    model.toggleMuted();
    model.pressCopy();
    EXPECT_THAT(copied(), IsEmpty());
    asset.answer();
    time.runPending();
    EXPECT_THAT(copied(), ElementsAre(QUrl::fromLocalFile(shot("clip.mp4"))));
    QFile file(shot("clip.mp4"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(file.readAll().endsWith(FakeMovieAsset::silence));
    EXPECT_THAT(temporaryFiles(), IsEmpty());
}

TEST_F(Preview, aMutedCopyThatFailsLeavesTheRecordingAsItIsAndSaysSo) {
    asset.setCopiesSucceed(false);
    auto &model = recordAndStop();
    model.toggleMuted();
    model.pressCopy();
    asset.answer();
    time.runPending();
    EXPECT_EQ(savedFiles().size(), 1);
    EXPECT_THAT(toasts, ElementsAre(text("Video Copied to Clipboard!|doc.on.doc.fill"),
                                    text("The recording couldn't be muted: it has its sound|"
                                         "exclamationmark.triangle.fill")));
    EXPECT_THAT(temporaryFiles(), IsEmpty());
}

TEST_F(Preview, aMutedCopyThatCannotBeSavedGoesAndTheRecordingIsShownAgain) {
    saves = false;
    auto &model = recordAndStop();
    const QString original = model.filePath();
    model.toggleMuted();
    model.pressSave();
    asset.answer();
    time.runPending();
    ASSERT_TRUE(recorder->previewModel());
    EXPECT_EQ(preview().filePath(), original);
    EXPECT_TRUE(preview().isMuted()); // as the person wanted it
    EXPECT_THAT(temporaryFiles(), ElementsAre(QFileInfo(original).fileName()));
}

TEST_F(Preview, theEndOfTheProgramDuringAMutedCopyKeepsTheRecording) {
    auto &model = recordAndStop();
    const QString original = model.filePath();
    model.toggleMuted();
    model.pressSave();
    recorder.reset();
    asset.answer();
    time.runPending();
    EXPECT_TRUE(QFile::exists(original));
}

TEST_F(Preview, aWindowThatTheDesktopClosesKeepsTheFile) {
    const QString path = recordAndStop().filePath();
    fake(recorder->previewWindow()).closeFromOutside();
    time.runPending();
    EXPECT_FALSE(recorder->previewWindow());
    EXPECT_TRUE(QFile::exists(path));
    recorder->offer({}); // as when it is switched on
    time.runPending();
    ASSERT_TRUE(recorder->previewModel());
    EXPECT_EQ(preview().filePath(), path);
}

// What was recorded and not seen.

TEST_F(Preview, aFileCertainlyHoldsNoPictureWhenItIsEmptyOrAMovieThatWasOnlyBegun) {
    const auto mayHold = [this](const QByteArray &content) {
        QFile file(leftover("tavrine-rec-1.mp4"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        file.close();
        return mayHoldPictures(file.fileName());
    };
    const auto box = [](const char *type, int bytes) {
        QByteArray whole(bytes, '\0');
        whole[2] = char(bytes >> 8);
        whole[3] = char(bytes);
        return whole.replace(4, 4, type);
    };
    const QByteArray begun = box("ftyp", 24) + box("moov", 600) + box("free", 4000);
    EXPECT_FALSE(mayHold({}));
    EXPECT_FALSE(mayHold(begun));
    for (const qsizetype cut : {8, 20, 24, 27, 100, 623, 624, 1000})
        EXPECT_FALSE(mayHold(begun.first(cut))) << cut;
    EXPECT_FALSE(mayHold(begun + "\0\0\1"));
    EXPECT_TRUE(mayHold(begun + box("moof", 100)));
    EXPECT_TRUE(mayHold(begun + box("moof", 100).first(9)));
    EXPECT_TRUE(mayHold(box("ftyp", 24) + box("free", 600) + box("moov", 600) + box("mdat", 16)));
    EXPECT_TRUE(mayHold(QByteArray(5000, '\0'))); // whatever that is
    EXPECT_TRUE(mayHold("notes"));
    EXPECT_TRUE(mayHold("notes that somebody has made"));
    EXPECT_FALSE(mayHoldPictures(folders.temporary + text("/none.mp4")));
    EXPECT_FALSE(mayHoldPictures({}));
}

TEST_F(Preview, whatAnEarlierRunHasLeftIsShownOneAfterTheOther) {
    const QString first = leftover("tavrine-rec-1.mp4");
    const QString second = leftover("tavrine-rec-2.mp4");
    recorder->offer({first, folders.temporary + text("/gone.mp4"), second});
    time.runPending();
    ASSERT_TRUE(recorder->previewModel());
    EXPECT_EQ(preview().filePath(), first);
    EXPECT_EQ(windows.living(), 1);
    preview().pressDelete();
    time.runPending();
    ASSERT_TRUE(recorder->previewModel());
    EXPECT_EQ(preview().filePath(), second);
    preview().pressSave();
    time.runPending();
    EXPECT_FALSE(recorder->previewModel());
}

TEST_F(Preview, whatWasLeftWaitsForTheEndOfARecording) {
    record();
    const QString left = leftover("tavrine-rec-1.mp4");
    recorder->offer({left});
    time.advance(1min);
    EXPECT_FALSE(recorder->previewModel());
    recorder->restartRecording();
    time.advance(100ms);
    EXPECT_FALSE(recorder->previewModel());
    time.advance(100ms);
    ASSERT_TRUE(happens([this] { return recorder->isRecording(); }));
    recorder->cancelRecording();
    time.runPending();
    ASSERT_TRUE(recorder->previewModel());
    EXPECT_EQ(preview().filePath(), left);
}

TEST_F(Preview, whatWasLeftWaitsForTheEndOfASelection) {
    recorder->startScreenRecording();
    recorder->offer({leftover("tavrine-rec-1.mp4")});
    time.advance(1min);
    EXPECT_FALSE(recorder->previewModel());
    recorder->selectionModel()->cancel();
    time.runPending();
    EXPECT_TRUE(recorder->previewModel());
}

TEST_F(Preview, whatWasLeftIsNotShownWhileTheRecorderIsOff) {
    isEnabled = false;
    recorder->offer({leftover("tavrine-rec-1.mp4")});
    time.advance(1min);
    EXPECT_FALSE(recorder->previewModel());
    EXPECT_THAT(temporaryFiles(), testing::SizeIs(1));
}

TEST_F(Preview, aPreviewThatAnotherReplacesComesBack) {
    const QString first = recordAndStop().filePath();
    preview().setFileName(text("half a na"));
    record();
    recorder->stopRecording();
    ASSERT_TRUE(happens([&] { return preview().filePath() != first; }));
    time.runPending();
    EXPECT_EQ(windows.living(), 1);
    preview().pressSave();
    time.runPending();
    ASSERT_TRUE(recorder->previewModel());
    EXPECT_EQ(preview().filePath(), first);
    EXPECT_EQ(preview().fileName(), text("half a na"));
}

} // namespace
} // namespace tavrine
