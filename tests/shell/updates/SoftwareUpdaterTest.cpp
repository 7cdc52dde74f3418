#include "shell/updates/SoftwareUpdater.h"

#include "adapters/fake/FakePackageUpdates.h"
#include "adapters/fake/FakeUpdateFeed.h"
#include "adapters/fake/FakeUrlOpener.h"
#include "adapters/fake/FakeUserNotifications.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "shell/updates/UpdatePreferences.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using State = SoftwareUpdater::State;
using Packages = PackageUpdates::Answer;
using Start = PackageUpdates::Start;

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

constexpr auto noSource =
    "Tavrine: This copy of Tavrine does not look for updates by itself. New versions come the way "
    "it was installed.";
constexpr auto noAnswer = "Tavrine: Tavrine could not find out whether there is a newer version. Try again later.";
constexpr auto upToDate = "Tavrine: Tavrine 2.3.1 is up to date.";
constexpr auto refused =
    "Tavrine: The answer about new versions was not signed by the makers of Tavrine, so it was not used.";
constexpr auto package =
    "Tavrine: Tavrine 2.4.0 is available; this is 2.3.1. Install it with the software updates of this computer.";
constexpr auto download = "Tavrine: Tavrine 2.5.0 is available; this is 2.3.1. You get it at https://example.org/2.5.0";
constexpr auto looking = "Tavrine: Tavrine is looking for a newer version…";

class SoftwareUpdaterTest : public testing::Test {
protected:
    /// The program, started now; `hasFeed` says whether it names one.
    void start(bool hasFeed = false) {
        updater = std::make_unique<SoftwareUpdater>(
            SoftwareUpdater::Ports{time, defaults, packages, hasFeed ? &feed : nullptr, notifications, opener},
            text("2.3.1"));
        updater->start();
    }
    void offerPackage(const char *version) {
        packages.setAnswer({Packages::Kind::versions, text("2.3.1"), {text(version)}});
    }
    void offerNothing() { packages.setAnswer({Packages::Kind::versions, text("2.3.1")}); }
    void offerDownload(const char *version) {
        feed.setContents(QByteArray("<rss><channel><item><version>") + version +
                         "</version><enclosure length='1' url='https://example.org/" + version +
                         "'/></item></channel></rss>");
    }
    void askByHand() {
        updater->checkForUpdates();
        time.runPending();
    }
    [[nodiscard]] std::vector<std::string> told() const {
        std::vector<std::string> all;
        for (const UserNotification &each : notifications.shown())
            all.push_back((each.title + text(": ") + each.body).toStdString());
        return all;
    }
    [[nodiscard]] qsizetype looks() const { return packages.asked().size(); }
    [[nodiscard]] Date lastCheck() const { return preference::updatesLastCheck.get(defaults); }
    std::string outputOf(const std::function<void()> &work) {
        testing::internal::CaptureStdout();
        work();
        return testing::internal::GetCapturedStdout();
    }

    QTemporaryDir home;
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{home.filePath(text("preferences.plist")), time, center};
    FakePackageUpdates packages{time};
    FakeUpdateFeed feed{time};
    FakeUserNotifications notifications{time};
    FakeUrlOpener opener;
    std::unique_ptr<SoftwareUpdater> updater;
};

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

// The desktop that does not show it.

TEST_F(SoftwareUpdaterTest, whereNothingIsShownALineSaysIt) {
    start();
    notifications.setGranted(false);
    EXPECT_EQ(outputOf([this] { askByHand(); }), std::string(noSource) + '\n');
    EXPECT_EQ(notifications.added(), 0);
}

TEST_F(SoftwareUpdaterTest, whereTheDesktopDoesNotSayWithinFiveSecondsWhetherItShowsAnythingALineSaysIt) {
    start();
    notifications.setHanging(true);
    EXPECT_EQ(outputOf([this] {
                  askByHand();
                  time.advance(4'999ms);
              }),
              "");
    EXPECT_EQ(outputOf([this] { time.advance(1ms); }), std::string(noSource) + '\n');
}

TEST_F(SoftwareUpdaterTest, whatAPersonAskedForAndNoNotificationTellsIsUnheard) {
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

TEST_F(SoftwareUpdaterTest, itsStatusIsThatItLooksForThePersonAndThenWhatTheLastLookBrought) {
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

TEST_F(SoftwareUpdaterTest, aVersionThatOnlyALineToldOfIsToldAgain) {
    start();
    offerPackage("2.4.0");
    notifications.setGranted(false);
    EXPECT_EQ(outputOf([this] { time.advance(SoftwareUpdater::firstLook); }), std::string(package) + '\n');
    notifications.setGranted(true);
    EXPECT_EQ(outputOf([this] { time.advance(24h); }), "");
    EXPECT_THAT(told(), ElementsAre(package));
}

TEST_F(SoftwareUpdaterTest, anUpdaterThatGoesSaysNothingMore) {
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
