#include "clipboard/SavedRecording.h"

#include "ManagerTest.h"
#include "base/Uuid.h"
#include "support/Eventually.h"

#include <QRegularExpression>

#include <sys/mount.h>
#include <sys/stat.h>

namespace tavrine {
namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

TEST(RecordingName, keepsLettersMarksAndDigitsOfEveryScript) {
    EXPECT_EQ(recordingBaseName(str("Größe2")), str("Größe2"));
    EXPECT_EQ(recordingBaseName(str("e\u0301tude")), str("e\u0301tude"));
    EXPECT_EQ(recordingBaseName(str("日本語")), str("日本語"));
    EXPECT_EQ(recordingBaseName(str("\U00010400½²")), str("\U00010400½²"));
}

TEST(RecordingName, endsAtAWholeCharacterWithinWhatAFilesNameMayHave) {
    EXPECT_EQ(recordingBaseName(QString(200, u'a')).size(), 200);
    EXPECT_EQ(recordingBaseName(QString(120, u'語')), QString(80, u'語')); // of three bytes each
    EXPECT_EQ(recordingBaseName(u'a' + QString(120, u'語')), u'a' + QString(79, u'語'));
}

TEST(RecordingName, putsOneUnderscoreForEachOtherCharacter) {
    EXPECT_EQ(recordingBaseName(str("my  demo")), str("my__demo"));
    EXPECT_EQ(recordingBaseName(str("a/b\\c..d")), str("a_b_c__d"));
    EXPECT_EQ(recordingBaseName(str("a_b")), str("a_b"));
    EXPECT_EQ(recordingBaseName(str("go \U0001F600")), str("go__"));
}

TEST(RecordingName, endsInAnUnderscoreWhenItEndsInAPunctuationMark) {
    EXPECT_EQ(recordingBaseName(str("Demo!")), str("Demo_"));
    EXPECT_EQ(recordingBaseName(str("!")), str("_"));
}

TEST(RecordingName, isTrimmedFirst) {
    EXPECT_EQ(recordingBaseName(str(" \n Demo \t")), str("Demo"));
}

TEST(RecordingName, isAFreshUuidWhenThereIsNone) {
    for (const std::optional<QString> &name :
         {std::optional<QString>(), std::optional(str("")), std::optional(str(" \n"))})
        EXPECT_TRUE(uuidFromString(recordingBaseName(name)));
}

TEST(RecordingName, aLoneSurrogateIsNoLetter) {
    EXPECT_EQ(recordingBaseName(QString(u'a') + QChar(0xD83D) + u'b'), str("a_b"));
}

class SavedRecording : public ManagerTest {
protected:
    void SetUp() override {
        ManagerTest::SetUp();
        start();
        write(source, "the movie");
    }
    [[nodiscard]] QStringList recordings() const { return QDir(quickShotsFolder).entryList(QDir::Files, QDir::Name); }
    [[nodiscard]] static QByteArray content(const QString &path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    /// Saves and answers the lines printed meanwhile.
    QString saveRecording(const std::optional<QString> &name) {
        CaptureStdout();
        std::optional<std::optional<QString>> told;
        manager->saveRecording(source, name, [&told](const auto &target) { told = target; });
        isTold = told.has_value();
        EXPECT_TRUE(test::eventually([&] {
            time.runPending();
            return told.has_value();
        }));
        answer = told.value_or(std::nullopt);
        return QString::fromStdString(GetCapturedStdout());
    }
    /// Moves the source to a file system of its own, and gives the folder.
    std::unique_ptr<QTemporaryDir> sendFarAway(const QByteArray &film) {
        auto memory = std::make_unique<QTemporaryDir>(str("/dev/shm/tavrine-test-XXXXXX"));
        source = memory->path() + str("/movie.mp4");
        write(source, film);
        struct stat here {};
        struct stat there {};
        EXPECT_EQ(stat(QFile::encodeName(home.path()).constData(), &here), 0);
        EXPECT_EQ(stat(QFile::encodeName(memory->path()).constData(), &there), 0);
        EXPECT_NE(here.st_dev, there.st_dev);
        return memory;
    }
    /// All files there, by whatever name.
    [[nodiscard]] QStringList everything() const {
        return QDir(quickShotsFolder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

    QString source = home.path() + str("/tmp/tavrine-rec-1.mp4");
    std::optional<QString> answer;
    bool isTold = false; ///< within the call
};

TEST_F(SavedRecording, isMovedRecordedCopiedShownAndTold) {
    const QString target = quickShotsFolder + str("/Demo.mp4");
    movies.setFrame(picture(8, 6));
    EXPECT_EQ(saveRecording(str("Demo")), str("Successfully saved screen recording to QuickShots: ") + target + u'\n');
    EXPECT_EQ(content(target), "the movie");
    EXPECT_EQ(answer, target);
    EXPECT_TRUE(isTold); // a new name takes no time
    EXPECT_FALSE(QFile::exists(source));
    ASSERT_EQ(historyContents(), QStringList{str("[Screen Recording] Demo")});
    EXPECT_EQ(manager->history().front().imageFileName, str("Demo.mp4"));
    movies.answer();
    EXPECT_TRUE(manager->thumbnailCache().object(str("Demo.mp4"))) << "made before a row asks";
    EXPECT_EQ(pasteboard.writtenFileUrls(), QList{QUrl::fromLocalFile(target)});
    EXPECT_EQ(workspace.shownFiles(), QList<QList<QUrl>>({{QUrl::fromLocalFile(target)}}));
}

TEST_F(SavedRecording, theCopyOfItsFileIsNotRecordedAsAPath) {
    saveRecording(str("Demo"));
    tick();
    EXPECT_EQ(contents(rows()), QStringList{str("[Screen Recording] Demo")});
}

TEST_F(SavedRecording, theCaptionHoldsTheNameAsItWasPassed) {
    saveRecording(str(" My demo! "));
    EXPECT_EQ(historyContents(), QStringList{str("[Screen Recording]  My demo! ")});
    EXPECT_EQ(recordings(), QStringList{str("My_demo_.mp4")});
}

TEST_F(SavedRecording, withoutANameTheCaptionSaysSo) {
    saveRecording(std::nullopt);
    write(source, "another");
    saveRecording(QString());
    EXPECT_EQ(historyContents(), QStringList(2, str("[Screen Recording] Screen Recording")));
    EXPECT_EQ(recordings().size(), 2);
}

TEST_F(SavedRecording, aNameOfWhiteSpaceNamesTheItemButNotTheFile) {
    saveRecording(str("  "));
    EXPECT_EQ(historyContents(), QStringList{str("[Screen Recording]   ")});
    EXPECT_EQ(recordings().front().size(), 36 + 4);
}

TEST_F(SavedRecording, keepsTheExtensionOfItsSource) {
    source = home.path() + str("/tmp/movie.mov");
    write(source);
    saveRecording(str("Demo"));
    EXPECT_EQ(recordings(), QStringList{str("Demo.mov")});
}

TEST_F(SavedRecording, withoutAnExtensionItBecomesMp4) {
    source = home.path() + str("/tmp/movie");
    write(source);
    saveRecording(str("Demo"));
    EXPECT_EQ(recordings(), QStringList{str("Demo.mp4")});
}

TEST_F(SavedRecording, aSecondOneOfTheSameNameGetsSixCharactersMore) {
    saveRecording(str("Demo"));
    write(source, "the second");
    time.advance(1s);
    saveRecording(str("Demo"));
    ASSERT_EQ(recordings().size(), 2);
    EXPECT_EQ(content(quickShotsFolder + str("/Demo.mp4")), "the movie");
    const QString second = manager->history().front().imageFileName.value();
    EXPECT_TRUE(QRegularExpression(str("^Demo_[0-9A-F]{6}\\.mp4$")).match(second).hasMatch()) << qPrintable(second);
    EXPECT_EQ(content(quickShotsFolder + u'/' + second), "the second");
}

TEST_F(SavedRecording, takesTheNameOfARecordingWhoseFileIsGoneAndKeepsItsOwn) {
    saveRecording(str("Demo"));
    QFile::remove(quickShotsFolder + str("/Demo.mp4"));
    write(source, "the second");
    saveRecording(str("Demo"));
    EXPECT_EQ(content(quickShotsFolder + str("/Demo.mp4")), "the second");
    EXPECT_EQ(rows().size(), 1U);
}

TEST_F(SavedRecording, goesToTheFolderThatThePersonChose) {
    const QString chosen = home.path() + str("/films");
    defaults.set(str("customSaveDirectoryPath"), chosen);
    saveRecording(str("Demo"));
    EXPECT_TRUE(QFile::exists(chosen + str("/Demo.mp4")));
}

TEST_F(SavedRecording, isCopiedFromAnotherFileSystemAndItsSourceRemoved) {
    const auto memory = sendFarAway("from afar");
    EXPECT_EQ(saveRecording(str("Demo")),
              str("moveItem failed (Invalid cross-device link), falling back to copyItem...\n"
                  "Successfully saved screen recording to QuickShots: ") +
                  quickShotsFolder + str("/Demo.mp4\n"));
    EXPECT_EQ(content(quickShotsFolder + str("/Demo.mp4")), "from afar");
    EXPECT_FALSE(isTold); // nobody waits for it
    EXPECT_EQ(answer, quickShotsFolder + str("/Demo.mp4"));
    EXPECT_FALSE(QFile::exists(source));
    EXPECT_EQ(rows().size(), 1U);
    EXPECT_EQ(everything(), QStringList{str("Demo.mp4")});
}

TEST_F(SavedRecording, twoOfOneNameOnTheirWayFromAfarAreTwoFiles) {
    const auto memory = sendFarAway("the first");
    const QString first = source;
    int told = 0;
    CaptureStdout();
    manager->saveRecording(first, str("Demo"), [&](const auto &) { ++told; });
    source = memory->path() + str("/second.mp4");
    write(source, "the second");
    manager->saveRecording(source, str("Demo"), [&](const auto &) { ++told; });
    EXPECT_TRUE(test::eventually([&] {
        time.runPending();
        return told == 2;
    }));
    GetCapturedStdout();
    ASSERT_EQ(recordings().size(), 2);
    EXPECT_EQ(content(quickShotsFolder + str("/Demo.mp4")), "the first");
    EXPECT_EQ(content(quickShotsFolder + u'/' + recordings()[1]), "the second");
}

TEST_F(SavedRecording, theEndOfTheProgramGivesUpACopyAndLeavesNothingOfIt) {
    const auto memory = sendFarAway(QByteArray(64 << 20, 'x'));
    CaptureStdout();
    manager->saveRecording(source, str("Demo"), [](const auto &) { ADD_FAILURE() << "nobody is there to hear it"; });
    quit();
    time.advance(1min);
    GetCapturedStdout();
    EXPECT_TRUE(QFile::exists(source));
    EXPECT_EQ(everything(), QStringList());
}

TEST_F(SavedRecording, aTargetWithoutRoomKeepsTheSourceAndLeavesNothing) {
    QTemporaryDir disk;
    const QByteArray name = QFile::encodeName(disk.path());
    if (::mount("none", name.constData(), "tmpfs", 0, "size=1m") != 0) {
        GTEST_LOG_(INFO) << "only root can make a small disk";
        return;
    }
    defaults.set(str("customSaveDirectoryPath"), disk.path());
    write(source, QByteArray(3 << 20, 'x'));
    EXPECT_TRUE(
        saveRecording(str("Demo")).contains(str("Failed to save screen recording file: No space left on device\n")));
    EXPECT_EQ(answer, std::nullopt);
    EXPECT_TRUE(QFile::exists(source));
    EXPECT_EQ(QDir(disk.path()).entryList(QDir::Files | QDir::Hidden), QStringList());
    EXPECT_TRUE(test::eventually([&] { return ::umount(name.constData()) == 0; }));
}

TEST_F(SavedRecording, whenItCanBeNeitherMovedNorCopiedItStaysAndNothingIsRecorded) {
    pasteboard.copyFromOutside(str("before"));
    defaults.set(str("customSaveDirectoryPath"), str("/proc")); // nobody makes a file there
    const QString printed = saveRecording(str("Demo"));
    EXPECT_TRUE(printed.startsWith(str("moveItem failed (Invalid cross-device link), falling back to copyItem...\n"
                                       "Failed to save screen recording file: ")))
        << qPrintable(printed);
    EXPECT_EQ(printed.count(u'\n'), 2);
    EXPECT_EQ(content(source), "the movie");
    EXPECT_EQ(answer, std::nullopt);
    EXPECT_TRUE(rows().empty());
    EXPECT_EQ(pasteboard.string(), str("before"));
    EXPECT_TRUE(workspace.shownFiles().isEmpty());
}

TEST_F(SavedRecording, whenItsSourceIsMissingNothingIsRecorded) {
    QFile::remove(source);
    const QString printed = saveRecording(str("Demo"));
    EXPECT_TRUE(printed.startsWith(str("moveItem failed (No such file or directory), falling back to copyItem...\n"
                                       "Failed to save screen recording file: ")))
        << qPrintable(printed);
    EXPECT_TRUE(rows().empty());
}

TEST_F(SavedRecording, withoutAFolderForRecordingsItStays) {
    quit();
    folders.documents.clear();
    write(home.path() + str("/Documents"), "a file in the way");
    start();
    saveRecording(str("Demo"));
    EXPECT_TRUE(QFile::exists(source));
    EXPECT_TRUE(rows().empty());
}

} // namespace
} // namespace tavrine
