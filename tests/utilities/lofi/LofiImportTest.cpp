// The person's own track: asked for, copied, kept, forgotten. Copies are made for real.
#include "LofiTest.h"
#include "support/FileSizeLimit.h"
#include "support/ReadOnlyFolder.h"
#include "utilities/lofi/TrackCopy.h"

#include <atomic>
#include <cerrno>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrine {
namespace {

class LofiImportTest : public LofiTest {
protected:
    QString mine(const char *name, const QByteArray &contents = "mine") {
        return write(home.filePath(text("Music/")) + text(name), contents);
    }
};

TEST_F(LofiImportTest, thePanelAsksForOneSoundFile) {
    manager->chooseCustomTrack();
    ASSERT_EQ(panels.openPanels().size(), 1);
    const OpenPanel &panel = panels.openPanels().front();
    EXPECT_EQ(panel.title, text("Select Custom Lo-Fi Audio File"));
    EXPECT_FALSE(panel.choosesDirectories);
    for (const char *suffix : {"*.mp3", "*.m4a", "*.wav", "*.aiff", "*.aif", "*.flac", "*.ogg", "*.opus"})
        EXPECT_TRUE(panel.filter.contains(text(suffix))) << suffix;
    panels.cancel();
    settle();
    EXPECT_THAT(kept(), IsEmpty());
}

TEST_F(LofiImportTest, aChosenFileIsCopiedAndRemembered) {
    const QString file = mine("Rainy.Day.mp3");
    EXPECT_EQ(printedBy([&] {
                  manager->chooseCustomTrack();
                  panels.choose(file);
                  time.runPending();
              }),
              "✅ Imported custom Lo-Fi track: Rainy.Day\n");
    EXPECT_EQ(stored(preference::lofiCustomTrackPath), folder + text("/custom_Rainy.Day.mp3"));
    EXPECT_EQ(stored(preference::lofiCustomTrackName), text("Rainy.Day"));
    EXPECT_EQ(manager->customTrackName(), text("Rainy.Day"));
    EXPECT_FALSE(manager->isPlaying());
    QFile::remove(file);
    EXPECT_THAT(play(), HasSubstr("▶️ Playing lofi track: custom_Rainy.Day.mp3\n"));
    EXPECT_EQ(QFileInfo(folder + text("/custom_Rainy.Day.mp3")).permissions() & 0x77, QFileDevice::Permissions());
}

TEST_F(LofiImportTest, anImportedFileOfTheSameNameReplacesTheEarlierCopy) {
    import(mine("a.mp3", "first"));
    import(write(home.filePath(text("Other/a.mp3")), "second"));
    EXPECT_THAT(kept(), ElementsAre(text("custom_a.mp3")));
    EXPECT_EQ(contentsOf(folder + text("/custom_a.mp3")), "second");
}

TEST_F(LofiImportTest, whilePlayingTheNewTrackSoundsAtOnce) {
    writeTrack("track_1.mp3");
    play();
    EXPECT_EQ(import(mine("a.mp3")), "✅ Imported custom Lo-Fi track: a\n⏹️ Lofi playback stopped\n"
                                     "▶️ Playing lofi track: custom_a.mp3\n");
    EXPECT_THAT(players.heard(), ElementsAre(folder + text("/custom_a.mp3")));
}

TEST_F(LofiImportTest, beforeAPlayIsHeardTheNewTrackTakesItsPlace) {
    writeTrack("track_1.mp3");
    players.beSlow();
    play();
    import(mine("a.mp3"));
    printedBy([this] { players.answerAll(); });
    EXPECT_THAT(players.heard(), ElementsAre(folder + text("/custom_a.mp3")));
}

TEST_F(LofiImportTest, aResetBeforeAPlayIsHeardGoesOnWithABuiltInTrack) {
    const QString builtIn = writeTrack("track_2.mp3");
    import(mine("a.mp3"));
    players.beSlow();
    play();
    printedBy([this] { manager->resetToDefaultTrack(); });
    printedBy([this] { players.answerAll(); });
    EXPECT_THAT(players.heard(), ElementsAre(builtIn));
    EXPECT_TRUE(manager->isPlaying());
}

TEST_F(LofiImportTest, namesOfEveryScriptAreKept) {
    for (const char *name : {"雨の日.mp3", "мелодия.ogg", "مطر.wav", "🎧 lo-fi.flac", "a∕b.mp3", "-rf.mp3", "%20.mp3",
                             "new\nline.mp3", "Ünïcödé.m4a", ".hidden", "no extension"}) {
        SCOPED_TRACE(name);
        import(mine(name, name));
        EXPECT_EQ(stored(preference::lofiCustomTrackPath), folder + text("/custom_") + text(name));
        EXPECT_EQ(contentsOf(stored(preference::lofiCustomTrackPath)), name);
    }
    EXPECT_EQ(manager->customTrackName(), text("no extension"));
}

TEST_F(LofiImportTest, theLongestNameThatAFileCanHaveStillFits) {
    for (const QString &stem : {QString(251, u'x'), QString(83, u'雨'), QString(62, u'x') + text("🎧").repeated(47)}) {
        const QString name = stem + text(".mp3");
        const QString file = write(home.filePath(text("Music/")) + name);
        ASSERT_TRUE(QFile::exists(file));
        EXPECT_THAT(import(file), HasSubstr("✅ Imported custom Lo-Fi track: "));
        const QString copy = QFileInfo(stored(preference::lofiCustomTrackPath)).fileName();
        EXPECT_LE(QFile::encodeName(copy).size(), 255);
        EXPECT_TRUE(copy.startsWith(text("custom_") + stem.left(10)) && copy.endsWith(text(".mp3")));
        EXPECT_EQ(manager->customTrackName(), stem);
        EXPECT_TRUE(QFile::exists(folder + QLatin1Char('/') + copy));
    }
}

TEST_F(LofiImportTest, anEmptyFileIsImportedAndFailsToPlay) {
    EXPECT_EQ(import(mine("empty.mp3", {})), "✅ Imported custom Lo-Fi track: empty\n");
    EXPECT_EQ(QFileInfo(folder + text("/custom_empty.mp3")).size(), 0);
}

TEST_F(LofiImportTest, theCopyItselfCanBeChosen) {
    import(mine("a.mp3", "mine"));
    import(folder + text("/custom_a.mp3"));
    EXPECT_EQ(contentsOf(stored(preference::lofiCustomTrackPath)), "mine");
    EXPECT_EQ(manager->customTrackName(), text("custom_a"));
    // A link to the copy, whose own copy would take its place.
    QFile::link(folder + text("/custom_a.mp3"), home.filePath(text("a.mp3")));
    import(home.filePath(text("a.mp3")));
    EXPECT_EQ(stored(preference::lofiCustomTrackPath), folder + text("/custom_a.mp3"));
    EXPECT_EQ(contentsOf(folder + text("/custom_a.mp3")), "mine");
}

TEST_F(LofiImportTest, aCopyThatFailsLeavesTheEarlierChoice) {
    import(mine("a.mp3", "earlier"));
    const QString gone = mine("b/a.mp3", "later");
    QFile::remove(gone);
    EXPECT_EQ(import(gone), "❌ Failed to copy custom audio track: No such file or directory\n");
    EXPECT_EQ(import(home.filePath(text("Music"))), "❌ Failed to copy custom audio track: Is a directory\n");
    EXPECT_EQ(manager->customTrackName(), text("a"));
    EXPECT_EQ(contentsOf(stored(preference::lofiCustomTrackPath)), "earlier");
    EXPECT_THAT(kept(), ElementsAre(text("custom_a.mp3")));
}

TEST_F(LofiImportTest, whatIsNoPlainFileIsNotWaitedFor) {
    const QString pipe = home.filePath(text("pipe.mp3"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    EXPECT_THAT(import(pipe), HasSubstr("❌ Failed to copy custom audio track: "));
    EXPECT_THAT(kept(), IsEmpty());
}

TEST_F(LofiImportTest, aDiskThatIsFullHalfwayLeavesTheEarlierChoiceAndNoPieceOfACopy) {
    import(mine("a.mp3", "earlier"));
    const QString file = mine("b/a.mp3", QByteArray(4 << 20, 'x'));
    std::optional<FileSizeLimit> small(1 << 20); // the copy breaks off as on a full disk
    const std::string printed = import(file);
    small.reset();
    EXPECT_EQ(printed, "❌ Failed to copy custom audio track: File too large\n");
    EXPECT_EQ(manager->customTrackName(), text("a"));
    EXPECT_EQ(contentsOf(stored(preference::lofiCustomTrackPath)), "earlier");
    EXPECT_THAT(kept(), ElementsAre(text("custom_a.mp3")));
}

TEST_F(LofiImportTest, aFolderThatCannotBeWrittenLeavesTheEarlierChoice) {
    import(mine("a.mp3", "earlier"));
    const QString file = mine("b.mp3");
    const ReadOnlyFolder sealed(folder);
    EXPECT_EQ(import(file), "❌ Failed to copy custom audio track: Permission denied\n");
    EXPECT_EQ(manager->customTrackName(), text("a"));
    EXPECT_THAT(kept(), ElementsAre(text("custom_a.mp3")));
}

TEST_F(LofiImportTest, aLargeFileIsCopiedWhileTheMainThreadGoesOn) {
    const QString file = mine("long.wav");
    ASSERT_EQ(::truncate(QFile::encodeName(file).constData(), off_t(2) << 30), 0); // two gibibytes, of holes
    // The queue is busy; the call returns, and nothing is there before the copy is whole.
    std::atomic<bool> isHeld = true;
    queue.async([&] { isHeld.wait(true); });
    manager->importCustomTrack(file);
    time.runPending();
    EXPECT_THAT(kept(), IsEmpty());
    EXPECT_EQ(manager->customTrackName(), std::nullopt);
    manager->resetToDefaultTrack(); // and the person thinks better of it
    isHeld = false;
    isHeld.notify_all();
    settle();
    EXPECT_THAT(kept(), IsEmpty());
    EXPECT_EQ(manager->customTrackName(), std::nullopt);
}

TEST_F(LofiImportTest, aCopyIsWholeOrNotThere) {
    const QString file = mine("a.wav", QByteArray(20 << 20, 'a'));
    const QString to = home.filePath(text("copy"));
    int asked = 0;
    EXPECT_EQ(copyWholeFile(file, to, [&] { return ++asked > 2; }).error(), ECANCELED);
    EXPECT_FALSE(QFile::exists(to));
    EXPECT_TRUE(copyWholeFile(file, to, [] { return false; }));
    EXPECT_EQ(contentsOf(to), QByteArray(20 << 20, 'a'));
}

TEST_F(LofiImportTest, aFileOfTheKernelsOwnIsCopiedByHand) {
    const QString to = home.filePath(text("copy"));
    EXPECT_TRUE(copyWholeFile(text("/proc/version"), to, [] { return false; }));
    EXPECT_THAT(contentsOf(to).toStdString(), HasSubstr("Linux"));
}

// Back to the built-in tracks.

TEST_F(LofiImportTest, aResetForgetsTheTrackAndRemovesItsCopy) {
    import(mine("a.mp3"));
    manager->resetToDefaultTrack();
    EXPECT_EQ(manager->customTrackName(), std::nullopt);
    EXPECT_FALSE(defaults.contains(QLatin1String(preference::lofiCustomTrackPath.key)));
    EXPECT_FALSE(defaults.contains(QLatin1String(preference::lofiCustomTrackName.key)));
    EXPECT_THAT(kept(), IsEmpty());
    EXPECT_TRUE(QFile::exists(home.filePath(text("Music/a.mp3"))));
}

TEST_F(LofiImportTest, aResetWhilePlayingGoesOnWithABuiltInTrack) {
    writeTrack("track_2.mp3");
    import(mine("a.mp3"));
    play();
    EXPECT_EQ(
        printedBy([this] { manager->resetToDefaultTrack(); }),
        "⏹️ Lofi playback stopped\n✅ Found local track: track_2.mp3\n▶️ Playing lofi track: track_2.mp3\n");
}

TEST_F(LofiImportTest, aResetTakesBackAnImportThatHasJustBeenCopied) {
    manager->importCustomTrack(mine("a.mp3"));
    queue.sync([] {});
    EXPECT_THAT(kept(), ElementsAre(text("custom_a.mp3")));
    EXPECT_EQ(printedBy([this] { manager->resetToDefaultTrack(); }), "");
    EXPECT_EQ(manager->customTrackName(), std::nullopt);
    EXPECT_THAT(kept(), IsEmpty());
}

TEST_F(LofiImportTest, aResetWithoutATrackDoesNothing) {
    EXPECT_EQ(printedBy([this] { manager->resetToDefaultTrack(); }), "");
    import(mine("a.mp3"));
    QFile::remove(folder + text("/custom_a.mp3"));
    EXPECT_EQ(printedBy([this] { manager->resetToDefaultTrack(); }), "");
    EXPECT_EQ(manager->customTrackName(), std::nullopt);
}

TEST_F(LofiImportTest, anImportUnderWayEndsWithTheManager) {
    std::atomic<bool> isHeld = true;
    queue.async([&] { isHeld.wait(true); });
    manager->importCustomTrack(mine("a.mp3"));
    manager.reset();
    isHeld = false;
    isHeld.notify_all();
    settle();
    EXPECT_THAT(kept(), IsEmpty());
}

} // namespace
} // namespace tavrine
