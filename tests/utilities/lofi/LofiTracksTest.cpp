#include "LofiTest.h"

namespace tavrine {
namespace {

TEST(LofiTracks, theTwoBuiltInTracksHaveTheirNamesInTheirOrder) {
    EXPECT_THAT(lofiTracks::builtInNames(), ElementsAre(text("track_1.mp3"), text("track_2.mp3")));
    const QList<QUrl> urls = lofiTracks::urls(text("/usr/share/tavrine"));
    ASSERT_EQ(urls.size(), 2);
    EXPECT_EQ(urls.at(0).fileName(), text("track_1.mp3"));
    EXPECT_EQ(urls.at(1).fileName(), text("track_2.mp3"));
    for (const QUrl &url : urls)
        EXPECT_TRUE(url.isLocalFile() || url.scheme() == text("https")) << url.toString().toStdString();
}

TEST(LofiTracks, aResourcesFolderOfAnyNameMakesAnAddressThatLeadsThere) {
    const QList<QUrl> urls = lofiTracks::urls(text("/opt/50% & ü #1"));
    if (urls.front().isLocalFile()) {
        EXPECT_EQ(urls.front().toLocalFile(), text("/opt/50% & ü #1/lofi/track_1.mp3"));
    }
}

TEST(LofiTracks, theCopysNameIsTheFilesWithAPrefix) {
    EXPECT_EQ(lofiTracks::customFileName(text("a.mp3")), text("custom_a.mp3"));
    // Both sides of the longest name: 255 bytes.
    EXPECT_EQ(lofiTracks::customFileName(QString(244, u'x') + text(".mp3")),
              text("custom_") + QString(244, u'x') + text(".mp3"));
    EXPECT_EQ(lofiTracks::customFileName(QString(245, u'x') + text(".mp3")),
              text("custom_") + QString(244, u'x') + text(".mp3"));
    // What looks like an extension and is a title.
    const QString title = text("a.") + QString(250, u'x');
    EXPECT_EQ(QFile::encodeName(lofiTracks::customFileName(title)).size(), 255);
}

TEST(LofiTracks, aTrackIsCalledByItsFilesNameWithoutTheExtension) {
    EXPECT_EQ(lofiTracks::displayName(text("Rain.mp3")), text("Rain"));
    EXPECT_EQ(lofiTracks::displayName(text("Rain.2.tar.mp3")), text("Rain.2.tar"));
    EXPECT_EQ(lofiTracks::displayName(text("Rain")), text("Rain"));
    EXPECT_EQ(lofiTracks::displayName(text(".mp3")), text(".mp3"));
}

} // namespace
} // namespace tavrine
