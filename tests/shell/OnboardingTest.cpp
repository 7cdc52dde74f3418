#include "adapters/fake/FakeAccess.h"
#include "adapters/fake/FakeApplication.h"
#include "adapters/fake/FakeUrlOpener.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "shell/OnboardingModel.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::Pair;
using Page = OnboardingModel::Page;

QString str(const char *text) {
    return QString::fromUtf8(text);
}

class OnboardingModelTest : public testing::Test {
protected:
    [[nodiscard]] bool isStoredAsCompleted() const { return defaults.contains(str("hasCompletedOnboarding")); }

    QTemporaryDir folder;
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{folder.filePath(str("defaults.plist")), time, center};
    FakeAccess access;
    FakeUrlOpener urlOpener;
    int closes = 0;
    OnboardingModel model{{defaults, access, time, urlOpener}, [this] { ++closes; }};
};

TEST_F(OnboardingModelTest, beginsOnTheFirstPageGoingForward) {
    EXPECT_EQ(model.currentPage(), Page::welcome);
    EXPECT_TRUE(model.goingForward());
    EXPECT_FALSE(model.hasCompletedOnboarding());
}

TEST_F(OnboardingModelTest, itsButtonLeadsFromPageToPage) {
    model.goForward();
    EXPECT_EQ(model.currentPage(), Page::features);
    model.goForward();
    EXPECT_EQ(model.currentPage(), Page::permissions);
    EXPECT_TRUE(model.goingForward());
    EXPECT_EQ(closes, 0);
}

TEST_F(OnboardingModelTest, aWayBackGoesBackward) {
    model.setCurrentPage(Page::permissions);
    model.setCurrentPage(Page::features);
    EXPECT_FALSE(model.goingForward());
    model.setCurrentPage(Page::features);
    EXPECT_FALSE(model.goingForward());
    model.goForward();
    EXPECT_TRUE(model.goingForward());
}

TEST_F(OnboardingModelTest, quittingOnTheWayStoresNothing) {
    model.goForward();
    model.goForward();
    EXPECT_FALSE(isStoredAsCompleted());
}

TEST_F(OnboardingModelTest, finishingWithoutAnyGrantStoresAndCloses) {
    for (int i = 0; i < 3; ++i)
        model.goForward();
    EXPECT_EQ(closes, 1);
    EXPECT_EQ(defaults.get<bool>(str("hasCompletedOnboarding")), true);
    EXPECT_TRUE(model.hasCompletedOnboarding());
    EXPECT_FALSE(access.isAccessibilityTrusted() || access.isScreenCaptureGranted());
}

TEST_F(OnboardingModelTest, isStoredBeforeTheWindowCloses) {
    bool wasStored = false;
    OnboardingModel other({defaults, access, time, urlOpener}, [&] { wasStored = isStoredAsCompleted(); });
    other.setCurrentPage(Page::permissions);
    other.goForward();
    EXPECT_TRUE(wasStored);
}

TEST_F(OnboardingModelTest, closingMayDestroyIt) {
    std::unique_ptr<OnboardingModel> other;
    bool isClosed = false;
    other = std::make_unique<OnboardingModel>(OnboardingModel::Ports{defaults, access, time, urlOpener}, [&] {
        other.reset();
        isClosed = true;
    });
    other->setCurrentPage(Page::permissions);
    other->goForward();
    EXPECT_TRUE(isClosed);
}

TEST_F(OnboardingModelTest, theRowsShowAndRequestTheTwoGrants) {
    const auto &rows = OnboardingModel::permissionRows;
    ASSERT_EQ(rows.size(), 2U);
    (model.permissionChecker().*rows[0].onGrant)();
    EXPECT_EQ(access.accessibilityPrompts(), 1);
    EXPECT_EQ(access.screenCapturePrompts(), 0);
    (model.permissionChecker().*rows[1].onGrant)();
    EXPECT_EQ(access.screenCapturePrompts(), 1);

    access.setAccessibilityTrusted(true);
    time.advance(2s);
    EXPECT_TRUE((model.permissionChecker().*rows[0].isGranted)());
    EXPECT_FALSE((model.permissionChecker().*rows[1].isGranted)());
    access.setScreenCaptureGranted(true);
    time.advance(2s);
    EXPECT_TRUE((model.permissionChecker().*rows[1].isGranted)());
}

