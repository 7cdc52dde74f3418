// The music within the program, over fakes.
#include "shell/ShellTest.h"
#include "utilities/lofi/LofiManager.h"
#include "utilities/lofi/LofiMiniPlayer.h"
#include "utilities/lofi/LofiSettingsView.h"

namespace tavrine {
namespace {

class LofiToolTest : public ShellTest {
protected:
    void SetUp() override { launch(); }
    LofiTool &tool() { return delegate->tools().lofi(); }
    void addTrack() {
        const QString folder = home.filePath(text("data/Tavrine/LofiTracks"));
        QDir().mkpath(folder);
        QFile file(folder + text("/track_1.mp3"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    void play() {
        quietly([this] {
            tool().manager().play();
            time.runPending();
        });
    }
};

TEST_F(LofiToolTest, atLaunchNothingOfTheMusicIsMade) {
    EXPECT_FALSE(desktop.audioPlayers().hasListener());
    EXPECT_TRUE(desktop.audioPlayers().sounds().empty());
    EXPECT_FALSE(QDir(home.filePath(text("data/Tavrine/LofiTracks"))).exists());
    set(Feature::loFi, false);
    time.runPending();
    EXPECT_FALSE(desktop.audioPlayers().hasListener());
}

TEST_F(LofiToolTest, switchedOffItStops) {
    addTrack();
    play();
    EXPECT_TRUE(tool().manager().isPlaying());
    EXPECT_EQ(outputOf([this] {
                  set(Feature::loFi, false);
                  time.runPending();
              }),
              "⏹️ Lofi playback stopped\n");
    EXPECT_FALSE(tool().manager().isPlaying());
    quietly([this] {
        set(Feature::loFi, true);
        time.runPending();
    });
    EXPECT_FALSE(tool().manager().isPlaying());
}

TEST_F(LofiToolTest, theTrackThatIsFetchedIsAnyOfThem) {
    std::map<std::string, int> fetched;
    const int times = 400;
    for (int i = 0; i < times; ++i) {
        play();
        ++fetched[desktop.downloads().begun().back().fileName().toStdString()];
        quietly([this] {
            desktop.downloads().fail(text("unreachable"));
            time.runPending();
        });
    }
    ASSERT_EQ(fetched.size(), 2U);
    for (const auto &[name, count] : fetched)
        EXPECT_NEAR(count, times / 2, 70) << name; // seven times as far as chance usually goes
}

TEST_F(LofiToolTest, aDownloadThatEndsAfterTheSwitchIsNotPlayed) {
    play();
    ASSERT_TRUE(tool().manager().isDownloading());
    quietly([this] {
        set(Feature::loFi, false);
        time.runPending();
        desktop.downloads().finish("music");
        time.runPending();
    });
    EXPECT_FALSE(tool().manager().isDownloading());
    EXPECT_TRUE(desktop.audioPlayers().heard().isEmpty());
}

TEST_F(LofiToolTest, theTracksAreFetchedFromWhatCameWithTheProgram) {
    const QList<QUrl> &urls = tool().manager().trackUrls();
    ASSERT_EQ(urls.size(), 2);
    if (urls.front().isLocalFile()) {
        EXPECT_EQ(urls.front().toLocalFile(), home.filePath(text("share/lofi/track_1.mp3")));
    }
}

TEST_F(LofiToolTest, everyViewShowsTheOneManager) {
    addTrack();
    const std::unique_ptr<QWidget> card(tool().makeMiniPlayer({}));
    const std::unique_ptr<QWidget> page(tool().makeSettingsView());
    ASSERT_TRUE(qobject_cast<LofiMiniPlayer *>(card.get()));
    ASSERT_TRUE(qobject_cast<LofiSettingsView *>(page.get()));
    play();
    EXPECT_EQ(card->accessibleDescription(), text("Now Playing"));
    EXPECT_EQ(desktop.audioPlayers().sounds().size(), 1U);
}

} // namespace
} // namespace tavrine
