#include "shell/updates/UpdateOutcome.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

using Kind = UpdateOutcome::Kind;
using Packages = PackageUpdates::Answer;
using Feed = UpdateFeed::Answer;

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

const Packages noPackages{Packages::Kind::unavailable};
const Packages silentPackages{Packages::Kind::noAnswer};
const Packages currentPackage{Packages::Kind::versions, text("2.3.1")};
const Packages newerPackage{Packages::Kind::versions, text("2.3.1"), {text("2.4.0")}};
const Feed silentFeed{Feed::Kind::noAnswer};
const Feed refusedFeed{Feed::Kind::refused};

QByteArray item(const char *version, const char *minimumSystem = "") {
    const QByteArray system =
        *minimumSystem ? QByteArray("<minimumSystemVersion>") + minimumSystem + "</minimumSystemVersion>" : "";
    return QByteArray("<item><version>") + version + "</version>" + system +
           "<enclosure length='1' url='https://example.org/" + version + "?a=1#b'/></item>";
}
Feed feedOf(const QByteArray &items) {
    return {Feed::Kind::contents, "<rss><channel>" + items + "</channel></rss>"};
}

UpdateOutcome outcome(const Packages &packages, const std::optional<Feed> &feed = std::nullopt) {
    return outcomeOf({.ownVersion = text("2.3.1"), .packages = packages, .feed = feed, .systemVersion = text("2.36")});
}

TEST(UpdateOutcome, withoutAFeedThePackagesDecide) {
    EXPECT_EQ(outcome(noPackages).kind, Kind::noSource);
    EXPECT_EQ(outcome(silentPackages).kind, Kind::noAnswer);
    EXPECT_EQ(outcome(currentPackage).kind, Kind::upToDate);
    EXPECT_EQ(outcome(newerPackage), (UpdateOutcome{Kind::package, text("2.4.0"), text("2.4.0")}));
}

TEST(UpdateOutcome, theNewestPackageCountsAndOneThatIsNotNewerDoesNot) {
    const auto kindOf = [](const char *installed, const QStringList &available) {
        return outcome({Packages::Kind::versions, text(installed), available});
    };
    EXPECT_EQ(kindOf("2.3.1", {text("2.4.0"), text("2.10.0"), text("2.5.0")}).version, text("2.10.0"));
    EXPECT_EQ(kindOf("2.3.1-1", {text("2.3.1-1"), text("2.3.1~rc1-9"), text("1.0")}).kind, Kind::upToDate);
    EXPECT_EQ(kindOf("1:1.0", {text("2.4.0")}).kind, Kind::upToDate);
}

TEST(UpdateOutcome, aPackageIsCalledByItsVersionUnlessOnlyItsRevisionIsNew) {
    const auto nameOf = [](const char *version) {
        return outcome({Packages::Kind::versions, text("1:2.3.1-1"), {text(version)}}).shownName;
    };
    EXPECT_EQ(nameOf("1:2.4.0-1"), text("2.4.0"));
    EXPECT_EQ(nameOf("1:2.3.1-2"), text("1:2.3.1-2"));
}

TEST(UpdateOutcome, aPackageComesBeforeWhatTheFeedSays) {
    for (const Feed &feed : {silentFeed, refusedFeed, feedOf({}), feedOf(item("9.0"))})
        EXPECT_EQ(outcome(newerPackage, feed).kind, Kind::package);
}

TEST(UpdateOutcome, elseTheFeedDecides) {
    for (const Packages &packages : {noPackages, silentPackages, currentPackage}) {
        EXPECT_EQ(outcome(packages, silentFeed).kind, Kind::noAnswer);
        EXPECT_EQ(outcome(packages, refusedFeed).kind, Kind::refused);
        EXPECT_EQ(outcome(packages, feedOf({})).kind, Kind::upToDate);
        EXPECT_EQ(outcome(packages, feedOf(item("2.4.0"))),
                  (UpdateOutcome{Kind::download, text("2.4.0"), text("2.4.0"),
                                 QUrl(text("https://example.org/2.4.0?a=1#b"))}));
    }
}

TEST(UpdateOutcome, aFeedThatMakesNoSenseIsNoAnswer) {
    EXPECT_EQ(outcome(noPackages, Feed{Feed::Kind::contents, "<rss>"}).kind, Kind::noAnswer);
    EXPECT_EQ(outcome(noPackages, Feed{Feed::Kind::contents, {}}).kind, Kind::noAnswer);
}

