#include "base/Date.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

TEST(Date, descriptionIsInUtcWithTheFractionCutOff) {
    EXPECT_EQ(description({1769860800.0}), QStringLiteral("2026-01-31 12:00:00 +0000"));
    EXPECT_EQ(description({1769860800.999}), QStringLiteral("2026-01-31 12:00:00 +0000"));
    EXPECT_EQ(description({0.0}), QStringLiteral("1970-01-01 00:00:00 +0000"));
}

TEST(Date, descriptionBefore1970CutsTowardsThePast) {
    EXPECT_EQ(description({-0.25}), QStringLiteral("1969-12-31 23:59:59 +0000"));
}

TEST(Date, theReferenceDateIsTheBeginningOf2001) {
    EXPECT_EQ(description({Date::referenceDate}), QStringLiteral("2001-01-01 00:00:00 +0000"));
}

TEST(Date, theDistantDatesLieOutsideAllOthers) {
    EXPECT_LT(Date::distantPast(), Date{0.0});
    EXPECT_GT(Date::distantFuture(), Date{1769860800.0});
}

TEST(Date, aDifferenceIsALengthAndAddsBack) {
    const Date date{1769860800.5};
    EXPECT_EQ((date + Seconds{1.25}) - date, Seconds{1.25});
    EXPECT_EQ((date - Seconds{0.5}).secondsSince1970, 1769860800.0);
}

} // namespace
} // namespace tavrine
