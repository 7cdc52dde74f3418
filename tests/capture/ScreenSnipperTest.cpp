#include "capture/ScreenSnipper.h"

#include "SnipTest.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <sys/stat.h>

namespace tavrine {
namespace {

class ScreenSnipperTest : public SnipTest {
protected:
    ScreenSnipperTest() { flow.reset(); } // the snipper alone
    /// The tool leaves a picture and ends.
    void capture(qsizetype index, const QImage &image = picture(), int status = 0) {
        ASSERT_TRUE(image.save(tool(index).arguments().last()));
        tool(index).finish(status);
        time.runPending();
    }
    void leaveAndEnd(const QByteArray &content, int status = 0) {
        snipper.startCapture();
        writeFile(tool(launcher.tasks().size() - 1).arguments().last(), content);
        tool(launcher.tasks().size() - 1).finish(status);
        time.runPending();
    }
    static QByteArray png(const QImage &image) {
        QTemporaryDir folder;
        image.save(folder.filePath(text("a.png")));
        QFile file(folder.filePath(text("a.png")));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
};

TEST_F(ScreenSnipperTest, aCaptureWithSoundHasExactlyTwoArguments) {
    snipper.startCapture();
    EXPECT_EQ(tool(0).launchPath(), text("/usr/sbin/screencapture"));
    ASSERT_EQ(tool(0).arguments().size(), 2);
    EXPECT_EQ(tool(0).arguments().at(0), text("-i"));
    EXPECT_EQ(tool(0).arguments().at(1), *snipper.currentCapturePath());
}

TEST_F(ScreenSnipperTest, aCaptureHasTheScaleThatTheToolWrote) {
    QImage image = picture(400, 300);
    image.setDotsPerMeterX(7559);
    image.setDotsPerMeterY(7559);
    snipper.startCapture();
    capture(0, image);
    ASSERT_EQ(captured.size(), 1);
    EXPECT_EQ(captured.first().devicePixelRatio(), 2);
    EXPECT_EQ(captured.first().size(), QSize(400, 300));
}

TEST_F(ScreenSnipperTest, aMutedCaptureHasExactlyThreeArguments) {
    defaults.set(text("snipMuteSound"), true);
    snipper.startCapture();
    ASSERT_EQ(tool(0).arguments().size(), 3);
    EXPECT_EQ(tool(0).arguments().at(0), text("-i"));
    EXPECT_EQ(tool(0).arguments().at(1), text("-x"));
    EXPECT_EQ(tool(0).arguments().at(2), *snipper.currentCapturePath());
}

TEST_F(ScreenSnipperTest, theSoundIsAskedForAtEachCaptureAndOnlyABooleanCounts) {
    defaults.set(text("snipMuteSound"), text("YES"));
    snipper.startCapture();
    EXPECT_EQ(tool(0).arguments().size(), 2);
    defaults.set(text("snipMuteSound"), true);
    snipper.startCapture();
    EXPECT_EQ(tool(1).arguments().size(), 3);
}

TEST_F(ScreenSnipperTest, theFileIsANewOneInThePrivateTemporaryFolder) {
    snipper.startCapture();
    snipper.startCapture();
    const QString first = tool(0).arguments().last();
    const QString second = tool(1).arguments().last();
    EXPECT_NE(first, second);
    EXPECT_EQ(QFileInfo(first).absolutePath(), folders.temporary);
    EXPECT_THAT(QFileInfo(first).fileName().toStdString(),
                testing::MatchesRegex("tavrine-snip-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\.png"));
    struct stat status {};
    ASSERT_EQ(stat(QFile::encodeName(folders.temporary).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700U);
}

TEST_F(ScreenSnipperTest, aPictureIsHandedOverAndItsFileRemoved) {
    snipper.startCapture();
    EXPECT_TRUE(snipper.isSnipping());
    capture(0, picture(7, 5, Qt::blue));
    ASSERT_EQ(captured.size(), 1);
    EXPECT_EQ(captured.first().size(), QSize(7, 5));
    EXPECT_EQ(captured.first().pixelColor(3, 3), QColor(Qt::blue));
    EXPECT_THAT(temporaryFiles(), IsEmpty());
    EXPECT_FALSE(snipper.isSnipping());
    EXPECT_EQ(snipper.currentCapturePath(), std::nullopt);
}

TEST_F(ScreenSnipperTest, aPictureOfOnePixelIsACapture) {
    snipper.startCapture();
    capture(0, picture(1, 1));
    ASSERT_EQ(captured.size(), 1);
    EXPECT_EQ(captured.first().size(), QSize(1, 1));
}

TEST_F(ScreenSnipperTest, theFileStandsUntilThePictureHasBeenHandedOver) {
    QStringList files;
    snipper.setOnSnipComplete([&](const QImage &) { files = temporaryFiles(); });
    snipper.startCapture();
    capture(0);
    EXPECT_EQ(files.size(), 1);
}

TEST_F(ScreenSnipperTest, nothingComesBeforeTheMainQueueTurns) {
    snipper.startCapture();
    ASSERT_TRUE(picture().save(tool(0).arguments().last()));
    tool(0).finish(0);
    EXPECT_THAT(captured, IsEmpty());
    EXPECT_TRUE(snipper.isSnipping());
    time.runPending();
    EXPECT_EQ(captured.size(), 1);
}

TEST_F(ScreenSnipperTest, aCancelledCaptureIsSilent) {
    for (const int status : {0, 1}) {
        snipper.startCapture();
        tool(launcher.tasks().size() - 1).finish(status); // no file
        time.runPending();
        EXPECT_FALSE(snipper.isSnipping());
        EXPECT_EQ(snipper.currentCapturePath(), std::nullopt);
    }
    EXPECT_THAT(captured, IsEmpty());
}

TEST_F(ScreenSnipperTest, aToolThatFailsLeavesNothingEvenWithAPicture) {
    for (const int status : {1, 128 + 9, 128 + 15, 255}) {
        leaveAndEnd(png(picture()), status);
        EXPECT_THAT(temporaryFiles(), IsEmpty()) << status;
    }
    EXPECT_THAT(captured, IsEmpty());
}

TEST_F(ScreenSnipperTest, whatIsNoPictureIsRemovedInSilence) {
    const QByteArray whole = png(picture(400, 300));
    QByteArray broken = whole;
    broken[40] = char(broken[40] ^ 0x55);
    for (const QByteArray &content :
         {QByteArray(), QByteArray("no picture"), whole.left(20), whole.left(whole.size() / 2), broken}) {
        leaveAndEnd(content);
        EXPECT_THAT(captured, IsEmpty()) << content.size();
        EXPECT_THAT(temporaryFiles(), IsEmpty());
        EXPECT_FALSE(snipper.isSnipping());
    }
}

TEST_F(ScreenSnipperTest, aPipeInPlaceOfTheFileIsNotWaitedFor) {
    snipper.startCapture();
    ASSERT_EQ(mkfifo(QFile::encodeName(tool(0).arguments().last()).constData(), 0600), 0);
    tool(0).finish(0);
    time.runPending();
    EXPECT_THAT(captured, IsEmpty());
    EXPECT_FALSE(QFileInfo::exists(tool(0).arguments().last()));
}

TEST_F(ScreenSnipperTest, aFolderInPlaceOfTheFileIsNoPicture) {
    snipper.startCapture();
    ASSERT_TRUE(QDir().mkpath(tool(0).arguments().last()));
    tool(0).finish(0);
    time.runPending();
    EXPECT_THAT(captured, IsEmpty());
    EXPECT_FALSE(snipper.isSnipping());
}

TEST_F(ScreenSnipperTest, aToolThatCannotBeStartedResetsTheState) {
    launcher.failNextLaunch(text("no such file"));
    EXPECT_EQ(outputOf([this] { snipper.startCapture(); }), "");
    EXPECT_FALSE(snipper.isSnipping());
    EXPECT_EQ(snipper.currentCapturePath(), std::nullopt);
    snipper.startCapture();
    capture(1);
    EXPECT_EQ(captured.size(), 1);
}

TEST_F(ScreenSnipperTest, aToolThatCannotBeStartedLeavesNoFile) {
    QString path;
    launcher.failNextLaunch(text("ended at once"), [&path](const FakeTaskLauncher::FakeTask &task) {
        path = task.arguments().last();
        writeFile(path, "half a picture");
        ASSERT_TRUE(QFileInfo::exists(path));
    });
    snipper.startCapture();
    EXPECT_FALSE(path.isEmpty());
    EXPECT_FALSE(QFileInfo::exists(path));
}

TEST_F(ScreenSnipperTest, withoutATemporaryFolderACaptureEndsInSilence) {
    writeFile(home.filePath(text(".cache")), "in the way");
    snipper.startCapture();
    tool(0).finish(1);
    time.runPending();
    EXPECT_FALSE(snipper.isSnipping());
    EXPECT_THAT(captured, IsEmpty());
}

TEST_F(ScreenSnipperTest, aSecondCaptureEndsTheFirstTool) {
    snipper.startCapture();
    snipper.startCapture();
    EXPECT_TRUE(tool(0).isTerminated());
    EXPECT_FALSE(tool(1).isTerminated());
    EXPECT_TRUE(tool(1).isRunning());
}

TEST_F(ScreenSnipperTest, theEndOfTheFirstToolResetsTheStateWhileTheSecondRuns) {
    snipper.startCapture();
    snipper.startCapture();
    writeFile(tool(0).arguments().last(), "half");
    launcher.deliverSignals();
    time.runPending();
    EXPECT_FALSE(snipper.isSnipping());
    EXPECT_EQ(snipper.currentCapturePath(), std::nullopt);
    EXPECT_FALSE(QFileInfo::exists(tool(0).arguments().last()));
    EXPECT_TRUE(tool(1).isRunning());
    // The task of the second has been dropped with the first, so a third does not end it.
    snipper.startCapture();
    EXPECT_FALSE(tool(1).isTerminated());
    capture(1);
    EXPECT_EQ(captured.size(), 1);
    capture(2);
    EXPECT_EQ(captured.size(), 2);
    EXPECT_THAT(temporaryFiles(), IsEmpty());
}

TEST_F(ScreenSnipperTest, aFinishedToolIsNotEndedAgain) {
    snipper.startCapture();
    capture(0);
    snipper.startCapture();
    EXPECT_FALSE(tool(0).isTerminated());
}

TEST_F(ScreenSnipperTest, aHungToolIsAskedToEndByTheNextCapture) {
    snipper.startCapture();
    time.advance(3600s);
    EXPECT_TRUE(snipper.isSnipping());
    snipper.startCapture();
    EXPECT_TRUE(tool(0).isTerminated());
}

TEST_F(ScreenSnipperTest, anEndAfterTheSnipperHasGoneIsNothing) {
    auto other = std::make_unique<ScreenSnipper>(ScreenSnipper::Ports{launcher, defaults, time, folders.temporary});
    other->setOnSnipComplete([this](const QImage &image) { captured.append(image); });
    other->startCapture();
    ASSERT_TRUE(picture().save(tool(0).arguments().last()));
    other.reset();
    tool(0).finish(0);
    time.runPending();
    EXPECT_THAT(captured, IsEmpty());
}

} // namespace
} // namespace tavrine
