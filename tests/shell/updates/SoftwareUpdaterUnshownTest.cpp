// What the updater does where the desktop shows no notifications, and how it tells where it stands.

#include "shell/updates/SoftwareUpdaterTest.h"

namespace tavrine {
namespace {

class SoftwareUpdaterUnshownTest : public SoftwareUpdaterTest {};

TEST_F(SoftwareUpdaterUnshownTest, whereNothingIsShownALineSaysIt) {
    start();
    notifications.setGranted(false);
    EXPECT_EQ(outputOf([this] { askByHand(); }), std::string(noSource) + '\n');
    EXPECT_EQ(notifications.added(), 0);
}

TEST_F(SoftwareUpdaterUnshownTest, whereTheDesktopDoesNotSayWithinFiveSecondsWhetherItShowsAnythingALineSaysIt) {
    start();
    notifications.setHanging(true);
    EXPECT_EQ(outputOf([this] {
                  askByHand();
                  time.advance(4'999ms);
              }),
              "");
    EXPECT_EQ(outputOf([this] { time.advance(1ms); }), std::string(noSource) + '\n');
}

TEST_F(SoftwareUpdaterUnshownTest, whatAPersonAskedForAndNoNotificationTellsIsUnheard) {
    start();
    int unheard = 0;
    QObject::connect(updater.get(), &SoftwareUpdater::unheard, updater.get(), [&] { ++unheard; });
    askByHand();
    EXPECT_EQ(unheard, 0) << "it is shown";
    notifications.setGranted(false);
    packages.setHanging(true);
    static_cast<void>(outputOf([this] {
        updater->checkForUpdates();
        time.advance(SoftwareUpdater::quietLook + 1s);
    }));
    EXPECT_EQ(unheard, 0) << "that it looks is no outcome";
    static_cast<void>(outputOf([this] {
        packages.answer();
        time.advance(1s);
    }));
    EXPECT_EQ(unheard, 1);
    packages.setHanging(false);
    notifications.setGranted(true);
    notifications.setHanging(true);
    static_cast<void>(outputOf([this] {
        askByHand();
        time.advance(SoftwareUpdater::longestAnswer);
    }));
    EXPECT_EQ(unheard, 2);
    offerPackage("2.4.0");
    static_cast<void>(outputOf([this] { time.advance(24h); }));
    EXPECT_EQ(unheard, 2) << "nobody asked";
}

TEST_F(SoftwareUpdaterUnshownTest, itsStatusIsThatItLooksForThePersonAndThenWhatTheLastLookBrought) {
    start();
    QStringList all;
    QObject::connect(updater.get(), &SoftwareUpdater::changed, updater.get(), [&] { all += updater->status(); });
    EXPECT_EQ(updater->status(), QString());
    offerPackage("2.4.0");
    askByHand();
    ASSERT_EQ(all.size(), 2);
    EXPECT_EQ(text("Tavrine: ") + all[0], text(looking));
    EXPECT_EQ(text("Tavrine: ") + all[1], text(package));
    offerNothing();
    time.advance(25h);
    EXPECT_EQ(text("Tavrine: ") + updater->status(), text(upToDate)) << "by itself";
}

TEST_F(SoftwareUpdaterUnshownTest, aVersionThatOnlyALineToldOfIsToldAgain) {
    start();
    offerPackage("2.4.0");
    notifications.setGranted(false);
    EXPECT_EQ(outputOf([this] { time.advance(SoftwareUpdater::firstLook); }), std::string(package) + '\n');
    notifications.setGranted(true);
    EXPECT_EQ(outputOf([this] { time.advance(24h); }), "");
    EXPECT_THAT(told(), ElementsAre(package));
}

TEST_F(SoftwareUpdaterUnshownTest, anUpdaterThatGoesSaysNothingMore) {
    start(true);
    packages.setHanging(true);
    updater->checkForUpdates();
    updater.reset();
    packages.answer();
    feed.answer();
    EXPECT_EQ(outputOf([this] { time.advance(24h); }), "");
    EXPECT_EQ(notifications.added(), 0);
}

} // namespace
} // namespace tavrine
