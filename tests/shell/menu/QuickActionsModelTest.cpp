#include "shell/menu/QuickActionsModel.h"

#include "adapters/fake/VirtualTime.h"
#include "base/UserDefaults.h"
#include "shell/menu/QuickActionsHeight.h"

#include <QTemporaryDir>

#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using enum QuickAction;
using testing::ElementsAre;
using testing::IsEmpty;

class QuickActions : public testing::Test {
protected:
    QuickActionsModel::Actions actions() {
        const auto note = [this](const char *what) { return [this, what] { done.emplace_back(what); }; };
        return {.isBuilt = [this](QuickAction action) { return action != notBuilt; },
                .mayCaptureScreen = [this] { return mayCapture; },
                .mayRecordScreen = [this] { return mayRecord; },
                .startSnip = note("snip"),
                .startScreenRecording = note("record"),
                .startQrScan = note("scan"),
                .openEditor = note("editor"),
                .openSettings = note("settings"),
                .bringSettingsForward = note("forward"),
                .canClean = [this] { return canClean; },
                .isCleaning = [this] { return isCleaning; },
                .toggleCleaning = [this] { isCleaning = !isCleaning; },
                .onDismissMenu = note("dismiss")};
    }
    std::vector<std::string> taken() { return std::exchange(done, {}); }

    QTemporaryDir folder;
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{folder.filePath(QStringLiteral("p.plist")), time, center};
    FeatureFlags flags{defaults};
    std::optional<QuickAction> notBuilt;
    bool mayCapture = true;
    bool mayRecord = true;
    bool canClean = true;
    bool isCleaning = false;
    std::vector<std::string> done;
    QuickActionsModel model{flags, defaults, center, time, actions()};
};

TEST_F(QuickActions, aToolStartsAMomentAfterTheMenuIsGone) {
    for (const auto &[action, tool] :
         {std::pair{screenshot, "snip"}, {screenRecord, "record"}, {qrScan, "scan"}, {editor, "editor"}}) {
        model.run(action);
        EXPECT_THAT(taken(), ElementsAre("dismiss"));
        time.advance(149ms);
        EXPECT_THAT(taken(), IsEmpty());
        time.advance(1ms);
        EXPECT_THAT(taken(), ElementsAre(tool));
    }
}

TEST_F(QuickActions, withoutThePermissionTheMenuStaysOpen) {
    mayCapture = mayRecord = false;
    model.run(screenshot);
    model.run(screenRecord);
    time.advance(1s);
    EXPECT_THAT(taken(), IsEmpty());
}

TEST_F(QuickActions, aScreenThatIsOnlyShownOverTimeIsRecordedAndNotCaptured) {
    mayCapture = false;
    model.run(screenshot);
    time.advance(1s);
    EXPECT_THAT(taken(), IsEmpty());
    model.run(screenRecord);
    time.advance(1s);
    EXPECT_THAT(taken(), ElementsAre("dismiss", "record"));
}

TEST_F(QuickActions, theSettingsComeLaterAndAreBroughtForwardTwice) {
    model.run(settings);
    EXPECT_THAT(taken(), ElementsAre("dismiss"));
    time.advance(179ms);
    EXPECT_THAT(taken(), IsEmpty());
    time.advance(1ms);
    EXPECT_THAT(taken(), ElementsAre("settings"));
    time.advance(119ms);
    EXPECT_THAT(taken(), IsEmpty());
    time.advance(1ms);
    EXPECT_THAT(taken(), ElementsAre("forward"));
}

TEST_F(QuickActions, theCleanerIsFlippedAndTheMenuStaysOpen) {
    EXPECT_EQ(model.subtitle(cleanMode), QStringLiteral("Active"));
    model.run(cleanMode);
    EXPECT_TRUE(model.isOn(cleanMode));
    EXPECT_EQ(model.subtitle(cleanMode), QStringLiteral("Input Blocked"));
    model.run(cleanMode);
    EXPECT_FALSE(model.isOn(cleanMode));
    EXPECT_THAT(taken(), IsEmpty());
}

