#include "shell/OnboardingFlow.h"

#include "adapters/fake/FakeApplication.h"
#include "adapters/fake/FakeApplicationActivator.h"
#include "adapters/fake/VirtualTime.h"
#include "shell/LargeWindows.h"

#include <QWidget>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using Kind = LargeWindows::Kind;

class OnboardingFlowTest : public testing::Test {
protected:
    [[nodiscard]] QWidget *welcome() const { return windows.window(Kind::welcome); }

    VirtualTime time;
    FakeApplication application;
    FakeWorkspace workspace;
    FakeApplicationActivator activator{workspace};
    int welcomes = 0;
    int settingsOpenings = 0;
    std::function<void()> onClose;
    LargeWindows windows{application, time, [this]() -> ApplicationActivator & { return activator; }};
    std::unique_ptr<OnboardingFlow> flow =
        std::make_unique<OnboardingFlow>(windows, time,
                                         OnboardingFlow::Actions{.makeWelcomeWindow =
                                                                     [this](std::function<void()> close) {
                                                                         ++welcomes;
                                                                         onClose = std::move(close);
                                                                         return std::make_unique<QWidget>();
                                                                     },
                                                                 .openSettings = [this] { ++settingsOpenings; }});
};

TEST_F(OnboardingFlowTest, showsTheWindowAsARegularProgram) {
    flow->showOnboarding();
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::regular);
    ASSERT_TRUE(welcome());
    EXPECT_TRUE(welcome()->isVisible());
    EXPECT_EQ(activator.ownActivations(), 1);
}

TEST_F(OnboardingFlowTest, aWindowThatStandsIsShownAgain) {
    flow->showOnboarding();
    welcome()->hide();
    flow->showOnboarding();
    EXPECT_EQ(welcomes, 1);
    EXPECT_TRUE(welcome()->isVisible());
    EXPECT_EQ(activator.ownActivations(), 2);
}

TEST_F(OnboardingFlowTest, finishingOpensTheSettingsAndBringsThemToTheFrontALittleLater) {
    flow->showOnboarding();
    onClose();
    EXPECT_FALSE(welcome());
    EXPECT_EQ(settingsOpenings, 1);
    windows.keep(Kind::settings, std::make_unique<QWidget>());
    time.advance(299ms);
    EXPECT_FALSE(windows.window(Kind::settings)->isVisible());
    EXPECT_EQ(activator.ownActivations(), 1);
    time.advance(1ms);
    EXPECT_TRUE(windows.window(Kind::settings)->isVisible());
    EXPECT_EQ(activator.ownActivations(), 2);
}

TEST_F(OnboardingFlowTest, aFinishedWelcomeWindowIsMadeAnew) {
    flow->showOnboarding();
    onClose();
    flow->showOnboarding();
    EXPECT_EQ(welcomes, 2);
}

TEST_F(OnboardingFlowTest, leavesNothingBehindWhenItGoes) {
    flow->finish();
    flow.reset();
    time.advance(1s);
    EXPECT_EQ(activator.ownActivations(), 0);
}

} // namespace
} // namespace tavrine
