// Where panels stand, on screens that come, shrink and go.
#include "shell/PanelController.h"
#include "shell/PanelFixture.h"

namespace tavrine {
namespace {

class PanelPlacesTest : public testing::PanelFixture {};

TEST_F(PanelPlacesTest, withoutASavedFrameTheClassicPanelStandsBottomRight) {
    controller.ensureClassicPanel();
    EXPECT_EQ(classic()->frame(), QRectF(1440 - 320 - 20, 20, 320, 450));
}

TEST_F(PanelPlacesTest, theBottomIsThatOfTheVisibleFrame) {
    screens.setScreens({{.number = 1,
                         .localizedName = {},
                         .frame = QRectF(0, 0, 1000, 800),
                         .visibleFrame = QRectF(50, 60, 900, 700),
                         .scale = 1}});
    controller.ensureClassicPanel();
    EXPECT_EQ(classic()->frame().topLeft(), QPointF(950 - 320 - 20, 80));
}

TEST_F(PanelPlacesTest, theClassicPanelComesBackWhereThePersonPutIt) {
    controller.toggleClassicPanel();
    classic()->moveByPerson({200, 300});
    controller.unloadClipboardPanels();
    controller.ensureClassicPanel();
    EXPECT_EQ(classic()->frame(), QRectF(200, 300, 320, 450));
}

TEST_F(PanelPlacesTest, aSavedFrameThatIsNoFrameCountsAsNone) {
    for (const char *text : {"", "1 2 3", "1 2 3 4 5", "a b c d", "1 2 3 x"}) {
        defaults.set(QStringLiteral("TavrineHistoryFrame"), QString::fromLatin1(text));
        controller.unloadClipboardPanels();
        controller.ensureClassicPanel();
        EXPECT_EQ(classic()->frame().topLeft(), QPointF(1100, 20)) << text;
    }
}

TEST_F(PanelPlacesTest, aSavedFrameOfTheWrongTypeCountsAsNone) {
    defaults.set(QStringLiteral("TavrineHistoryFrame"), 12);
    controller.ensureClassicPanel();
    EXPECT_EQ(classic()->frame().topLeft(), QPointF(1100, 20));
}

TEST_F(PanelPlacesTest, aScreenUnpluggedUnderAPanelSendsItToAnother) {
    const Screen first = screens.screens().first();
    Screen second = first;
    second.number = 2;
    second.frame = second.visibleFrame = QRectF(1440, 0, 1000, 800);
    screens.setScreens({first, second});
    screens.setKeyboardScreen(1);
    controller.toggleSearchPanel();
    EXPECT_EQ(search()->frame(), QRectF(1940 - 340, 400 - 250 + 60, 680, 500));
    screens.setKeyboardScreen(-1);
    screens.setScreens({first});
    EXPECT_TRUE(search()->isVisible());
    EXPECT_EQ(search()->frame(), QRectF(720 - 340, 438 - 250 + 60, 680, 500));
}

TEST_F(PanelPlacesTest, aScreenThatShrinksTakesItsPanelsAlong) {
    controller.toggleSearchPanel();
    controller.toggleClassicPanel();
    classic()->moveByPerson({1000, 400});
    Screen smaller = screens.screens().first();
    smaller.frame = QRectF(0, 0, 1024, 768);
    smaller.visibleFrame = QRectF(0, 0, 1024, 744);
    screens.setScreens({smaller});
    EXPECT_EQ(search()->frame(), QRectF(512 - 340, 372 - 250 + 60, 680, 500));
    EXPECT_EQ(classic()->frame(), QRectF(1024 - 320, 744 - 450, 320, 450));
}

TEST_F(PanelPlacesTest, onALowScreenThePanelsStandUnderTheShelfsBandAndAreNotHiddenByIt) {
    Screen low = screens.screens().first();
    const auto frameAt = [&](QSizeF size) {
        low.frame = low.visibleFrame = QRectF({0, 0}, size);
        screens.setScreens({low});
        controller.toggleSearchPanel();
        const QRectF frame = search()->frame();
        controller.toggleSearchPanel();
        return frame;
    };
    EXPECT_EQ(frameAt({1100, 620}), QRectF(550 - 340, 310 - 250 + 60, 680, 500)); // it just fits
    EXPECT_EQ(frameAt({1100, 618}), QRectF(550 - 340, 618 - 24 - 500, 680, 500));
    EXPECT_EQ(frameAt({1100, 600}), QRectF(550 - 340, 600 - 24 - 500, 680, 500));
    EXPECT_EQ(frameAt({684, 400}), QRectF(2, 0, 680, 400 - 24)); // and is cut where there is no room at all
    defaults.set(QStringLiteral("featureNotchShelf"), false);
    EXPECT_EQ(frameAt({1100, 600}), QRectF(550 - 340, 600 - 500, 680, 500));
}

TEST_F(PanelPlacesTest, aScreenThatShrinksMeanwhileDoesNotHideTheClassicPanel) {
    controller.toggleClassicPanel();
    classic()->moveByPerson({1000, 400});
    controller.toggleClassicPanel();
    time.advance(50ms); // it is on its way off the screen
    Screen smaller = screens.screens().first();
    smaller.frame = smaller.visibleFrame = QRectF(0, 0, 1100, 700);
    screens.setScreens({smaller});
    time.advance(1s);
    smaller.frame = smaller.visibleFrame = QRectF(0, 0, 800, 600);
    screens.setScreens({smaller});
    controller.toggleClassicPanel();
    EXPECT_EQ(classic()->frame(), QRectF(800 - 320, 600 - 450, 320, 450));
}

TEST_F(PanelPlacesTest, theLastScreenUnpluggedLeavesThePanelWhereItIs) {
    controller.toggleSearchPanel();
    const QRectF before = search()->frame();
    screens.setScreens({});
    controller.toggleSearchPanel();
    controller.toggleSearchPanel();
    EXPECT_EQ(search()->frame(), before);
    EXPECT_TRUE(search()->isVisible());
}

TEST_F(PanelPlacesTest, aSavedFrameOnAScreenThatIsGoneComesOntoTheMainScreen) {
    defaults.set(QStringLiteral("TavrineHistoryFrame"), QStringLiteral("4000 -900 320 450"));
    controller.ensureClassicPanel();
    EXPECT_EQ(classic()->frame().topLeft(), QPointF(1120, 0));
}

TEST_F(PanelPlacesTest, theSearchPanelIsCentredSixtyAboveTheMiddle) {
    controller.toggleSearchPanel();
    EXPECT_EQ(search()->frame(), QRectF(720 - 340, 438 - 250 + 60, 680, 500));
}

TEST_F(PanelPlacesTest, theEmojiPanelIsCentredSeventyAboveTheMiddle) {
    controller.showOrDismissEmojiPanel();
    EXPECT_EQ(emoji()->frame(), QRectF(720 - 300, 438 - 230 + 70, 600, 460));
}

TEST_F(PanelPlacesTest, theSearchPanelIsCentredAtEveryShowing) {
    controller.toggleSearchPanel();
    search()->setFrame({0, 0, 680, 500});
    controller.toggleSearchPanel();
    controller.toggleSearchPanel();
    EXPECT_EQ(search()->frame().x(), 380);
}

TEST_F(PanelPlacesTest, withoutAScreenPanelsStayWhereTheyAre) {
    screens.setScreens({});
    controller.toggleClassicPanel();
    controller.toggleSearchPanel();
    EXPECT_EQ(classic()->frame().topLeft(), QPointF(0, 0));
    EXPECT_EQ(search()->frame().topLeft(), QPointF(0, 0));
}

} // namespace
} // namespace tavrine
