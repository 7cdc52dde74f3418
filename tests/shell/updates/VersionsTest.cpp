#include "shell/updates/Versions.h"

#include <QByteArray>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

/// Each is before the next.
void expectDebianOrder(std::initializer_list<const char *> versions) {
    for (auto one = versions.begin(); one != versions.end(); ++one) {
        EXPECT_EQ(compareDebianVersions(text(*one), text(*one)), std::strong_ordering::equal) << *one;
        for (auto later = one + 1; later != versions.end(); ++later) {
            EXPECT_EQ(compareDebianVersions(text(*one), text(*later)), std::strong_ordering::less)
                << *one << " and " << *later;
            EXPECT_EQ(compareDebianVersions(text(*later), text(*one)), std::strong_ordering::greater)
                << *one << " and " << *later;
        }
    }
}

TEST(DebianVersions, numbersCountAsNumbers) {
    expectDebianOrder({"2.3.1", "2.3.9", "2.3.10", "2.10", "10.0"});
}

TEST(DebianVersions, aTildeComesBeforeTheEndAndLettersBeforeOtherSigns) {
    expectDebianOrder({"1.0~~", "1.0~~a", "1.0~", "1.0~rc1", "1.0", "1.0a", "1.0+b", "1.0.1"});
}

TEST(DebianVersions, theRevisionCountsAfterTheVersionAndTheEpochBeforeIt) {
    expectDebianOrder({"2.3.1", "2.3.1-1", "2.3.1-1+deb12u1", "2.3.1-2", "2.3.1-10", "2.3.2-1", "1:0.1", "2:0.0.1"});
}

TEST(DebianVersions, anAbsentEpochOrRevisionIsZeroAndLeadingZerosAreNone) {
    for (const auto &[a, b] : {std::pair("1.0", "0:1.0"), std::pair("1.0", "1.0-0"), std::pair("1.05", "1.5"),
                               std::pair("", "0"), std::pair("1.0-", "1.0")})
        EXPECT_EQ(compareDebianVersions(text(a), text(b)), std::strong_ordering::equal) << a << " and " << b;
}

TEST(DebianVersions, aNumberHasNoLargestValue) {
    const QString nines(10'000, u'9');
    const QString ten = u'1' + QString(10'000, u'0');
    EXPECT_EQ(compareDebianVersions(nines, ten), std::strong_ordering::less);
    EXPECT_EQ(compareDebianVersions(ten, ten), std::strong_ordering::equal);
    EXPECT_EQ(compareDebianVersions(text("18446744073709551616"), text("18446744073709551615")),
              std::strong_ordering::greater);
}

TEST(DebianVersions, whatAPersonCallsOneIsWithoutEpochAndRevision) {
    EXPECT_EQ(upstreamVersion(text("1:2.4.0-1~bpo12+1")), text("2.4.0"));
    EXPECT_EQ(upstreamVersion(text("2.4.0-rc1-2")), text("2.4.0-rc1"));
    EXPECT_EQ(upstreamVersion(text("2.4.0")), text("2.4.0"));
}

/// Each is before the next.
void expectOrder(std::initializer_list<const char *> versions) {
    for (auto one = versions.begin(); one != versions.end(); ++one) {
        const auto earlier = SemanticVersion::parse(text(*one));
        ASSERT_TRUE(earlier) << *one;
        EXPECT_EQ(*earlier, *earlier);
        for (auto later = one + 1; later != versions.end(); ++later) {
            const auto then = SemanticVersion::parse(text(*later));
            ASSERT_TRUE(then) << *later;
            EXPECT_LT(*earlier, *then) << *one << " and " << *later;
            EXPECT_GT(*then, *earlier) << *one << " and " << *later;
        }
    }
}

TEST(SemanticVersions, numbersCountAsNumbersAndWhatIsBeforeTheReleaseComesBeforeIt) {
    expectOrder({"1.0.0-1", "1.0.0-alpha", "1.0.0-alpha.1", "1.0.0-alpha.beta", "1.0.0-beta.2", "1.0.0-beta.11",
                 "1.0.0-rc.1", "1.0.0", "1.0.1", "1.2", "1.10.0", "2"});
}

TEST(SemanticVersions, missingNumbersAreZerosAndABuildDoesNotCount) {
    EXPECT_EQ(SemanticVersion::parse(text("2.4")), SemanticVersion::parse(text("2.4.0.0")));
    EXPECT_EQ(SemanticVersion::parse(text("2.4.0+a.1")), SemanticVersion::parse(text("2.04.0+b-2")));
}

TEST(SemanticVersions, whatIsNoVersionIsNone) {
    for (const char *one : {"", ".", "1.", ".1", "1..2", "v1", "1.x", "-1", "1-", "1.0-", "1.0-a..b", "1.0-ü", "1 .0",
                            "1.0-~", "１.0", "1,0", "+1"})
        EXPECT_FALSE(SemanticVersion::parse(text(one))) << one;
}

TEST(SemanticVersions, sixtyFourSignsAreTheMost) {
    EXPECT_TRUE(SemanticVersion::parse(QString(64, u'9')));
    EXPECT_FALSE(SemanticVersion::parse(QString(65, u'9')));
    EXPECT_FALSE(SemanticVersion::parse(QString(10'000, u'9')));
}

} // namespace
} // namespace tavrine
