// What the person is told of recordings where only the portal shows the screen.
#include "adapters/desktops/TriedAbilities.h"
#include "support/Eventually.h"
#include "support/ScreenCastPortal.h"

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

TEST(RecordingAbility, isThereOnceThePortalRemembersTheScreens) {
    const auto report = abilityReport::recording(CastPortal::Answer::there, true);
    EXPECT_EQ(report, abilityReport::there(Ability::recording));
    EXPECT_TRUE(report.reason.isEmpty() && report.step.isEmpty());
}

TEST(RecordingAbility, isLimitedWhereThePersonIsAskedAndSaysWhatToChoose) {
    const auto report = abilityReport::recording(CastPortal::Answer::there, false);
    EXPECT_EQ(report.state, AbilityState::limited);
    EXPECT_EQ(report.reason, QStringLiteral("This desktop asks you before it shows its screen."));
    EXPECT_EQ(report.step, QStringLiteral("Choose the screen when it asks, and let it remember your choice."));
}

TEST(RecordingAbility, isLimitedWhileThePortalHasNotAnswered) {
    for (const bool isRemembered : {false, true}) {
        const auto report = abilityReport::recording(CastPortal::Answer::asking, isRemembered);
        EXPECT_EQ(report.state, AbilityState::limited);
        EXPECT_EQ(report.reason, QStringLiteral("This desktop has not said yet whether it shows its screen."));
        EXPECT_EQ(report.step, QString());
    }
}

TEST(RecordingAbility, isMissingWithoutAPortalAndSaysWhatToInstall) {
    for (const bool isRemembered : {false, true}) {
        const auto report = abilityReport::recording(CastPortal::Answer::missing, isRemembered);
        EXPECT_EQ(report, abilityReport::missing(Ability::recording));
        EXPECT_EQ(report.state, AbilityState::missing);
        EXPECT_TRUE(report.step.contains(QStringLiteral("Plasma")));
        EXPECT_TRUE(report.step.contains(QStringLiteral("xdg-desktop-portal")));
    }
}

TEST(CastPortal, isAskedWithoutWaitingAndSaysThatItShowsScreens) {
    const ScreenCastPortal portal;
    CastPortal cast;
    EXPECT_EQ(cast.answer(), CastPortal::Answer::asking);
    EXPECT_TRUE(eventually([&] { return cast.answer() == CastPortal::Answer::there; }));
}

} // namespace
} // namespace tavrine::test