TEST_F(OnboardingModelTest, theRowsReadAsTheyShould) {
    const auto &rows = OnboardingModel::permissionRows;
    EXPECT_STREQ(rows[0].icon, "hand.point.up.left");
    EXPECT_STREQ(rows[0].name, "Accessibility");
    EXPECT_STREQ(rows[0].description, "Required for clipboard monitoring and keyboard shortcuts");
    EXPECT_STREQ(rows[1].icon, "rectangle.dashed.badge.record");
    EXPECT_STREQ(rows[1].name, "Screen Recording");
    EXPECT_STREQ(rows[1].description, "Required for OCR and screenshot capture");
}

TEST_F(OnboardingModelTest, theElevenFeaturesStandInTheirOrder) {
    std::vector<std::pair<std::string, std::string>> features;
    for (const auto &cell : OnboardingModel::features)
        features.emplace_back(cell.symbol, cell.name);
    EXPECT_THAT(features, ElementsAre(Pair("doc.on.clipboard", "Clipboard History"), Pair("text.viewfinder", "OCR"),
                                      Pair("tray.2", "Notch Shelf"), Pair("pencil.tip", "Annotations"),
                                      Pair("moon.zzz", "Keep Awake"), Pair("camera", "Screenshots"),
                                      Pair("antenna.radiowaves.left.and.right", "Network Speed Monitor"),
                                      Pair("face.smiling", "Emoji Picker"), Pair("headphones", "Lo-Fi Vibe Mode"),
                                      Pair("keyboard", "Cleaning Mode"), Pair("scissors", "Snipping Tool")));
}

TEST_F(OnboardingModelTest, theKeysToTryAreThoseOfThePreferences) {
    using Shortcut = OnboardingModel::Shortcut;
    EXPECT_THAT(model.shortcuts(),
                ElementsAre(Shortcut{str("⌘⇧V"), str("Clipboard")}, Shortcut{str("⌘⇧E"), str("Emoji Picker")},
                            Shortcut{str("⌘⇧2"), str("Screenshot")}));
    defaults.set(str("HotkeyCharacter"), str("k"));
    defaults.set(str("emojiHotkeyMode"), str("doubleOption"));
    EXPECT_THAT(model.shortcuts(),
                ElementsAre(Shortcut{str("⌘⇧K"), str("Clipboard")}, Shortcut{str("⌥ twice"), str("Emoji Picker")},
                            Shortcut{str("⌘⇧2"), str("Screenshot")}));
}

TEST_F(OnboardingModelTest, aToolThatNoKeyOpensIsNotAmongThoseToTry) {
    defaults.set(str("clipboardHotkeyMode"), str("nonsense"));
    defaults.set(str("featureSnippingTool"), false);
    EXPECT_THAT(model.shortcuts(), ElementsAre(OnboardingModel::Shortcut{str("⌘⇧E"), str("Emoji Picker")}));
}

TEST_F(OnboardingModelTest, theButtonsReadAsTheyShould) {
    std::vector<std::string> buttons;
    for (const auto &page : OnboardingModel::pages)
        buttons.emplace_back(page.button);
    EXPECT_THAT(buttons, ElementsAre("Get Started", "Continue", "Done, Let's Go"));
}

TEST_F(OnboardingModelTest, exploringOpensThePageOfTheFeatures) {
    model.exploreFeatures();
    ASSERT_EQ(urlOpener.opened().size(), 1);
    EXPECT_TRUE(urlOpener.opened().first().path().endsWith(str("/pages/features.html")));
}

} // namespace
} // namespace tavrine