/// Neither that the keyboard is free to be blocked nor that a permission is wanting.
TEST_F(QuickActions, theCleanersTileSaysWhereADesktopHasNoWayToBlockTheKeyboard) {
    canClean = false;
    EXPECT_EQ(model.subtitle(cleanMode), QStringLiteral("Not on This Desktop"));
    EXPECT_EQ(model.subtitle(screenshot), QStringLiteral("Capture & edit")) << "the others are";
    defaults.set(QStringLiteral("layoutShowSubtitles"), false);
    EXPECT_EQ(model.subtitle(cleanMode), QString());
}

TEST_F(QuickActions, tilesShowTheirLineOnlyWhereItIsWanted) {
    EXPECT_EQ(model.subtitle(screenshot), QStringLiteral("Capture & edit"));
    defaults.set(QStringLiteral("layoutShowSubtitles"), false);
    EXPECT_EQ(model.subtitle(screenshot), QString());
}

TEST_F(QuickActions, flagsAndPreferencesDecideWhatIsThere) {
    const std::pair<Feature, QuickAction> byFlag[] = {{Feature::loFi, loFi},
                                                      {Feature::keepAwake, keepAwake},
                                                      {Feature::snippingTool, screenshot},
                                                      {Feature::screenRecorder, screenRecord},
                                                      {Feature::cleaningMode, cleanMode},
                                                      {Feature::tavrineEditor, editor}};
    for (const auto &[feature, action] : byFlag) {
        EXPECT_TRUE(model.isVisible(action));
        flags.set(feature, false);
        EXPECT_FALSE(model.isVisible(action)) << textOf(action).id;
        flags.set(feature, true);
    }
    for (const auto &[key, action] :
         {std::pair{"layoutShowScreenshot", screenshot}, {"layoutShowQRScan", qrScan}, {"layoutShowEditor", editor}}) {
        defaults.set(QLatin1String(key), false);
        EXPECT_FALSE(model.isVisible(action)) << key;
    }
    EXPECT_TRUE(model.isVisible(settings));
}

TEST_F(QuickActions, aToolThatIsNotBuiltHasNoPlace) {
    notBuilt = screenRecord;
    EXPECT_FALSE(model.isVisible(screenRecord));
}

TEST_F(QuickActions, aPlaceStandsOnceHoweverOftenItIsStored) {
    defaults.set(QStringLiteral("layoutOrder"), QStringLiteral("qrScan,qrScan,loFi,loFi,qrScan"));
    EXPECT_THAT(model.rows(), ElementsAre(LayoutRow{false, {qrScan}}, LayoutRow{true, {loFi}},
                                          LayoutRow{false, {screenRecord, editor}}));
}

TEST_F(QuickActions, aHundredChangesOfFlagsAreFollowed) {
    int changes = 0;
    QObject::connect(&model, &QuickActionsModel::changed, &model, [&] { ++changes; });
    for (int i = 0; i < 100; ++i)
        flags.set(Feature::loFi, i % 2 == 1);
    EXPECT_GE(changes, 100);
    EXPECT_TRUE(model.isVisible(loFi));
}

class Height : public testing::Test {
protected:
    VirtualTime time;
    std::optional<double> wanted = 100;
    QuickActionsHeight height{time, [this] { return wanted; }};
};

TEST_F(Height, itNeverGoesBelowFortyFour) {
    wanted = 43.5;
    height.setNow();
    EXPECT_EQ(height.height(), 44);
    wanted = 44.5;
    height.setNow();
    EXPECT_EQ(height.height(), 44.5);
}

