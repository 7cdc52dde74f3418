// The music's rules, over fakes.
#include "LofiTest.h"

#include <cerrno>

namespace tavrine {
namespace {

using Cause = AudioPlayers::Failure::Cause;

// Start-up.

TEST_F(LofiTest, nothingPlaysAtLaunch) {
    writeTrack("track_1.mp3");
    manager.reset();
    manager = makeManager();
    settle();
    EXPECT_FALSE(manager->isPlaying());
    EXPECT_FALSE(manager->isDownloading());
    EXPECT_EQ(manager->downloadProgress(), 0);
    EXPECT_EQ(manager->customTrackName(), std::nullopt);
    EXPECT_TRUE(players.sounds().empty());
    EXPECT_TRUE(players.hasListener());
}

TEST_F(LofiTest, theImportedTrackIsKnownAgain) {
    preference::lofiCustomTrackName.set(defaults, text("Regen"));
    preference::lofiCustomTrackPath.set(defaults, writeTrack("custom_Regen.mp3"));
    EXPECT_EQ(makeManager()->customTrackName(), text("Regen"));
}

TEST_F(LofiTest, anImportedTrackWhoseFileHasGoneHasNoNameAndKeepsItsPreferences) {
    preference::lofiCustomTrackName.set(defaults, text("Regen"));
    preference::lofiCustomTrackPath.set(defaults, folder + text("/custom_Regen.mp3"));
    EXPECT_EQ(makeManager()->customTrackName(), std::nullopt);
    EXPECT_EQ(stored(preference::lofiCustomTrackName), text("Regen"));
    EXPECT_EQ(stored(preference::lofiCustomTrackPath), folder + text("/custom_Regen.mp3"));
}

TEST_F(LofiTest, aNameWithoutAPathOrOfAnotherTypeIsNone) {
    preference::lofiCustomTrackName.set(defaults, text("Regen"));
    EXPECT_EQ(makeManager()->customTrackName(), std::nullopt);
    preference::lofiCustomTrackPath.set(defaults, writeTrack("custom_Regen.mp3"));
    defaults.set(QLatin1String(preference::lofiCustomTrackName.key), 7);
    EXPECT_EQ(makeManager()->customTrackName(), std::nullopt);
}

// What to play.

TEST_F(LofiTest, theImportedTrackIsPlayedBeforeTheBuiltInOnes) {
    writeTrack("track_1.mp3");
    const QString custom = write(home.filePath(text("custom_Regen.mp3")));
    preference::lofiCustomTrackPath.set(defaults, custom);
    EXPECT_EQ(play(), "▶️ Playing lofi track: custom_Regen.mp3\n");
    EXPECT_THAT(players.heard(), ElementsAre(custom));
    EXPECT_TRUE(manager->isPlaying());
}

TEST_F(LofiTest, theFirstOfTheBuiltInTracksAtHandIsPlayed) {
    const QString first = writeTrack("track_1.mp3");
    writeTrack("track_2.mp3");
    EXPECT_EQ(play(), "✅ Found local track: track_1.mp3\n▶️ Playing lofi track: track_1.mp3\n");
    EXPECT_THAT(players.heard(), ElementsAre(first));
}

TEST_F(LofiTest, withTheFirstMissingTheSecondPlaysAndNothingIsFetched) {
    const QString second = writeTrack("track_2.mp3");
    EXPECT_EQ(play(), "✅ Found local track: track_2.mp3\n▶️ Playing lofi track: track_2.mp3\n");
    EXPECT_THAT(players.heard(), ElementsAre(second));
    EXPECT_THAT(downloads.begun(), IsEmpty());
}

TEST_F(LofiTest, anImportedTrackThatHasGoneFallsThroughAndKeepsItsPreference) {
    writeTrack("track_1.mp3");
    preference::lofiCustomTrackPath.set(defaults, home.filePath(text("gone.mp3")));
    EXPECT_THAT(play(), HasSubstr("▶️ Playing lofi track: track_1.mp3\n"));
    EXPECT_EQ(stored(preference::lofiCustomTrackPath), home.filePath(text("gone.mp3")));
}

TEST_F(LofiTest, aTrackLoopsForEver) {
    writeTrack("track_1.mp3");
    play();
    ASSERT_EQ(players.sounds().size(), 1U);
    EXPECT_EQ(players.sounds().front()->loops, -1);
    EXPECT_TRUE(players.sounds().front()->isPrepared);
    // The end of the file is none of the player's ends, so hours make no change.
    time.advance(Seconds(3 * 3600.0));
    EXPECT_TRUE(manager->isPlaying());
}

TEST_F(LofiTest, aTrackThatCannotBeDecodedGivesOneLine) {
    preference::lofiCustomTrackPath.set(defaults, writeTrack("custom_note.mp3"));
    players.failNext({Cause::contents, text("unrecognized file format")});
    EXPECT_EQ(play(), "❌ Failed to play audio: unrecognized file format\n");
    EXPECT_FALSE(manager->isPlaying());
    EXPECT_THAT(kept(), ElementsAre(text("custom_note.mp3"))); // the person's own is theirs to judge
}

TEST_F(LofiTest, aBuiltInTrackWithoutMusicInItIsFetchedAgain) {
    writeTrack("track_1.mp3");
    players.failNext({Cause::contents, text("no audio")});
    EXPECT_THAT(play(), HasSubstr("❌ Failed to play audio: no audio\n"));
    EXPECT_THAT(kept(), IsEmpty());
    play();
    EXPECT_TRUE(manager->isDownloading());
}

TEST_F(LofiTest, aBuiltInTrackThatCouldNotBeHeardIsKept) {
    writeTrack("track_1.mp3");
    players.failNext({Cause::circumstances, text("Connection refused")});
    EXPECT_THAT(play(), HasSubstr("❌ Failed to play audio: Connection refused\n"));
    EXPECT_THAT(kept(), ElementsAre(text("track_1.mp3")));
}

TEST_F(LofiTest, aPlayerThatDiesUnderWayCostsTheMusicAndNoMore) {
    writeTrack("track_1.mp3");
    play();
    EXPECT_EQ(printedBy([this] { players.endSound(text("the player: it ended unexpectedly")); }),
              "❌ Failed to play audio: the player: it ended unexpectedly\n");
    EXPECT_FALSE(manager->isPlaying());
    play();
    EXPECT_TRUE(manager->isPlaying());
}

TEST_F(LofiTest, aPlayThatFailsLeavesNothingSounding) {
    writeTrack("track_1.mp3");
    play();
    players.failNext({Cause::circumstances, text("no")});
    play();
    EXPECT_FALSE(manager->isPlaying());
    EXPECT_THAT(players.heard(), IsEmpty());
}

// Pause and stop.

TEST_F(LofiTest, pauseAndPlayRestartsTheTrackAtItsBeginning) {
    writeTrack("track_1.mp3");
    play();
    EXPECT_EQ(printedBy([this] { manager->pause(); }), "⏸️ Lofi playback paused\n");
    EXPECT_FALSE(manager->isPlaying());
    EXPECT_THAT(players.heard(), IsEmpty());
    play();
    ASSERT_EQ(players.sounds().size(), 2U); // a new player, so from 0:00
    EXPECT_TRUE(players.sounds().front()->isDropped);
    EXPECT_TRUE(players.sounds().back()->isHeard);
}

TEST_F(LofiTest, stopEndsTheMusicAndDropsThePlayer) {
    writeTrack("track_1.mp3");
    play();
    EXPECT_EQ(printedBy([this] { manager->stop(); }), "⏹️ Lofi playback stopped\n");
    EXPECT_FALSE(manager->isPlaying());
    EXPECT_TRUE(players.sounds().front()->isDropped);
}

TEST_F(LofiTest, pauseAndStopWithoutMusicPrintTheirLines) {
    EXPECT_EQ(printedBy([this] { manager->pause(); }), "⏸️ Lofi playback paused\n");
    EXPECT_EQ(printedBy([this] { manager->stop(); }), "⏹️ Lofi playback stopped\n");
}

TEST_F(LofiTest, aStopBeforeThePlayerIsMadeKeepsItFromSounding) {
    writeTrack("track_1.mp3");
    players.beSlow();
    play();
    manager->stop();
    EXPECT_EQ(printedBy([this] { players.answerAll(); }), "");
    EXPECT_FALSE(manager->isPlaying());
    EXPECT_THAT(players.heard(), IsEmpty());
}

TEST_F(LofiTest, ofTwoPlaysInARowTheLaterOneSounds) {
    writeTrack("track_1.mp3");
    players.beSlow();
    play();
    play();
    EXPECT_EQ(printedBy([this] { players.answerAll(); }), "▶️ Playing lofi track: track_1.mp3\n");
    ASSERT_EQ(players.sounds().size(), 2U);
    EXPECT_TRUE(players.sounds().front()->isDropped);
    EXPECT_EQ(players.heard().size(), 1);
}

TEST_F(LofiTest, aTrackThatEndsWhileAnotherIsMadeLeavesThatOneToCome) {
    writeTrack("track_1.mp3");
    play();
    players.beSlow();
    play();
    printedBy([this] { players.endSound(text("crashed")); });
    EXPECT_FALSE(manager->isPlaying());
    EXPECT_TRUE(manager->isStarting());
    printedBy([this] { players.answerAll(); });
    EXPECT_TRUE(manager->isPlaying());
    EXPECT_FALSE(manager->isStarting());
}

TEST_F(LofiTest, aPlayerThatIsMadeAfterTheManagerIsDropped) {
    writeTrack("track_1.mp3");
    players.beSlow();
    play();
    manager.reset();
    players.answerAll();
    settle();
    EXPECT_THAT(players.heard(), IsEmpty());
    EXPECT_FALSE(players.hasListener());
}

// The output device.

TEST_F(LofiTest, removingTheHeadphonesPausesAtOnceAndPluggingThemBackInKeepsItPaused) {
    writeTrack("track_1.mp3");
    play();
    EXPECT_EQ(printedBy([this] { players.changeOutput(); }),
              "🎧 Audio output device changed (e.g. Bluetooth disconnected). Pausing Lo-Fi playback.\n"
              "⏸️ Lofi playback paused\n");
    EXPECT_FALSE(manager->isPlaying());
    EXPECT_EQ(printedBy([this] { players.changeOutput(); }), "");
    time.advance(Seconds(60));
    EXPECT_FALSE(manager->isPlaying());
    EXPECT_THAT(players.heard(), IsEmpty());
}

// Downloads.

TEST_F(LofiTest, withoutATrackOneOfTheTwoIsFetchedAndThenPlayed) {
    for (const int track : {0, 1}) {
        SCOPED_TRACE(track);
        choice = track;
        const std::string name = track == 0 ? "track_1.mp3" : "track_2.mp3";
        EXPECT_EQ(play(), "⬇️ Starting download: " + name + "\n");
        EXPECT_EQ(downloads.begun().back().fileName().toStdString(), name);
        EXPECT_EQ(offered, 2);
        EXPECT_TRUE(manager->isDownloading());
        EXPECT_FALSE(manager->isPlaying());
        EXPECT_EQ(printedBy([this] { downloads.finish("music"); }),
                  "✅ Track downloaded successfully: " + name + "\n▶️ Playing lofi track: " + name + "\n");
        EXPECT_FALSE(manager->isDownloading());
        EXPECT_EQ(manager->downloadProgress(), 1);
        EXPECT_TRUE(manager->isPlaying());
        EXPECT_EQ(contentsOf(folder + QLatin1Char('/') + QString::fromStdString(name)), "music");
        QFile::remove(folder + QLatin1Char('/') + QString::fromStdString(name));
        manager->stop();
    }
}

TEST_F(LofiTest, pressingPlayTwiceDuringADownloadWarnsAndStartsNoSecondOne) {
    play();
    EXPECT_EQ(play(), "⚠️ Already downloading a track\n");
    EXPECT_EQ(play(), "⚠️ Already downloading a track\n");
    EXPECT_EQ(downloads.begun().size(), 1);
}

TEST_F(LofiTest, progressIsThePartThatHasArrived) {
    play();
    downloads.progress(1, 4);
    settle();
    EXPECT_EQ(manager->downloadProgress(), 0.25);
    downloads.progress(2, 0); // the server does not say how much there is
    settle();
    EXPECT_EQ(manager->downloadProgress(), 0.25);
    downloads.progress(9, 4); // or lies
    settle();
    EXPECT_EQ(manager->downloadProgress(), 1);
    EXPECT_TRUE(manager->isDownloading());
}

TEST_F(LofiTest, aFailedDownloadSaysSoAndTheNextPlayTriesAgain) {
    play();
    downloads.progress(1, 2);
    EXPECT_EQ(printedBy([this] { downloads.fail(text("Could not resolve host: example.org")); }),
              "❌ Download failed: Could not resolve host: example.org\n");
    EXPECT_FALSE(manager->isDownloading());
    EXPECT_EQ(manager->downloadProgress(), 0);
    EXPECT_FALSE(manager->isPlaying());
    EXPECT_THAT(play(), HasSubstr("⬇️ Starting download: "));
    EXPECT_EQ(downloads.begun().size(), 2);
}

TEST_F(LofiTest, aTrackThatCannotBeSavedIsNotPlayed) {
    play();
    downloads.failNextMove(ENOSPC);
    EXPECT_EQ(printedBy([this] { downloads.finish("music"); }),
              "❌ Failed to save downloaded track: No space left on device\n");
    EXPECT_FALSE(manager->isDownloading());
    EXPECT_EQ(manager->downloadProgress(), 0);
    EXPECT_FALSE(manager->isPlaying());
    EXPECT_THAT(kept(), IsEmpty());
}

TEST_F(LofiTest, aDownloadedPageThatIsNoMusicIsNotFoundAgain) {
    play();
    players.failNext({Cause::contents, text("unrecognized file format")});
    EXPECT_THAT(printedBy([this] { downloads.finish("<html>Sign in</html>"); }),
                HasSubstr("❌ Failed to play audio: unrecognized file format\n"));
    EXPECT_FALSE(manager->isPlaying());
    EXPECT_THAT(play(), HasSubstr("⬇️ Starting download: "));
}

TEST_F(LofiTest, aStopLeavesTheDownloadGoing) {
    play();
    manager->stop();
    EXPECT_TRUE(manager->isDownloading());
    downloads.finish("music");
    settle();
    EXPECT_TRUE(manager->isPlaying());
}

TEST_F(LofiTest, aDownloadThatEndsWhileTheToolIsOffIsKeptAndNotPlayed) {
    play();
    mayPlay = false;
    EXPECT_EQ(printedBy([this] { downloads.finish("music"); }), "✅ Track downloaded successfully: track_1.mp3\n");
    EXPECT_FALSE(manager->isDownloading());
    EXPECT_FALSE(manager->isPlaying());
    EXPECT_THAT(kept(), ElementsAre(text("track_1.mp3")));
}

TEST_F(LofiTest, aDownloadThatEndsWhileAnotherTrackPlaysTakesItsPlace) {
    play();
    const QString other = write(home.filePath(text("other.mp3")));
    preference::lofiCustomTrackPath.set(defaults, other);
    play();
    ASSERT_THAT(players.heard(), ElementsAre(other));
    printedBy([this] { downloads.finish("music"); });
    EXPECT_THAT(players.heard(), ElementsAre(folder + text("/track_1.mp3")));
    EXPECT_TRUE(manager->isPlaying());
}

TEST_F(LofiTest, aDownloadEndsWithTheManager) {
    play();
    EXPECT_TRUE(downloads.isReceiving());
    manager.reset();
    EXPECT_FALSE(downloads.isReceiving());
}

TEST_F(LofiTest, aFolderThatCannotBeMadeIsNoMatterUntilATrackArrives) {
    write(home.filePath(text("Tavrine")));
    EXPECT_EQ(play(), "⬇️ Starting download: track_1.mp3\n");
    EXPECT_THAT(printedBy([this] { downloads.finish("music"); }),
                HasSubstr("❌ Failed to save downloaded track: No such file or directory\n"));
}

TEST_F(LofiTest, everyChangeIsPublishedAndNothingElse) {
    writeTrack("track_1.mp3");
    int changes = 0;
    QObject::connect(manager.get(), &LofiManager::changed, manager.get(), [&] { ++changes; });
    play();
    EXPECT_EQ(changes, 2) << "asked for, and heard";
    manager->pause();
    EXPECT_EQ(changes, 3);
    manager->pause();
    manager->stop();
    EXPECT_EQ(changes, 3);
}

} // namespace
} // namespace tavrine
