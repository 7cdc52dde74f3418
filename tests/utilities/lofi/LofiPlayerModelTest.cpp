#include "utilities/lofi/LofiPlayerModel.h"

#include "LofiTest.h"

namespace tavrine {
namespace {

using Command = LofiPlayerModel::Command;

class LofiPlayerModelTest : public LofiTest {
protected:
    LofiPlayerModel model{{*manager, center, urlOpener}};
};

TEST_F(LofiPlayerModelTest, atRestItInvitesToPlay) {
    EXPECT_EQ(model.title(), text("Lo-Fi Vibe"));
    EXPECT_EQ(model.statusLine(), text("Tap to play"));
    EXPECT_EQ(model.icon(), text("play.fill"));
    EXPECT_FALSE(model.isGlowing());
    EXPECT_EQ(model.activeTrackTitle(), text("Default Lo-Fi Track"));
    EXPECT_EQ(model.activeTrackNote(), text("Using built-in Lo-Fi streaming tracks"));
}

TEST_F(LofiPlayerModelTest, theButtonTogglesWhatSounds) {
    writeTrack("track_1.mp3");
    int changes = 0;
    QObject::connect(&model, &LofiPlayerModel::changed, &model, [&] { ++changes; });
    printedBy([this] { model.toggle(); });
    EXPECT_EQ(model.statusLine(), text("Now Playing"));
    EXPECT_EQ(model.icon(), text("pause.fill"));
    EXPECT_TRUE(model.isGlowing());
    EXPECT_EQ(changes, 2) << "asked for, and heard";
    EXPECT_EQ(printedBy([this] { model.toggle(); }), "⏸️ Lofi playback paused\n");
    EXPECT_EQ(model.statusLine(), text("Tap to play"));
    EXPECT_FALSE(model.isGlowing());
}

TEST_F(LofiPlayerModelTest, aSecondPressBeforeTheFirstIsHeardPauses) {
    writeTrack("track_1.mp3");
    players.beSlow();
    printedBy([this] { model.toggle(); });
    EXPECT_EQ(model.icon(), text("pause.fill"));
    EXPECT_EQ(model.playActionName(), text("Pause"));
    EXPECT_FALSE(model.isGlowing());
    EXPECT_EQ(printedBy([this] { model.toggle(); }), "⏸️ Lofi playback paused\n");
    EXPECT_EQ(model.icon(), text("play.fill"));
    EXPECT_EQ(printedBy([this] { players.answerAll(); }), "");
    EXPECT_THAT(players.heard(), IsEmpty());
    EXPECT_EQ(model.statusLine(), text("Tap to play"));
}

TEST_F(LofiPlayerModelTest, aTrackThatCannotBePlayedGivesTheButtonBack) {
    writeTrack("track_1.mp3");
    players.beSlow();
    players.failNext({.reason = text("no")});
    printedBy([this] { model.toggle(); });
    printedBy([this] { players.answerAll(); });
    EXPECT_EQ(model.icon(), text("play.fill"));
    EXPECT_THAT(printedBy([this] { model.toggle(); }), HasSubstr("▶️ Playing lofi track: track_1.mp3\n"));
}

TEST_F(LofiPlayerModelTest, thePercentsAreThoseThatAreThere) {
    printedBy([this] { model.toggle(); });
    for (int percent = 0; percent < 100; ++percent) {
        for (const int part : {0, 9}) {
            downloads.progress(percent * 10 + part, 1000);
            settle();
            EXPECT_EQ(model.statusLine(), text("Downloading... %1%").arg(percent)) << part;
        }
    }
}

TEST_F(LofiPlayerModelTest, aDownloadShowsItsPercentage) {
    printedBy([this] { model.toggle(); });
    EXPECT_EQ(model.statusLine(), text("Downloading... 0%"));
    EXPECT_TRUE(model.isDownloading());
    downloads.progress(427, 1000);
    settle();
    EXPECT_EQ(model.statusLine(), text("Downloading... 42%"));
    EXPECT_EQ(model.downloadProgress(), 0.427);
    EXPECT_EQ(printedBy([this] { model.toggle(); }), "⚠️ Already downloading a track\n");
}

TEST_F(LofiPlayerModelTest, anImportedTrackIsCalledByItsName) {
    import(write(home.filePath(text("雨の日.mp3"))));
    EXPECT_EQ(model.title(), text("雨の日"));
    EXPECT_EQ(model.activeTrackTitle(), text("雨の日"));
    EXPECT_EQ(model.activeTrackNote(), text("Using custom audio file from your Mac"));
}

TEST_F(LofiPlayerModelTest, theMenuHasTheResetWithACustomTrackOnly) {
    EXPECT_THAT(model.commands(),
                ElementsAre(Command::openSettings, Command::browseInternet, Command::chooseLocalFile));
    import(write(home.filePath(text("a.mp3"))));
    QStringList titles;
    const auto commands = model.commands();
    for (const Command command : commands)
        titles.append(LofiPlayerModel::titleOf(command));
    EXPECT_THAT(titles, ElementsAre(text("Lo-Fi Vibe Settings…"), text("Download Lo-Fi Music from Internet…"),
                                    text("Choose Local Audio File…"), text("Reset to Default Lo-Fi Track")));
}

TEST_F(LofiPlayerModelTest, everyCommandDoesWhatItSays) {
    int requests = 0;
    const auto token = center.addObserver(text("openLofiSettingsRequested"), [&](const auto &) { ++requests; });
    model.perform(Command::openSettings);
    EXPECT_EQ(requests, 1);
    model.perform(Command::browseInternet);
    EXPECT_THAT(urlOpener.opened(), ElementsAre(QUrl(text("https://pixabay.com/music/search/lofi/"))));
    EXPECT_FALSE(manager->isDownloading());
    model.perform(Command::chooseLocalFile);
    EXPECT_TRUE(panels.isOpen());
    import(write(home.filePath(text("a.mp3"))));
    model.perform(Command::resetToDefault);
    EXPECT_FALSE(model.hasCustomTrack());
}

} // namespace
} // namespace tavrine
