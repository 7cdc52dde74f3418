#include "capture/editor/EditorFlow.h"

#include "adapters/fake/FakeApplication.h"
#include "adapters/fake/FakeScreens.h"
#include "adapters/fake/VirtualTime.h"

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

QImage bitmap(int width, int height) {
    return {width, height, QImage::Format_RGB32};
}

class EditorFlowTest : public testing::Test {
protected:
    EditorFlowTest() {
        screens.setScreens({{1, {}, {0, 0, 1440, 900}, {0, 0, 1440, 876}, 1.0},
                            {2, {}, {1440, 0, 1920, 1080}, {1440, 40, 1920, 1040}, 1.0}});
    }
    std::string outputOf(const std::function<void()> &work) {
        testing::internal::CaptureStdout();
        work();
        return testing::internal::GetCapturedStdout();
    }
    void openDirectly() {
        static_cast<void>(outputOf([this] { flow->openEditorDirectly(bitmap(7, 5)); }));
    }
    void openLanding(const std::optional<QImage> &image = {}) {
        static_cast<void>(outputOf([&] { flow->openTavrineEditor(image); }));
    }

    VirtualTime time;
    FakeApplication application;
    FakeScreens screens;
    std::vector<std::string> calls;
    std::vector<EditorFlow::Window> made;
    bool hasWindow = false;
    std::unique_ptr<EditorFlow> flow = std::make_unique<EditorFlow>(
        EditorFlow::Ports{time, application, [this]() -> Screens & { return screens; }},
        EditorFlow::Windows{.hasWindow = [this] { return hasWindow; },
                            .closeWindow =
                                [this] {
                                    hasWindow = false;
                                    calls.emplace_back("close");
                                },
                            .makeWindow =
                                [this](const EditorFlow::Window &window) {
                                    hasWindow = true;
                                    made.push_back(window);
                                    calls.emplace_back("make");
                                },
                            .bringWindowForward = [this] { calls.emplace_back("front"); },
                            .activateApplication = [this] { calls.emplace_back("activate"); },
                            .loadImage = [](const QString &name) -> std::optional<QImage> {
                                return name == QStringLiteral("a.jpg") ? std::optional(bitmap(9, 9)) : std::nullopt;
                            }});
};

TEST_F(EditorFlowTest, aPictureOpensInAWindowOfItsOwn) {
    EXPECT_EQ(outputOf([this] { flow->openEditorDirectly(bitmap(7, 5)); }),
              "DEBUG: AppDelegate - openEditorDirectly called\n");
    ASSERT_EQ(made.size(), 1U);
    EXPECT_EQ(made[0].title, QStringLiteral("Tavrine Snap Editor"));
    EXPECT_EQ(made[0].frame.size(), QSizeF(900, 600));
    ASSERT_TRUE(made[0].image);
    EXPECT_EQ(made[0].image->size(), QSize(7, 5));
    EXPECT_FALSE(made[0].hasLanding);
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::regular);
    EXPECT_THAT(calls, ElementsAre("make", "front", "activate"));
}

TEST_F(EditorFlowTest, itStandsInTheMiddleOfTheScreenUnderTheMouse) {
    screens.setMouseLocation({1500, 500});
    openDirectly();
    EXPECT_EQ(made[0].frame, QRectF(1440 + 960 - 450, 40 + 520 - 300, 900, 600));
    screens.setMouseLocation({100, 100});
    openDirectly();
    EXPECT_EQ(made[1].frame, QRectF(720 - 450, 438 - 300, 900, 600));
}

TEST_F(EditorFlowTest, withTheMouseOnNoScreenTheMainOneCounts) {
    screens.setMouseLocation({-500, 9000});
    screens.setKeyboardScreen(1);
    openDirectly();
    EXPECT_EQ(made[0].frame.center(), QPointF(1440 + 960, 40 + 520));
}

TEST_F(EditorFlowTest, aScreenWhoseFreePartIsNoNumberCountsWhole) {
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    screens.setScreens({{1, {}, {0, 0, 1440, 900}, {none, 0, none, 876}, 1.0}});
    openDirectly();
    EXPECT_EQ(made[0].frame, QRectF(720 - 450, 450 - 300, 900, 600));
}

TEST_F(EditorFlowTest, withoutAnyScreenItStandsAtTheOrigin) {
    screens.setScreens({});
    openDirectly();
    EXPECT_EQ(made[0].frame, QRectF(0, 0, 900, 600));
}

