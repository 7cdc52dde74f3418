#include "ManagerTest.h"
#include "base/Uuid.h"
#include "clipboard/JpegLadder.h"
#include "support/ReadOnlyFolder.h"

#include <csignal>

#include <sys/resource.h>

namespace tavrine {
namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

class Media : public ManagerTest {
protected:
    MediaStore store{folders, defaults, coder};

    QByteArray stored(const QString &fileName) {
        QFile file(imagesFolder + u'/' + fileName);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    /// The factors that were tried, of whichever way.
    std::vector<double> factors() {
        std::vector<double> list;
        for (const auto &[way, factor] : coder.tried())
            list.push_back(factor);
        return list;
    }
    /// Every factor above `last` gives too much, `last` gives `size` bytes.
    void fitsFirstAt(double last, qsizetype size = 200'000) {
        coder.setSize([=](double factor) { return factor > last ? 200'001 : size; });
    }
};

// Storing.

TEST_F(Media, anImageIsNamedByAFreshUuidAndEndsInJpg) {
    const QString first = store.saveImage(picture(3, 2)).value();
    const QString second = store.saveImage(picture(3, 2)).value();
    EXPECT_NE(first, second);
    EXPECT_EQ(first.size(), 40);
    EXPECT_TRUE(first.endsWith(str(".jpg")));
    EXPECT_TRUE(uuidFromString(first.first(36)));
    EXPECT_EQ(first.first(36), first.first(36).toUpper());
    EXPECT_EQ(storedImages().size(), 2);
}

TEST_F(Media, anImageIsReadableByThePersonAlone) {
    const QString path = store.filePath(store.saveImage(picture(3, 2)).value()).value();
    const auto othersBits = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    EXPECT_EQ(QFile::permissions(path) & othersBits, QFile::Permissions());
    EXPECT_EQ(QFile::permissions(imagesFolder) & othersBits, QFile::Permissions());
}

TEST_F(Media, aFolderOfPicturesThatWasOpenToOthersIsClosedToThem) {
    ASSERT_TRUE(store.saveImage(picture(3, 2)));
    ASSERT_EQ(::chmod(QFile::encodeName(imagesFolder).constData(), 0755), 0);
    ASSERT_TRUE(store.saveImage(picture(3, 2)));
    EXPECT_EQ(QFile::permissions(imagesFolder) & (QFile::ReadGroup | QFile::ReadOther | QFile::ExeOther),
              QFile::Permissions());
}

TEST_F(Media, aFolderThatMayOnlyBeReadTakesNoPictureAndKeepsTheOthers) {
    const QString kept = store.saveImage(picture(3, 2)).value();
    {
        const ReadOnlyFolder sealed(imagesFolder);
        EXPECT_EQ(store.saveImage(picture(3, 2)), std::nullopt);
    }
    EXPECT_EQ(storedImages(), QStringList{kept});
}

TEST_F(Media, aFullDiskTakesNoPictureAndLeavesNoHalfOfOne) {
    const QString kept = store.saveImage(picture(3, 2)).value();
    coder.setSize([](double) { return 100'000; });
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit full{50'000, before.rlim_max};
    auto *const handler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &full);
    EXPECT_EQ(store.saveImage(picture(3, 2)), std::nullopt);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(storedImages(), QStringList{kept});
}

TEST_F(Media, theFirstFactorIsEnoughForTwoHundredThousandBytes) {
    fitsFirstAt(0.82);
    const QString name = store.saveImage(picture(3, 2)).value();
    EXPECT_EQ(factors(), std::vector{0.82});
    EXPECT_EQ(stored(name).size(), 200'000);
}

TEST_F(Media, oneByteMoreMakesASecondTry) {
    fitsFirstAt(0.67);
    EXPECT_TRUE(store.saveImage(picture(3, 2)));
    EXPECT_EQ(factors(), (std::vector{0.82, 0.67}));
}

TEST_F(Media, theSixthFactorStandsWhateverItsSize) {
    coder.setSize([](double factor) { return factor < 0.1 ? 3'000'000 : 4'000'000; });
    const QString name = store.saveImage(picture(3, 2)).value();
    EXPECT_EQ(factors(), (std::vector{0.82, 0.67, 0.52, 0.37, 0.22, 0.07}));
    EXPECT_EQ(stored(name).size(), 3'000'000);
}

TEST_F(Media, theFifthFactorIsStillAboveTheLastStep) {
    fitsFirstAt(0.22);
    EXPECT_TRUE(store.saveImage(picture(3, 2)));
    EXPECT_EQ(factors().size(), 5U);
}

TEST_F(Media, whatIsKnownToBeTooLargeIsNotEncodedAndTheResultIsTheSame) {
    coder.setKnowsSizeAhead(true);
    fitsFirstAt(0.37, 150'000);
    EXPECT_EQ(stored(store.saveImage(picture(3, 2)).value()).size(), 150'000);
    EXPECT_EQ(factors(), std::vector{0.37});
}

TEST_F(Media, theLastFactorIsEncodedThoughItIsKnownToBeTooLarge) {
    coder.setKnowsSizeAhead(true);
    coder.setSize([](double) { return 4'000'000; });
    EXPECT_TRUE(store.saveImage(picture(3, 2)));
    EXPECT_EQ(factors(), std::vector{0.07});
}

TEST_F(Media, whenTheDirectWayMakesNothingTheTiffFormIsTaken) {
    coder.setFails(FakeImageCoder::Way::bitmap, true);
    EXPECT_TRUE(store.saveImage(picture(3, 2)));
    ASSERT_EQ(coder.tried().size(), 1U);
    EXPECT_EQ(coder.tried().front().first, FakeImageCoder::Way::tiff);
}

TEST_F(Media, whenALaterTryFailsTheTiffFormStartsAnew) {
    coder.setSize([](double factor) { return factor < 0.7 ? std::nullopt : std::optional<qsizetype>(300'000); });
    EXPECT_EQ(store.saveImage(picture(3, 2)), std::nullopt);
    using enum FakeImageCoder::Way;
    using Tried = std::vector<std::pair<FakeImageCoder::Way, double>>;
    EXPECT_EQ(coder.tried(), (Tried{{bitmap, 0.82}, {bitmap, 0.67}, {tiff, 0.82}, {tiff, 0.67}}));
    EXPECT_TRUE(storedImages().isEmpty());
}

TEST_F(Media, theTiffFormIsNotMadeWhenTheDirectWayGaveAnImage) {
    EXPECT_TRUE(store.saveImage(picture(3, 2)));
    EXPECT_EQ(coder.tried().front().first, FakeImageCoder::Way::bitmap);
    EXPECT_EQ(coder.tried().size(), 1U);
}

TEST_F(Media, whenBothWaysMakeNothingNothingIsStored) {
    coder.setFails(FakeImageCoder::Way::bitmap, true);
    coder.setFails(FakeImageCoder::Way::tiff, true);
    EXPECT_EQ(store.saveImage(picture(3, 2)), std::nullopt);
}

TEST_F(Media, anImageWithoutWidthOrHeightIsNotStored) {
    EXPECT_EQ(store.saveImage(QImage()), std::nullopt);
    EXPECT_TRUE(coder.tried().empty());
}

TEST_F(Media, aFolderThatCannotBeMadeMeansNoImage) {
    write(imagesFolder, "a file in the way");
    EXPECT_EQ(store.saveImage(picture(3, 2)), std::nullopt);
}

TEST_F(Media, withoutAFolderForDataThereIsNoImage) {
    folders.applicationSupport.clear();
    MediaStore homeless(folders, defaults, coder);
    EXPECT_EQ(homeless.imagesDirectory(), std::nullopt);
    EXPECT_EQ(homeless.saveImage(picture(3, 2)), std::nullopt);
    EXPECT_EQ(homeless.loadImage(str("A.jpg")), std::nullopt);
    EXPECT_EQ(homeless.makeThumbnail(str("A.jpg")), std::nullopt);
    homeless.removeImageFiles({str("A.jpg")});
}

TEST_F(Media, anImageReadsBackInItsOwnSize) {
    EXPECT_EQ(store.loadImage(store.saveImage(picture(1000, 700)).value())->size(), QSize(1000, 700));
}

// Folders and names.

TEST_F(Media, theImagesFolderIsMadeWheneverItIsAskedFor) {
    EXPECT_EQ(store.imagesDirectory(), imagesFolder);
    EXPECT_TRUE(QDir(imagesFolder).exists());
    QDir(imagesFolder).removeRecursively();
    EXPECT_EQ(store.imagesDirectory(), imagesFolder);
    EXPECT_TRUE(QDir(imagesFolder).exists());
}

TEST_F(Media, recordingsLieInTheFolderOfRecordingsAndAllElseWithTheImages) {
    EXPECT_EQ(store.filePath(str("A.mp4")), quickShotsFolder + str("/A.mp4"));
    EXPECT_EQ(store.filePath(str("A.mov")), quickShotsFolder + str("/A.mov"));
    EXPECT_EQ(store.filePath(str("A.jpg")), imagesFolder + str("/A.jpg"));
    EXPECT_EQ(store.filePath(str("A.MP4")), imagesFolder + str("/A.MP4"));
    EXPECT_EQ(store.filePath(str("A.webm")), imagesFolder + str("/A.webm"));
}

TEST_F(Media, onlyABareNameNamesAFile) {
    for (const char *name : {"", ".", "..", "../A.jpg", "/etc/passwd", "folder/A.mp4", "../A.mov", "A.jpg/"})
        EXPECT_EQ(store.filePath(str(name)), std::nullopt) << name;
    EXPECT_EQ(store.filePath(QString(3, QChar::Null)), std::nullopt);
    EXPECT_EQ(store.filePath(str("..jpg")), imagesFolder + str("/..jpg"));
}

TEST_F(Media, recordingsGoToTheHomesDocuments) {
    EXPECT_EQ(store.quickShotsDirectory(), quickShotsFolder);
    EXPECT_TRUE(QDir(quickShotsFolder).exists());
}

TEST_F(Media, recordingsGoToTheFolderThatThePersonChose) {
    const QString chosen = home.path() + str("/films/of mine");
    defaults.set(str("customSaveDirectoryPath"), chosen);
    EXPECT_EQ(store.quickShotsDirectory(), chosen);
    EXPECT_TRUE(QDir(chosen).exists());
    EXPECT_FALSE(QDir(quickShotsFolder).exists());
}

TEST_F(Media, anEmptyChoiceCountsAsAbsent) {
    defaults.set(str("customSaveDirectoryPath"), QString());
    EXPECT_EQ(store.quickShotsDirectory(), quickShotsFolder);
}

TEST_F(Media, aChoiceOfAnotherTypeCountsAsAbsent) {
    defaults.set(str("customSaveDirectoryPath"), true);
    EXPECT_EQ(store.quickShotsDirectory(), quickShotsFolder);
}

TEST_F(Media, aChosenFolderThatCannotBeMadeGivesWayQuietly) {
    write(home.path() + str("/file"));
    defaults.set(str("customSaveDirectoryPath"), home.path() + str("/file/folder"));
    CaptureStdout();
    EXPECT_EQ(store.quickShotsDirectory(), quickShotsFolder);
    EXPECT_EQ(GetCapturedStdout(), "");
}

TEST_F(Media, whenTheHomesDocumentsCannotBeUsedTheDesktopsAre) {
    write(home.path() + str("/Documents"), "a file in the way");
    CaptureStdout();
    EXPECT_EQ(store.quickShotsDirectory(), home.path() + str("/Dokumente/Tavrine QuickShots"));
    EXPECT_EQ(GetCapturedStdout(), "CRITICAL: Failed to create Tavrine QuickShots folder: Not a directory\n");
    EXPECT_TRUE(QDir(home.path() + str("/Dokumente/Tavrine QuickShots")).exists());
}

TEST_F(Media, theReasonIsTheOneForWhichTheFolderCouldNotBeMade) {
    ASSERT_TRUE(QDir().mkpath(home.path() + str("/Documents")));
    const ReadOnlyFolder readOnly(home.path() + str("/Documents"));
    CaptureStdout();
    static_cast<void>(store.quickShotsDirectory());
    EXPECT_EQ(GetCapturedStdout(), "CRITICAL: Failed to create Tavrine QuickShots folder: Permission denied\n");
}

TEST_F(Media, theDesktopsFolderIsTheResultThoughItCannotBeMade) {
    write(home.path() + str("/Documents"), "a file in the way");
    write(home.path() + str("/Dokumente"), "a file in the way");
    CaptureStdout();
    EXPECT_EQ(store.quickShotsDirectory(), home.path() + str("/Dokumente/Tavrine QuickShots"));
    static_cast<void>(GetCapturedStdout());
}

TEST_F(Media, withoutAnyFolderForDocumentsThereIsNone) {
    write(home.path() + str("/Documents"), "a file in the way");
    folders.documents.clear();
    MediaStore homeless(folders, defaults, coder);
    CaptureStdout();
    EXPECT_EQ(homeless.quickShotsDirectory(), std::nullopt);
    EXPECT_EQ(homeless.filePath(str("A.mp4")), std::nullopt);
    static_cast<void>(GetCapturedStdout());
}

// Thumbnails.

TEST_F(Media, aThumbnailHasFourHundredAndEightyPixelsAtMost) {
    EXPECT_EQ(store.makeThumbnail(store.saveImage(picture(960, 480)).value())->size(), QSize(480, 240));
    EXPECT_EQ(store.makeThumbnail(store.saveImage(picture(480, 481)).value())->height(), 480);
    EXPECT_EQ(store.makeThumbnail(store.saveImage(picture(480, 480)).value())->size(), QSize(480, 480));
}

TEST_F(Media, whatIsMissingBrokenOrNotDecodableHasNoThumbnail) {
    write(imagesFolder + str("/broken.jpg"), "no picture");
    EXPECT_EQ(store.makeThumbnail(str("missing.jpg")), std::nullopt);
    EXPECT_EQ(store.makeThumbnail(str("broken.jpg")), std::nullopt);
    EXPECT_EQ(store.loadImage(str("broken.jpg")), std::nullopt);
}

TEST_F(Media, aThumbnailCostsFourBytesAPixel) {
    store.cacheThumbnail(picture(480, 10), str("A.jpg"));
    EXPECT_EQ(store.thumbnailCache().totalCost(), 480 * 10 * 4);
}

TEST_F(Media, theCacheHoldsSixtyAndTheLongestUnusedGoesFirst) {
    for (int i = 0; i < 60; ++i)
        store.cacheThumbnail(picture(1, 1), QString::number(i));
    EXPECT_EQ(store.thumbnailCache().count(), 60);
    EXPECT_TRUE(store.thumbnailCache().object(str("0"))); // a use
    store.cacheThumbnail(picture(1, 1), str("60"));
    EXPECT_EQ(store.thumbnailCache().count(), 60);
    EXPECT_TRUE(store.thumbnailCache().object(str("0")));
    EXPECT_FALSE(store.thumbnailCache().object(str("1")));
    EXPECT_TRUE(store.thumbnailCache().object(str("60")));
}

TEST_F(Media, theCacheHoldsSixtyFourMebibytes) {
    ThumbnailCache &cache = store.thumbnailCache();
    constexpr qint64 half = ThumbnailCache::totalCostLimit / 2;
    cache.setObject(picture(1, 1), str("A"), half);
    cache.setObject(picture(1, 1), str("B"), half);
    EXPECT_EQ(cache.count(), 2);
    cache.setObject(picture(1, 1), str("C"), 1);
    EXPECT_FALSE(cache.object(str("A")));
    EXPECT_TRUE(cache.object(str("B")));
    EXPECT_EQ(cache.totalCost(), half + 1);
}

TEST_F(Media, aThumbnailThatIsTooLargeAloneIsNotKeptAndDrivesNothingOut) {
    ThumbnailCache &cache = store.thumbnailCache();
    cache.setObject(picture(1, 1), str("A"), 4);
    cache.setObject(picture(1, 1), str("B"), ThumbnailCache::totalCostLimit + 1);
    EXPECT_TRUE(cache.object(str("A")));
    EXPECT_FALSE(cache.object(str("B")));
    cache.removeObject(str("A"));
    cache.setObject(picture(1, 1), str("B"), ThumbnailCache::totalCostLimit);
    EXPECT_TRUE(cache.object(str("B")));
}

TEST_F(Media, aSecondThumbnailOfAFileReplacesTheFirst) {
    ThumbnailCache &cache = store.thumbnailCache();
    cache.setObject(picture(1, 1), str("A"), 4);
    cache.setObject(picture(2, 2), str("A"), 16);
    EXPECT_EQ(cache.count(), 1);
    EXPECT_EQ(cache.totalCost(), 16);
    EXPECT_EQ(cache.object(str("A"))->size(), QSize(2, 2));
    cache.removeAllObjects();
    EXPECT_EQ(cache.totalCost(), 0);
    EXPECT_FALSE(cache.object(str("A")));
}

// Removing.

TEST_F(Media, removingOneFileLeavesItsThumbnail) {
    write(imagesFolder + str("/A.jpg"));
    store.cacheThumbnail(picture(1, 1), str("A.jpg"));
    store.removeImageFile(str("A.jpg"));
    EXPECT_TRUE(storedImages().isEmpty());
    EXPECT_TRUE(store.thumbnailCache().object(str("A.jpg")));
    store.removeImageFile(std::nullopt);
    store.removeImageFile(str("A.jpg")); // gone already
}

TEST_F(Media, removingFilesDropsTheirThumbnailsAlsoOfThoseThatAreGone) {
    write(imagesFolder + str("/A.jpg"));
    write(quickShotsFolder + str("/B.mp4"));
    for (const char *name : {"A.jpg", "B.mp4", "C.jpg"})
        store.cacheThumbnail(picture(1, 1), str(name));
    store.removeImageFiles({str("A.jpg"), str("B.mp4"), str("C.jpg")});
    EXPECT_EQ(store.thumbnailCache().count(), 0);
    EXPECT_TRUE(storedImages().isEmpty());
    EXPECT_FALSE(QFile::exists(quickShotsFolder + str("/B.mp4")));
}

} // namespace
} // namespace tavrine