TEST_F(Height, noStepOfAnAnimationIsBelowFortyFourEither) {
    height.setNow();
    wanted = 10;
    height.animate(360ms);
    double lowest = height.height();
    for (int i = 0; i < 25; ++i) {
        time.advance(20ms);
        lowest = std::min(lowest, height.height());
    }
    EXPECT_FALSE(height.isAnimating());
    EXPECT_EQ(lowest, 44);
    EXPECT_EQ(height.height(), 44);
    wanted = 100;
    height.setNow();
    wanted = 10;
    height.setSoon();
    time.advance(50ms);
    EXPECT_EQ(height.height(), 44);
}

TEST_F(Height, aFlagIsFollowedAMomentLater) {
    height.setSoon();
    time.advance(49ms);
    EXPECT_EQ(height.height(), 44);
    time.advance(1ms);
    EXPECT_EQ(height.height(), 100);
}

TEST_F(Height, itRunsFromThePresentHeightToTheWantedOneWithinTheTime) {
    height.setNow();
    wanted = 200;
    height.animate(360ms);
    time.advance(20ms);
    EXPECT_TRUE(height.isAnimating());
    EXPECT_EQ(height.height(), 100);
    time.advance(180ms);
    EXPECT_NEAR(height.height(), 150, 12) << "half of the way after half of the time";
    time.advance(200ms);
    EXPECT_EQ(height.height(), 200);
    EXPECT_FALSE(height.isAnimating());
}

TEST_F(Height, itBeginsAndEndsSlowlyByTheCube) {
    height.setNow();
    wanted = 200;
    height.animate(400ms);
    time.advance(Seconds{0.0202}); // a trace behind each step from here on
    std::vector<double> heights;
    for (int step = 0; step < 24; ++step) { // a sixtieth of a second each
        time.advance(QuickActionsHeight::step);
        heights.push_back(height.height());
    }
    for (size_t step = 0; step < heights.size(); ++step) {
        const double t = double(step + 1) / 24;
        const double part = t < 0.5 ? 4 * std::pow(t, 3) : 1 - std::pow(2 - 2 * t, 3) / 2;
        EXPECT_NEAR(heights[step], 100 + 100 * part, 0.01) << step;
    }
    EXPECT_NEAR(heights[5], 106.25, 0.01) << "a quarter of the time";
    EXPECT_NEAR(heights[11], 150, 0.01);
    EXPECT_NEAR(heights[17], 193.75, 0.01);
    EXPECT_NEAR(heights[23], 200, 0.01);
}

TEST_F(Height, aDifferenceOfHalfAPointIsNone) {
    height.setNow();
    wanted = 100.5;
    height.animate(360ms);
    time.advance(20ms);
    EXPECT_FALSE(height.isAnimating());
    wanted = 100.6;
    height.animate(360ms);
    time.advance(20ms);
    EXPECT_TRUE(height.isAnimating());
}

TEST_F(Height, aNewAnimationEndsTheOneThatRuns) {
    height.setNow();
    wanted = 200;
    height.animate(360ms);
    time.advance(200ms);
    wanted = 60;
    height.animate(360ms);
    time.advance(280ms); // the first one would be at its end by now
    EXPECT_LT(height.height(), 120);
    time.advance(400ms);
    EXPECT_EQ(height.height(), 60);
}

TEST_F(Height, aPreferenceThatIsWrittenWhileItRunsDoesNotMakeItJump) {
    height.setNow();
    wanted = 200;
    height.animate(360ms);
    height.setSoon();
    double last = height.height();
    for (int step = 0; step < 40; ++step) {
        time.advance(16ms);
        EXPECT_GE(height.height(), last);
        EXPECT_LT(height.height() - last, 20) << "a jump";
        last = height.height();
    }
    EXPECT_EQ(height.height(), 200);
}

TEST_F(Height, withoutAContentNothingMoves) {
    wanted.reset();
    height.setNow();
    height.animate(360ms);
    time.advance(1s);
    EXPECT_EQ(height.height(), 44);
    EXPECT_FALSE(height.isAnimating());
}

} // namespace
} // namespace tavrine