TEST_F(EditorFlowTest, onASmallScreenItGetsTheRoomThatThereIsLessATitle) {
    screens.setScreens({{1, {}, {0, 0, 1024, 600}, {0, 30, 1024, 570}, 1.0}});
    openDirectly();
    EXPECT_EQ(made[0].frame, QRectF(62, 70, 900, 530));
    openLanding();
    EXPECT_EQ(made[1].frame, QRectF(32, 70, 960, 530));
    screens.setScreens({{1, {}, {0, 0, 800, 480}, {0, 0, 800, 480}, 1.0}});
    openDirectly();
    EXPECT_EQ(made[2].frame, QRectF(0, 40, 800, 440));
}

TEST_F(EditorFlowTest, whereItJustFitsItsTitleDoesToo) {
    screens.setScreens({{1, {}, {0, 0, 1000, 640}, {0, 0, 1000, 640}, 1.0}});
    openDirectly();
    EXPECT_EQ(made[0].frame, QRectF(50, 40, 900, 600));
    screens.setScreens({{1, {}, {0, 0, 1000, 680}, {0, 0, 1000, 680}, 1.0}});
    openDirectly();
    EXPECT_EQ(made[1].frame, QRectF(50, 40, 900, 600)) << "in the middle";
}

TEST_F(EditorFlowTest, theWindowWithThePageStandsOnTheMainScreen) {
    screens.setMouseLocation({100, 100});
    screens.setKeyboardScreen(1);
    EXPECT_EQ(outputOf([this] { flow->openTavrineEditor({}); }), "DEBUG: AppDelegate - Editor window opened!\n");
    ASSERT_EQ(made.size(), 1U);
    EXPECT_EQ(made[0].title, QStringLiteral("Tavrine Editor"));
    EXPECT_EQ(made[0].frame, QRectF(1440 + 960 - 480, 40 + 520 - 330, 960, 660));
    EXPECT_TRUE(made[0].hasLanding);
    EXPECT_FALSE(made[0].image);
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::regular);
}

TEST_F(EditorFlowTest, itComesToTheFrontALittleLater) {
    openLanding(bitmap(3, 3));
    EXPECT_TRUE(made[0].image);
    EXPECT_THAT(calls, ElementsAre("make"));
    time.advance(119ms);
    EXPECT_THAT(calls, ElementsAre("make"));
    time.advance(1ms);
    EXPECT_THAT(calls, ElementsAre("make", "activate", "front"));
}

TEST_F(EditorFlowTest, aWindowThatWasClosedMeanwhileDoesNotComeBack) {
    openLanding();
    hasWindow = false;
    application.setActivationPolicy(ActivationPolicy::accessory);
    time.advance(1s);
    EXPECT_THAT(calls, ElementsAre("make"));
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::accessory);
}

TEST_F(EditorFlowTest, theNewWindowIsRegularAlsoWhenTheOldOneLeftTheTaskBarMeanwhile) {
    openDirectly();
    openLanding();
    time.advance(100ms);
    application.setActivationPolicy(ActivationPolicy::accessory); // 0.1 s after the old window closed
    time.advance(20ms);
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::regular);
}

TEST_F(EditorFlowTest, oneWindowStandsAtATime) {
    openDirectly();
    openDirectly();
    openLanding();
    EXPECT_THAT(calls, ElementsAre("make", "front", "activate", "close", "make", "front", "activate", "close", "make"));
}

TEST_F(EditorFlowTest, aPictureOfTheHistoryOpensLikeAnyOther) {
    EXPECT_EQ(outputOf([this] { flow->openEditorForItem(QStringLiteral("a.jpg")); }), "");
    ASSERT_EQ(made.size(), 1U);
    EXPECT_EQ(made[0].title, QStringLiteral("Tavrine Snap Editor"));
    EXPECT_EQ(made[0].image->size(), QSize(9, 9));
}

TEST_F(EditorFlowTest, aFileThatCannotBeReadLeavesTheOpenWindow) {
    openDirectly();
    calls.clear();
    flow->openEditorForItem(QStringLiteral("gone.jpg"));
    EXPECT_THAT(calls, IsEmpty());
    EXPECT_TRUE(hasWindow);
}

} // namespace
} // namespace tavrine