TEST(UpdateOutcome, theNewestOfTheFeedCountsWhereverItStands) {
    EXPECT_EQ(outcome(noPackages, feedOf(item("2.4.0") + item("2.10.0") + item("2.9.0"))).version, text("2.10.0"));
}

TEST(UpdateOutcome, anOlderFeedThatIsPlayedAgainOffersNothing) {
    EXPECT_EQ(outcome(noPackages, feedOf(item("1.0") + item("2.3.1") + item("2.3.1-rc.1") + item("2.3.0"))).kind,
              Kind::upToDate);
    EXPECT_EQ(outcome(noPackages, feedOf(item("2.3.2-rc.1"))).kind, Kind::download);
}

TEST(UpdateOutcome, whatNeedsANewerSystemIsNotOffered) {
    EXPECT_EQ(outcome(noPackages, feedOf(item("3.0", "2.37"))).kind, Kind::needsNewerSystem);
    EXPECT_EQ(outcome(noPackages, feedOf(item("3.0", "2.36"))).kind, Kind::download);
    EXPECT_EQ(outcome(noPackages, feedOf(item("3.0", "2.100") + item("2.4.0", "2.4"))).version, text("2.4.0"));
    EXPECT_EQ(outcome(noPackages, feedOf(item("2.0", "2.37"))).kind, Kind::upToDate);
    UpdateAnswers answers{.ownVersion = text("2.3.1"), .packages = noPackages, .feed = feedOf(item("3.0", "2.0"))};
    EXPECT_EQ(outcomeOf(answers).kind, Kind::needsNewerSystem) << "of a system that is not known";
}

TEST(UpdateOutcome, onlyWhatWasAnsweredIsDoneForToday) {
    for (const Kind kind : {Kind::upToDate, Kind::needsNewerSystem, Kind::package, Kind::download})
        EXPECT_TRUE(isAnswered(kind));
    for (const Kind kind : {Kind::noSource, Kind::noAnswer, Kind::refused})
        EXPECT_FALSE(isAnswered(kind));
}

TEST(UpdateOutcome, eachIsASentenceForAPerson) {
    const auto sentence = [](const UpdateOutcome &outcome) { return sentenceOf(outcome, text("2.3.1")); };
    EXPECT_EQ(sentence({Kind::noSource}), text("This copy of Tavrine does not look for updates by itself. New versions "
                                               "come the way it was installed."));
    EXPECT_EQ(sentence({Kind::noAnswer}),
              text("Tavrine could not find out whether there is a newer version. Try again later."));
    EXPECT_EQ(sentence({Kind::refused}),
              text("The answer about new versions was not signed by the makers of Tavrine, so it was not used."));
    EXPECT_EQ(sentence({Kind::upToDate}), text("Tavrine 2.3.1 is up to date."));
    EXPECT_EQ(sentence({Kind::needsNewerSystem, text("3.0"), text("3")}),
              text("Tavrine 3 is available, but it needs a newer system than this one."));
    EXPECT_EQ(
        sentence({Kind::package, text("1:2.4.0-1"), text("2.4.0")}),
        text("Tavrine 2.4.0 is available; this is 2.3.1. Install it with the software updates of this computer."));
    EXPECT_EQ(sentence({Kind::download, text("2.4.0"), text("2.4"), QUrl(text("https://example.org/get/?a=1&b=2#c"))}),
              text("Tavrine 2.4 is available; this is 2.3.1. You get it at https://example.org/get/"));
}

TEST(UpdateOutcome, anAddressThatNobodyWouldTypeIsShownByItsHost) {
    const auto shown = [](const QString &address) {
        const QString whole = sentenceOf({Kind::download, text("2"), text("2"), QUrl(address)}, text("1"));
        return whole.sliced(whole.indexOf(text("https:")) < 0 ? whole.lastIndexOf(u' ') + 1
                                                              : whole.indexOf(text("https:")));
    };
    const QString start = text("https://example.org/");
    EXPECT_EQ(shown(start + QString(100, u'a')), start + QString(100, u'a'));
    EXPECT_EQ(shown(start + QString(101, u'a')), text("example.org"));
    EXPECT_EQ(shown(start + text("a&b")), text("example.org"));
    EXPECT_EQ(shown(text("https://bücher.example/")), text("https://xn--bcher-kva.example/"));
}

} // namespace
} // namespace tavrine
