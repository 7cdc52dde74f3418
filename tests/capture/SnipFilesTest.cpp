#include "capture/SnipFiles.h"

#include "SnipTest.h"
#include "capture/CaptureLeftovers.h"
#include "capture/PngData.h"
#include "capture/SnipDragFile.h"

#include <QDateTime>
#include <QFileInfo>

#include <sys/stat.h>
#include <utime.h>

namespace tavrine {
namespace {

class SnipFilesTest : public SnipTest {
protected:
    QString folder = home.filePath(text("out"));
    void touch(const QStringList &names) {
        QDir().mkpath(folder);
        for (const QString &name : names)
            writeFile(folder + text("/") + name, "old");
    }
};

TEST_F(SnipFilesTest, aNameIsTheLocalTimeToTheSecond) {
    EXPECT_EQ(snipFileName({1769860800.0}), text("snip_2026-01-31_21.00.00.png"));
    EXPECT_EQ(snipFileName({1769860800.999}), text("snip_2026-01-31_21.00.00.png"));
    EXPECT_EQ(snipFileName({1769860801.0}), text("snip_2026-01-31_21.00.01.png"));
    EXPECT_EQ(flow->snipFileName(), text("snip_2026-01-31_21.00.00.png"));
}

TEST_F(SnipFilesTest, theNameHasWesternDigitsInEveryLanguage) {
    QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
    EXPECT_EQ(snipFileName({1769860800.0}), text("snip_2026-01-31_21.00.00.png"));
    QLocale::setDefault(QLocale::c());
}

TEST_F(SnipFilesTest, aFreeNameIsTakenAsItIs) {
    EXPECT_EQ(freePath(folder, text("a.png")), folder + text("/a.png"));
}

TEST_F(SnipFilesTest, aNameThatIsTakenGetsACounterFromTwo) {
    touch({text("a.png")});
    EXPECT_EQ(freePath(folder, text("a.png")), folder + text("/a-2.png"));
    touch({text("a-2.png")});
    EXPECT_EQ(freePath(folder, text("a.png")), folder + text("/a-3.png"));
}

TEST_F(SnipFilesTest, theCounterGoesOnBeyondNine) {
    touch({text("a.png")});
    for (int i = 2; i <= 9; ++i)
        touch({text("a-%1.png").arg(i)});
    EXPECT_EQ(freePath(folder, text("a.png")), folder + text("/a-10.png"));
    touch({text("a-10.png")});
    EXPECT_EQ(freePath(folder, text("a.png")), folder + text("/a-11.png"));
}

TEST_F(SnipFilesTest, aGapInTheCountersIsFilled) {
    touch({text("a.png"), text("a-3.png")});
    EXPECT_EQ(freePath(folder, text("a.png")), folder + text("/a-2.png"));
}

TEST_F(SnipFilesTest, aFolderAndALinkThatLeadsNowhereTakeANameToo) {
    QDir().mkpath(folder + text("/a.png"));
    ASSERT_TRUE(QFile::link(home.filePath(text("nowhere")), folder + text("/a-2.png")));
    EXPECT_EQ(freePath(folder, text("a.png")), folder + text("/a-3.png"));
}

TEST_F(SnipFilesTest, theFolderIsMadeWithItsParentsForThePersonAlone) {
    SnipFiles files(queue, time);
    const QString deep = folder + text("/b/c");
    std::optional<QString> path;
    files.saveIn(deep, text("a.png"), files.prepare(picture(), deep), [&](const auto &saved) { path = saved.path; });
    EXPECT_EQ(path, std::nullopt); // in a later turn
    settle();
    ASSERT_EQ(path, deep + text("/a.png"));
    EXPECT_EQ(QFileInfo(deep).permissions() & 0x77, QFileDevice::Permissions());
    EXPECT_EQ(QFileInfo(*path).permissions() & 0x77, QFileDevice::Permissions());
    EXPECT_EQ(QImage(*path).size(), QSize(40, 30));
}

TEST_F(SnipFilesTest, manySavesOfOneMomentGetDifferentNamesInTheirOrder) {
    SnipFiles files(queue, time);
    QStringList names;
    for (int i = 0; i < 12; ++i)
        files.saveIn(folder, text("a.png"), files.prepare(picture(i + 1, 1), folder),
                     [&](const auto &saved) { names << QFileInfo(saved.path).fileName(); });
    settle();
    QStringList expected{text("a.png")};
    for (int i = 2; i <= 12; ++i)
        expected << text("a-%1.png").arg(i);
    EXPECT_EQ(names, expected);
    EXPECT_EQ(QImage(folder + text("/a-12.png")).width(), 12);
}

TEST_F(SnipFilesTest, aPictureThatIsNoneGivesNoFile) {
    SnipFiles files(queue, time);
    bool isWritten = true;
    files.saveIn(folder, text("a.png"), files.prepare(QImage(), folder),
                 [&](const auto &saved) { isWritten = saved.isWritten(); });
    settle();
    EXPECT_FALSE(isWritten);
    EXPECT_THAT(filesIn(folder), IsEmpty());
}

TEST_F(SnipFilesTest, aNamedFileIsReplacedWhole) {
    SnipFiles files(queue, time);
    touch({text("a.png")});
    bool isWritten = false;
    files.saveAs(folder + text("/a.png"), files.prepare(picture(), folder), FileRights::asUsual,
                 [&](const auto &saved) { isWritten = saved.isWritten(); });
    settle();
    EXPECT_TRUE(isWritten);
    EXPECT_THAT(filesIn(folder), ElementsAre(text("a.png")));
    EXPECT_EQ(QImage(folder + text("/a.png")).size(), QSize(40, 30));
}

TEST_F(SnipFilesTest, aFailedWriteTellsWhereAndWhy) {
    SnipFiles files(queue, time);
    SnipFiles::Outcome outcome;
    files.saveAs(home.filePath(text("missing/a.png")), files.prepare(picture(), {}), FileRights::asUsual,
                 [&](const auto &saved) { outcome = saved; });
    settle();
    EXPECT_FALSE(outcome.isWritten());
    EXPECT_EQ(saveFailureMessage(outcome), text("Couldn't save \"a.png\": No such file or directory"));
}

TEST_F(SnipFilesTest, aFileThatThePersonNamedIsAsOpenAsTheirOthers) {
    SnipFiles files(queue, time);
    QDir().mkpath(folder);
    const mode_t before = umask(0022);
    files.saveAs(folder + text("/mine.png"), files.prepare(picture(), {}), FileRights::asUsual, [](const auto &) {});
    settle();
    umask(before);
    EXPECT_TRUE(QFileInfo(folder + text("/mine.png")).permissions() & QFileDevice::ReadOther);
}

// A picture as a PNG.

TEST_F(SnipFilesTest, everyPixelOfAPictureIsInItsPng) {
    for (const auto format : {QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_ARGB32_Premultiplied,
                              QImage::Format_RGB888, QImage::Format_Grayscale8, QImage::Format_RGBA64}) {
        QImage image(37, 23, QImage::Format_RGB32);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                image.setPixel(x, y, qRgb(x * 6, y * 11, (x * y) & 255));
        image = image.convertToFormat(format);
        const QImage read = QImage::fromData(pngData(image).value(), "PNG");
        EXPECT_EQ(read.convertToFormat(QImage::Format_ARGB32), image.convertToFormat(QImage::Format_ARGB32)) << format;
    }
}

TEST_F(SnipFilesTest, aPngKeepsWhatShowsThrough) {
    QImage image(2, 1, QImage::Format_ARGB32);
    image.setPixelColor(0, 0, QColor(10, 200, 30, 128));
    image.setPixelColor(1, 0, QColor(0, 0, 0, 0));
    const QImage read = QImage::fromData(pngData(image).value());
    EXPECT_EQ(read.pixelColor(0, 0), QColor(10, 200, 30, 128));
    EXPECT_EQ(read.pixelColor(1, 0).alpha(), 0);
}

// Files that are dragged out.

TEST_F(SnipFilesTest, aDraggedFileHasItsOwnNameInANewFolder) {
    const QString first = freshDragFile(folders.temporary, text("a.png"));
    const QString second = freshDragFile(folders.temporary, text("a.png"));
    EXPECT_NE(first, second);
    EXPECT_EQ(QFileInfo(first).fileName(), text("a.png"));
    EXPECT_TRUE(QFileInfo(first).absolutePath().startsWith(folders.temporary + text("/tavrine-drag-")));
    EXPECT_TRUE(QFileInfo(QFileInfo(first).absolutePath()).isDir());
    EXPECT_FALSE(QFileInfo::exists(first));
}

TEST_F(SnipFilesTest, aDraggedFileStaysForAnHour) {
    const QString file = freshDragFile(folders.temporary, text("a.png"));
    writeFile(file, "x");
    const auto setAge = [&](int seconds) {
        const auto moment = time_t(time.now().secondsSince1970) - seconds;
        const utimbuf times{moment, moment};
        ASSERT_EQ(utime(QFile::encodeName(QFileInfo(file).absolutePath()).constData(), &times), 0);
    };
    setAge(3600);
    removeOldDrags(folders.temporary, time.now());
    EXPECT_TRUE(QFileInfo::exists(file));
    setAge(3601);
    removeOldDrags(folders.temporary, time.now());
    EXPECT_FALSE(QFileInfo::exists(QFileInfo(file).absolutePath()));
}

TEST_F(SnipFilesTest, nothingElseInTheTemporaryFolderIsRemoved) {
    QDir().mkpath(folders.temporary + text("/other"));
    writeFile(folders.temporary + text("/tavrine-drag-file"), "x");
    ASSERT_TRUE(QFile::link(home.filePath(text("Documents")), folders.temporary + text("/tavrine-drag-link")));
    removeOldDrags(folders.temporary, {time.now().secondsSince1970 + 1e9});
    EXPECT_TRUE(QFileInfo::exists(folders.temporary + text("/other")));
    EXPECT_TRUE(QFileInfo::exists(folders.temporary + text("/tavrine-drag-file")));
    EXPECT_TRUE(QFileInfo::exists(home.filePath(text("Documents"))));
    EXPECT_TRUE(QFileInfo::exists(folders.temporary + text("/tavrine-drag-link")));
}

TEST_F(SnipFilesTest, aDragsFileIsRemovedAfterItsHourWithoutAnotherDrag) {
    flow->showSnipPreview(picture());
    const QString path = card().beginDragFile();
    settle();
    ASSERT_TRUE(QFileInfo::exists(path));
    const auto moment = time_t(time.now().secondsSince1970); // the clock of the files is the real one
    const utimbuf times{moment, moment};
    ASSERT_EQ(utime(QFile::encodeName(QFileInfo(path).absolutePath()).constData(), &times), 0);
    time.advance(3600s);
    EXPECT_TRUE(QFileInfo::exists(path));
    time.advance(1s);
    EXPECT_FALSE(QFileInfo::exists(QFileInfo(path).absolutePath()));
}

// What an earlier run left.

TEST_F(SnipFilesTest, whatAnEarlierRunLeftIsRemovedAndNothingElse) {
    QDir().mkpath(folders.temporary);
    for (const char *const name : {"tavrine-snip-0A.png", "tavrine_qr_0B.png", ".tavrine-12", "tavrine-snip-note",
                                   "export.txt", "tavrine-rec-1.mp4"})
        writeFile(folders.temporary + text("/") + text(name), "x");
    removeCaptureLeftovers(folders.temporary, time);
    EXPECT_THAT(temporaryFiles(), testing::UnorderedElementsAre(text("tavrine-snip-note"), text("export.txt"),
                                                                text("tavrine-rec-1.mp4")));
}

TEST_F(SnipFilesTest, aDragOfAnEarlierRunGoesWhenItHasHadItsHour) {
    const auto dragAt = [this](int seconds) {
        const QString file = freshDragFile(folders.temporary, text("a.png"));
        writeFile(file, "x");
        const auto moment = time_t(time.now().secondsSince1970) - seconds;
        const utimbuf times{moment, moment};
        EXPECT_EQ(utime(QFile::encodeName(QFileInfo(file).absolutePath()).constData(), &times), 0);
        return file;
    };
    const QString old = dragAt(3601);
    const QString fresh = dragAt(10);
    removeCaptureLeftovers(folders.temporary, time);
    EXPECT_FALSE(QFileInfo::exists(old));
    EXPECT_TRUE(QFileInfo::exists(fresh));
    time.advance(3601s);
    EXPECT_FALSE(QFileInfo::exists(fresh));
}

TEST_F(SnipFilesTest, withoutATemporaryFolderNothingIsLookedFor) {
    removeCaptureLeftovers(QString(), time);
    removeCaptureLeftovers(home.filePath(text("missing")), time);
    EXPECT_FALSE(QFileInfo::exists(home.filePath(text("missing"))));
}

TEST_F(SnipFilesTest, withoutATemporaryFolderThereIsNoDraggedFile) {
    writeFile(home.filePath(text("file")), "in the way");
    EXPECT_EQ(freshDragFile(home.filePath(text("file/tmp")), text("a.png")), QString());
}

} // namespace
} // namespace tavrine
