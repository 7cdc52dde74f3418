#include "shell/updates/SoftwareUpdaterTest.h"

namespace tavrine {
namespace {

// By hand.

TEST_F(SoftwareUpdaterTest, aPersonWhoAsksIsToldWhateverCameOfIt) {
    start(true);
    const auto expectTold = [this](const char *sentence) {
        askByHand();
        EXPECT_THAT(told(), ElementsAre(sentence));
        EXPECT_EQ(updater->state(), State::idle);
    };
    expectTold(noAnswer);
    feed.setRefused();
    expectTold(refused);
    feed.setContents("<rss><channel/></rss>");
    expectTold(upToDate);
    offerDownload("2.5.0");
    expectTold(download);
    offerPackage("2.4.0");
    expectTold(package);
}

TEST_F(SoftwareUpdaterTest, withNeitherFeedNorPackageSystemThePersonHearsWhereVersionsComeFrom) {
    start();
    askByHand();
    askByHand();
    EXPECT_THAT(told(), ElementsAre(noSource));
    EXPECT_EQ(notifications.added(), 2);
}

TEST_F(SoftwareUpdaterTest, onlyAPersonStartsThePackageSystem) {
    start();
    packages.setAsleep(true);
    offerPackage("2.4.0");
    time.advance(SoftwareUpdater::firstLook);
    EXPECT_THAT(packages.asked(), ElementsAre(Start::never));
    EXPECT_THAT(told(), IsEmpty());
    askByHand();
    EXPECT_THAT(packages.asked(), ElementsAre(Start::never, Start::ifNeeded));
    EXPECT_THAT(told(), ElementsAre(package));
}

TEST_F(SoftwareUpdaterTest, aVersionOfTheFeedIsOpenedByAPressAndAPackageIsNot) {
    start(true);
    offerDownload("2.5.0");
    askByHand();
    EXPECT_TRUE(notifications.press(text("updates")));
    time.runPending();
    EXPECT_EQ(opener.opened(), QList({QUrl(text("https://example.org/2.5.0"))}));
    offerPackage("2.4.0");
    askByHand();
    EXPECT_FALSE(notifications.press(text("updates")));
}

TEST_F(SoftwareUpdaterTest, aPersonWhoAsksTwiceIsAnsweredOnce) {
    start();
    packages.setHanging(true);
    updater->checkForUpdates();
    updater->checkForUpdates();
    EXPECT_EQ(looks(), 1);
    packages.answer();
    time.runPending();
    EXPECT_EQ(notifications.added(), 1);
    EXPECT_THAT(told(), ElementsAre(noSource));
}

TEST_F(SoftwareUpdaterTest, aPersonWhoWaitsTwoSecondsHearsThatSomethingHappens) {
    start();
    packages.setHanging(true);
    updater->checkForUpdates();
    time.advance(1'999ms);
    EXPECT_THAT(told(), IsEmpty());
    time.advance(1ms);
    EXPECT_THAT(told(), ElementsAre(looking));
    packages.answer();
    time.advance(1h);
    EXPECT_THAT(told(), ElementsAre(noSource));
    EXPECT_EQ(notifications.added(), 2);
}

TEST_F(SoftwareUpdaterTest, whoDoesNotAnswerWithinAMinuteHasNotAnswered) {
    start(true);
    packages.setHanging(true);
    feed.setHanging(true);
    updater->checkForUpdates();
    time.advance(59'999ms);
    EXPECT_EQ(updater->state(), State::lookingForPerson);
    EXPECT_THAT(told(), ElementsAre(looking));
    time.advance(1ms);
    EXPECT_EQ(updater->state(), State::idle);
    EXPECT_THAT(told(), ElementsAre(noAnswer));
    packages.answer();
    feed.answer();
    time.advance(1min);
    EXPECT_EQ(notifications.added(), 2) << "an answer that comes too late is none";
}

TEST_F(SoftwareUpdaterTest, aPackageSystemThatHangsDoesNotHideWhatTheFeedSays) {
    start(true);
    packages.setHanging(true);
    offerDownload("2.5.0");
    updater->checkForUpdates();
    time.advance(UpdateCheck::longest);
    EXPECT_THAT(told(), ElementsAre(download));
}

// By itself.

TEST_F(SoftwareUpdaterTest, itLooksTwoMinutesAfterTheLaunchAndThenOnceADay) {
    start();
    offerNothing();
    time.advance(119'999ms);
    EXPECT_EQ(looks(), 0);
    time.advance(1ms);
    EXPECT_EQ(looks(), 1);
    time.advance(24h - 1ms);
    EXPECT_EQ(looks(), 1);
    time.advance(1ms);
    EXPECT_EQ(looks(), 2);
    time.advance(24h * 10);
    EXPECT_EQ(looks(), 12);
    EXPECT_THAT(told(), IsEmpty());
}

TEST_F(SoftwareUpdaterTest, theDayIsCountedOverTheEndOfTheProgram) {
    const Date launch = time.now();
    preference::updatesLastCheck.set(defaults, launch + SoftwareUpdater::firstLook - 24h + 1s);
    start();
    offerNothing();
    time.advance(SoftwareUpdater::firstLook);
    EXPECT_EQ(looks(), 0) << "a second is missing";
    preference::updatesLastCheck.set(defaults, launch + SoftwareUpdater::firstLook - 24h);
    start();
    time.advance(SoftwareUpdater::firstLook);
    EXPECT_EQ(looks(), 1);
}

TEST_F(SoftwareUpdaterTest, theDateOfALookIsThatOfItsBeginning) {
    start();
    offerNothing();
    packages.setHanging(true);
    time.advance(SoftwareUpdater::firstLook);
    const Date began = time.now();
    time.advance(30s);
    EXPECT_EQ(lastCheck(), Date::distantPast());
    packages.answer();
    time.runPending();
    EXPECT_EQ(lastCheck(), began);
}

TEST_F(SoftwareUpdaterTest, aLookThatNobodyAnswersIsSilentAndRepeatedAnHourLater) {
    start(true);
    time.advance(SoftwareUpdater::firstLook);
    EXPECT_EQ(looks(), 1);
    time.advance(1h - 1ms);
    EXPECT_EQ(looks(), 1);
    feed.setRefused();
    time.advance(1ms);
    EXPECT_EQ(looks(), 2);
    EXPECT_EQ(lastCheck(), Date::distantPast());
    feed.setContents("<rss><channel/></rss>");
    time.advance(1h);
    EXPECT_EQ(looks(), 3);
    EXPECT_THAT(told(), IsEmpty());
    time.advance(23h);
    EXPECT_EQ(looks(), 3);
    EXPECT_EQ(outputOf([this] { time.advance(1h); }), "");
    EXPECT_EQ(looks(), 4);
}

TEST_F(SoftwareUpdaterTest, aNewVersionIsToldOnceByItselfAndAlwaysByHand) {
    start();
    offerPackage("2.4.0");
    time.advance(SoftwareUpdater::firstLook);
    EXPECT_THAT(told(), ElementsAre(package));
    time.advance(24h * 3);
    EXPECT_EQ(looks(), 4);
    EXPECT_EQ(notifications.added(), 1);
    askByHand();
    EXPECT_EQ(notifications.added(), 2);
    offerPackage("2.4.1");
    time.advance(24h);
    EXPECT_EQ(notifications.added(), 3) << "the next one is told of";
}

TEST_F(SoftwareUpdaterTest, whatAPersonWasToldByHandIsNotToldAgainByItselfNorAfterANewLaunch) {
    start();
    offerPackage("2.4.0");
    askByHand();
    EXPECT_EQ(notifications.added(), 1);
    time.advance(24h * 2);
    start();
    time.advance(24h * 2);
    EXPECT_GE(looks(), 4);
    EXPECT_EQ(notifications.added(), 1);
}

TEST_F(SoftwareUpdaterTest, aLookByHandIsTheLookOfTheDay) {
    start();
    offerNothing();
    askByHand();
    time.advance(SoftwareUpdater::firstLook);
    EXPECT_EQ(looks(), 1);
}

TEST_F(SoftwareUpdaterTest, whoAsksWhileItLooksByItselfHasItBeginAnew) {
    start();
    packages.setHanging(true);
    offerPackage("2.4.0");
    time.advance(SoftwareUpdater::firstLook);
    EXPECT_EQ(updater->state(), State::lookingByItself);
    updater->checkForUpdates();
    EXPECT_EQ(updater->state(), State::lookingForPerson);
    EXPECT_THAT(packages.asked(), ElementsAre(Start::never, Start::ifNeeded));
    time.advance(59s);
    EXPECT_EQ(updater->state(), State::lookingForPerson) << "the first look's minute is not this one's";
    packages.answer();
    time.runPending();
    EXPECT_THAT(told(), ElementsAre(package));
}

TEST_F(SoftwareUpdaterTest, itNeverLooksByItselfWhileItLooks) {
    start();
    packages.setHanging(true);
    time.advance(SoftwareUpdater::firstLook - 30s);
    updater->checkForUpdates();
    time.advance(30s);
    EXPECT_EQ(looks(), 1);
    EXPECT_EQ(updater->state(), State::lookingForPerson);
}

TEST_F(SoftwareUpdaterTest, itLooksByHandAloneWhereThePersonWantsThat) {
    preference::updatesCheckAutomatically.set(defaults, false);
    start();
    offerPackage("2.4.0");
    time.advance(24h * 3);
    EXPECT_EQ(looks(), 0);
    askByHand();
    EXPECT_THAT(told(), ElementsAre(package));
    preference::updatesCheckAutomatically.set(defaults, true);
    time.advance(25h);
    EXPECT_EQ(looks(), 2);
}

TEST_F(SoftwareUpdaterTest, aLookThatIsUnderWayWhenItIsSwitchedOffStaysSilent) {
    start();
    packages.setHanging(true);
    offerPackage("2.4.0");
    time.advance(SoftwareUpdater::firstLook);
    preference::updatesCheckAutomatically.set(defaults, false);
    packages.answer();
    time.advance(1min);
    EXPECT_THAT(told(), IsEmpty());
}

// The clock, and the machine's sleep.

TEST_F(SoftwareUpdaterTest, aDateInTheFutureIsNone) {
    start();
    offerNothing();
    time.advance(SoftwareUpdater::firstLook);
    time.setWallClock(time.now() - 24h * 365);
    time.advance(1h);
    EXPECT_EQ(looks(), 2);
    time.advance(23h);
    EXPECT_EQ(looks(), 2);
    time.advance(1h);
    EXPECT_EQ(looks(), 3);
}

TEST_F(SoftwareUpdaterTest, aDayThatTheMachineSleptThroughIsSeenAtTheNextPulse) {
    start();
    offerNothing();
    time.advance(SoftwareUpdater::firstLook + 30min);
    time.setWallClock(time.now() + 48h);
    EXPECT_EQ(looks(), 1);
    time.advance(30min);
    EXPECT_EQ(looks(), 2);
}

TEST_F(SoftwareUpdaterTest, aLookOverWhichTheMachineSleepsGoesOn) {
    start();
    offerPackage("2.4.0");
    packages.setHanging(true);
    updater->checkForUpdates();
    const Date began = time.now();
    time.advance(30s);
    time.setWallClock(time.now() + 72h);
    EXPECT_EQ(updater->state(), State::lookingForPerson);
    packages.answer();
    time.runPending();
    EXPECT_THAT(told(), ElementsAre(package));
    EXPECT_EQ(lastCheck(), began);
}

} // namespace
} // namespace tavrine
