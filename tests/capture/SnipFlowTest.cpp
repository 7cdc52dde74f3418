#include "capture/SnipFlow.h"

#include "SnipTest.h"
#include "adapters/fake/FakeColorSampler.h"
#include "capture/ColorPickerManager.h"
#include "look/Motion.h"

#include <QFileInfo>

#include <future>

namespace tavrine {
namespace {

class SnipFlowTest : public SnipTest {
protected:
    FakePanelWindows::Window &cardWindow() { return static_cast<FakePanelWindows::Window &>(*lastWindow); }
    /// Shows a card and remembers its window.
    void show(const QImage &image = picture()) {
        flow->showSnipPreview(image);
        lastWindow = flow->previewWindow();
    }
    PanelWindow *lastWindow = nullptr;
};

TEST_F(SnipFlowTest, theWayOfMenusAsksForThePermission) {
    flow->startSnip();
    EXPECT_EQ(permissionQuestions, 1);
    EXPECT_EQ(launcher.tasks().size(), 1);
}

TEST_F(SnipFlowTest, withoutThePermissionThereIsNoCapture) {
    mayCapture = false;
    flow->startSnip();
    EXPECT_EQ(permissionQuestions, 1);
    EXPECT_THAT(launcher.tasks(), IsEmpty());
}

TEST_F(SnipFlowTest, aCaptureStandsOnThePasteboardAndOnACard) {
    EXPECT_EQ(outputOf([this] { flow->presentSnip(picture(50, 20)); }),
              "DEBUG: AppDelegate - Received snip image callback! Showing preview...\n");
    EXPECT_EQ(pasteboard.clearCount(), 1);
    EXPECT_EQ(pasteboard.changeCount(), 1);
    EXPECT_EQ(pasteboard.image()->size(), QSize(50, 20));
    ASSERT_EQ(stored.size(), 1);
    EXPECT_TRUE(flow->isPreviewShown());
    EXPECT_EQ(card().image().size(), QSize(50, 20));
    EXPECT_EQ(card().remaining(), 7.0);
    EXPECT_TRUE(card().isCountingDown());
}

TEST_F(SnipFlowTest, aCaptureThatCannotBeStoredStaysOnThePasteboardWithoutACard) {
    storedName.reset();
    flow->presentSnip(picture());
    EXPECT_NE(pasteboard.image(), std::nullopt);
    EXPECT_FALSE(flow->isPreviewShown());
    EXPECT_EQ(windows.made(), 0);
}

TEST_F(SnipFlowTest, aLargeCaptureIsStoredBesideTheMainThreadAndThenGetsItsCard) {
    show(picture(10, 10));
    std::promise<void> gate;
    whileStoring = [opened = gate.get_future().share()] { opened.wait(); };
    flow->startCapture();
    time.advance(200ms);
    ASSERT_TRUE(picture(501, 500).save(tool(0).arguments().last()));
    tool(0).finish(0);
    ASSERT_TRUE(happens([this] { return !captured.empty(); }));
    EXPECT_EQ(pasteboard.image()->size(), QSize(501, 500));
    time.advance(100ms);
    EXPECT_TRUE(windows.visibleTitles().isEmpty()) << "the last card does not come back meanwhile";
    gate.set_value();
    ASSERT_TRUE(happens([this] { return card().image().width() == 501; }));
    EXPECT_EQ(windows.visibleTitles(), QStringList(text("Screenshot")));
    EXPECT_EQ(card().remaining(), 7.0);
}

TEST_F(SnipFlowTest, aLargeCaptureThatCannotBeStoredBringsTheLastCardBack) {
    show(picture(10, 10));
    storedName.reset();
    flow->startCapture();
    time.advance(200ms);
    ASSERT_TRUE(picture(501, 500).save(tool(0).arguments().last()));
    tool(0).finish(0);
    ASSERT_TRUE(happens([this] { return !windows.visibleTitles().isEmpty(); }));
    EXPECT_EQ(card().image().width(), 10);
}

TEST_F(SnipFlowTest, aCaptureOfOnePixelGetsACard) {
    flow->presentSnip(picture(1, 1));
    EXPECT_TRUE(flow->isPreviewShown());
}

TEST_F(SnipFlowTest, theCardIsAFloatingPanelThatTakesNoKeyboard) {
    show();
    const PanelDescription &description = cardWindow().description();
    EXPECT_EQ(description.contentSize, QSizeF(340, 248));
    EXPECT_EQ(description.level, 3);
    EXPECT_EQ(description.collectionBehavior, 265U);
    EXPECT_TRUE(description.isClear);
    EXPECT_FALSE(description.hasShadow);
    EXPECT_FALSE(description.canBecomeKey);
    EXPECT_FALSE(description.ignoresMouseEvents);
    EXPECT_EQ(cardWindow().frame(), QRectF(18, 18, 340, 248));
}

TEST_F(SnipFlowTest, theCardTakesTheKeyboardWhenItIsAskedToAndKeepsItsTime) {
    flow->giveCardKeyboard(); // there is none
    EXPECT_EQ(windows.living(), 0);
    show();
    time.advance(3s);
    flow->giveCardKeyboard();
    lastWindow = flow->previewWindow();
    EXPECT_TRUE(cardWindow().isKey());
    EXPECT_EQ(cardWindow().frame(), QRectF(18, 18, 340, 248));
    EXPECT_EQ(cardWindow().alpha(), 1.0);
    EXPECT_NEAR(card().remaining(), 4.0, 1e-6);
    time.runPending();
    EXPECT_EQ(windows.living(), 1);
    flow->giveCardKeyboard(); // again, from another window
    EXPECT_EQ(flow->previewWindow(), lastWindow);
    card().pressDismiss();
    time.advance(160ms);
    EXPECT_FALSE(flow->isPreviewShown());
    EXPECT_EQ(windows.living(), 0);
    EXPECT_EQ(windows.keyWindow(), nullptr);
}

TEST_F(SnipFlowTest, aCardThatMakesRoomForACaptureDoesNotComeBackForTheKeyboard) {
    for (const bool hadKeyboard : {false, true}) {
        show();
        if (hadKeyboard)
            flow->giveCardKeyboard();
        flow->startCapture();
        flow->giveCardKeyboard();
        lastWindow = flow->previewWindow();
        EXPECT_FALSE(cardWindow().isVisible()) << hadKeyboard;
        time.advance(200ms);
        tool(hadKeyboard ? 1 : 0).finish(1);
        time.runPending();
    }
}

TEST_F(SnipFlowTest, theCardWithTheKeyboardMakesRoomForACaptureAndGivesItsPlaceToTheNextCard) {
    show();
    flow->giveCardKeyboard();
    lastWindow = flow->previewWindow();
    flow->startCapture();
    EXPECT_FALSE(cardWindow().isVisible());
    time.advance(200ms);
    tool(0).finish(1);
    time.runPending();
    EXPECT_TRUE(cardWindow().isKey());
    show();
    time.runPending();
    EXPECT_EQ(windows.living(), 1);
    EXPECT_FALSE(cardWindow().description().canBecomeKey);
}

TEST_F(SnipFlowTest, theCardGoesAfterSevenSecondsAndAFade) {
    show();
    time.advance(6999ms);
    EXPECT_TRUE(flow->isPreviewShown());
    time.advance(1ms);
    EXPECT_FALSE(flow->isPreviewShown());
    EXPECT_TRUE(cardWindow().isVisible());
    EXPECT_EQ(cardWindow().alpha(), 1.0);
    time.advance(Seconds{0.1005}); // six frames
    EXPECT_NEAR(cardWindow().alpha(), 1 - look::easeIn.at(0.1 / 0.16), 1e-6);
    time.advance(Seconds{0.0585});
    EXPECT_EQ(windows.living(), 1);
    EXPECT_TRUE(cardWindow().isVisible());
    time.advance(1ms);
    EXPECT_EQ(windows.living(), 0);
    EXPECT_EQ(time.timerCount(), 0);
}

TEST_F(SnipFlowTest, aNewCaptureReplacesTheCardAtOnceAndStartsItsTimeAnew) {
    show(picture(10, 10));
    time.advance(6s);
    show(picture(20, 20));
    time.runPending();
    EXPECT_EQ(windows.living(), 1);
    EXPECT_EQ(card().image().width(), 20);
    EXPECT_EQ(card().remaining(), 7.0);
    time.advance(6950ms);
    EXPECT_TRUE(flow->isPreviewShown());
}

TEST_F(SnipFlowTest, newDismissesTheCardFirstAndStartsTheToolAFifthOfASecondLater) {
    show();
    card().pressNew();
    EXPECT_FALSE(flow->isPreviewShown());
    time.advance(199ms);
    EXPECT_EQ(windows.living(), 0); // the fade is over, so the card is not in the capture
    EXPECT_THAT(launcher.tasks(), IsEmpty());
    time.advance(1ms);
    EXPECT_EQ(launcher.tasks().size(), 1);
    EXPECT_EQ(permissionQuestions, 0);
}

TEST_F(SnipFlowTest, newPressedTwiceStartsOneTool) {
    show();
    SnippetPreviewModel &model = card();
    model.pressNew();
    model.pressNew();
    time.advance(1s);
    EXPECT_EQ(launcher.tasks().size(), 1);
}

TEST_F(SnipFlowTest, copyHasNoEffect) {
    flow->presentSnip(picture());
    card().pressCopy();
    EXPECT_EQ(pasteboard.clearCount(), 1);
}

TEST_F(SnipFlowTest, editDismissesTheCardAndOpensTheEditor) {
    show();
    card().pressEdit();
    EXPECT_FALSE(flow->isPreviewShown());
    EXPECT_THAT(events, ElementsAre(text("editor")));
}

TEST_F(SnipFlowTest, getTextLeavesTheCardAndItsCountdown) {
    show();
    card().pressGetText();
    EXPECT_THAT(events, ElementsAre(text("text")));
    EXPECT_TRUE(card().isCountingDown());
}

TEST_F(SnipFlowTest, dismissFadesTheCard) {
    show();
    card().pressDismiss();
    EXPECT_FALSE(flow->isPreviewShown());
    EXPECT_TRUE(cardWindow().isVisible());
    time.advance(1s);
    EXPECT_EQ(windows.living(), 0);
}

// Uploads.

TEST_F(SnipFlowTest, theCardShowsHowItsUploadGoesAndGoesAfterTheLink) {
    configureUpload();
    show();
    card().pressUpload();
    EXPECT_TRUE(card().isCountingDown()); // its picture is no PNG yet
    ASSERT_TRUE(happens([&] { return card().uploadButton().state() == UploadButtonState::done; }));
    EXPECT_FALSE(card().isCountingDown());
    EXPECT_EQ(pasteboard.string(), text("https://i.example/1"));
    time.advance(799ms);
    EXPECT_TRUE(flow->isPreviewShown());
    time.advance(1ms);
    EXPECT_FALSE(flow->isPreviewShown());
}

TEST_F(SnipFlowTest, anUploadThatEndsAfterItsCardDoesNotTouchTheNextOne) {
    configureUpload();
    show();
    card().pressUpload();
    show();
    ASSERT_TRUE(happens([&] { return pasteboard.string() == text("https://i.example/1"); }));
    time.advance(2s);
    EXPECT_TRUE(flow->isPreviewShown());
    EXPECT_TRUE(card().isCountingDown());
    EXPECT_EQ(card().uploadButton().state(), UploadButtonState::idle);
}

TEST_F(SnipFlowTest, aCardThatIsOpenFollowsTheSwitch) {
    show();
    EXPECT_FALSE(card().uploadButton().isShown());
    configureUpload();
    EXPECT_TRUE(card().uploadButton().isShown());
}

// Screens.

TEST_F(SnipFlowTest, theCardOpensInTheCornerOfTheScreenUnderThePointer) {
    screens.setScreens(
        {{.number = 1, .localizedName = {}, .frame = {0, 0, 1440, 900}, .visibleFrame = {0, 0, 1440, 876}},
         {.number = 2,
          .localizedName = {},
          .frame = {1440, -200, 1920, 1080},
          .visibleFrame = {1500, -160, 1860, 1000}}});
    screens.setMouseLocation({2000, 100});
    show();
    EXPECT_EQ(cardWindow().frame().topLeft(), QPointF(1518, -142));
}

/// As a recording that is looked at does.
constexpr QRectF waiting{24, 48, 380, 430};

TEST_F(SnipFlowTest, theCardStandsAboveWhatWaitsInTheCorner) {
    corner.take(waiting);
    show();
    EXPECT_EQ(cardWindow().frame(), QRectF(18, 48 + 430 + 18, 340, 248));
    corner.giveBack();
    show();
    EXPECT_EQ(cardWindow().frame(), QRectF(18, 18, 340, 248));
}

TEST_F(SnipFlowTest, onALowScreenTheCardStandsBesideWhatWaitsInTheCorner) {
    const auto usable = [this](double width, double height) {
        screens.setScreens({{.number = 1,
                             .localizedName = {},
                             .frame = {0, 0, width, height},
                             .visibleFrame = {0, 0, width, height}}});
    };
    corner.take(waiting);
    usable(1024, 48 + 430 + 18 + 248);
    show();
    EXPECT_EQ(cardWindow().frame(), QRectF(18, 48 + 430 + 18, 340, 248));
    usable(24 + 380 + 18 + 340, 600);
    show();
    EXPECT_EQ(cardWindow().frame(), QRectF(24 + 380 + 18, 18, 340, 248));
    usable(24 + 380 + 18 + 339, 600);
    show();
    EXPECT_EQ(cardWindow().frame(), QRectF(18, 18, 340, 248)) << "it has no room elsewhere";
}

TEST_F(SnipFlowTest, whatWaitsOnAnotherScreenMovesNoCard) {
    corner.take(waiting.translated(1440, 0));
    show();
    EXPECT_EQ(cardWindow().frame().topLeft(), QPointF(18, 18));
}

TEST_F(SnipFlowTest, aCardMakesRoomForWhatComesToWait) {
    show();
    EXPECT_EQ(cardWindow().frame().topLeft(), QPointF(18, 18));
    corner.take(waiting);
    EXPECT_EQ(cardWindow().frame().topLeft(), QPointF(18, 48 + 430 + 18));
    flow->dismissSnipPreview(Dismissal::atOnce);
    corner.take(waiting); // and one that is gone needs none
}

TEST_F(SnipFlowTest, aCardOnAMonitorThatIsUnpluggedMovesAndKeepsItsTime) {
    screens.setScreens(
        {{.number = 1, .localizedName = {}, .frame = {0, 0, 1440, 900}, .visibleFrame = {0, 0, 1440, 876}},
         {.number = 2, .localizedName = {}, .frame = {1440, 0, 800, 600}, .visibleFrame = {1440, 0, 800, 600}}});
    screens.setMouseLocation({1500, 100});
    show();
    time.advance(3s);
    screens.setMouseLocation({700, 400});
    screens.setScreens(
        {{.number = 1, .localizedName = {}, .frame = {0, 0, 1440, 900}, .visibleFrame = {0, 0, 1440, 876}}});
    EXPECT_EQ(cardWindow().frame().topLeft(), QPointF(18, 18));
    EXPECT_NEAR(card().remaining(), 4.0, 1e-9);
}

// From the hot key to the card.

TEST_F(SnipFlowTest, aCaptureBecomesACard) {
    flow->startSnip();
    ASSERT_TRUE(picture(12, 8).save(tool(0).arguments().last()));
    tool(0).finish(0);
    time.runPending();
    EXPECT_EQ(card().image().size(), QSize(12, 8));
    EXPECT_THAT(temporaryFiles(), IsEmpty());
}

TEST_F(SnipFlowTest, theCardIsOffTheScreenBeforeTheNextCaptureLooksAtIt) {
    show();
    time.advance(1s);
    flow->startCapture();
    EXPECT_TRUE(windows.visibleTitles().isEmpty());
    EXPECT_TRUE(launcher.tasks().isEmpty());
    flow->startCapture(); // an impatient key
    time.advance(199ms);
    EXPECT_TRUE(launcher.tasks().isEmpty());
    time.advance(1ms);
    EXPECT_EQ(launcher.tasks().size(), 1);
    EXPECT_TRUE(windows.visibleTitles().isEmpty());
}

TEST_F(SnipFlowTest, aCardThatStillFadesIsNotInTheNextCapture) {
    show();
    time.advance(1s);
    flow->dismissSnipPreview(Dismissal::animated);
    time.advance(50ms);
    flow->startCapture();
    EXPECT_TRUE(windows.visibleTitles().isEmpty());
    EXPECT_TRUE(launcher.tasks().isEmpty());
    time.advance(200ms);
    EXPECT_EQ(launcher.tasks().size(), 1);
    tool(0).finish(1);
    time.runPending();
    EXPECT_EQ(windows.living(), 0);
}

TEST_F(SnipFlowTest, withoutACardTheToolStartsAtOnce) {
    flow->startCapture();
    EXPECT_EQ(launcher.tasks().size(), 1);
}

TEST_F(SnipFlowTest, aCancelledCaptureBringsTheCardBackWithTheTimeThatItHad) {
    show();
    time.advance(1s);
    const double left = card().remaining();
    flow->startSnip();
    time.advance(10s);
    EXPECT_TRUE(windows.visibleTitles().isEmpty());
    tool(0).finish(1);
    time.runPending();
    EXPECT_EQ(windows.visibleTitles(), QStringList(text("Screenshot")));
    EXPECT_EQ(card().remaining(), left);
    EXPECT_EQ(pasteboard.changeCount(), 0);
    time.advance(8s);
    EXPECT_FALSE(flow->isPreviewShown());
}

TEST_F(SnipFlowTest, aCaptureThatEndsAnotherDoesNotFindTheCardBack) {
    show();
    time.advance(1s);
    flow->startCapture();
    time.advance(1s);
    flow->startCapture(); // ends the first tool
    tool(0).finish(1);
    time.runPending();
    EXPECT_TRUE(windows.visibleTitles().isEmpty());
    tool(1).finish(1);
    time.runPending();
    EXPECT_FALSE(windows.visibleTitles().isEmpty());
}

TEST_F(SnipFlowTest, theQuestionWhereToSaveIsNotInTheNextCaptureAndWaitsForItsAnswerAfterwards) {
    show();
    card().pressSave();
    time.advance(1s);
    ASSERT_TRUE(flow->isSaveDialogShown());
    flow->startCapture();
    time.advance(200ms);
    EXPECT_EQ(launcher.tasks().size(), 1);
    EXPECT_TRUE(windows.visibleTitles().isEmpty());
    tool(0).finish(1);
    time.runPending();
    EXPECT_EQ(windows.visibleTitles().size(), 2);
    flow->saveDialogModel()->cancel();
    EXPECT_FALSE(flow->isSaveDialogShown());
}

TEST_F(SnipFlowTest, theCardIsNotInTheWayOfAPickOfAColour) {
    show();
    time.advance(1s);
    FakeColorSamplers samplers{time};
    ColorPickerManager picker({time, defaults, pasteboard, samplers, screen}, [](const auto &, const auto &) {});
    picker.pickColor();
    EXPECT_TRUE(windows.visibleTitles().isEmpty());
    EXPECT_EQ(samplers.heldCount(), 0);
    time.advance(200ms);
    EXPECT_EQ(samplers.heldCount(), 1);
    samplers.take(Qt::red);
    time.runPending();
    EXPECT_EQ(windows.visibleTitles(), QStringList(text("Screenshot")));
}

TEST_F(SnipFlowTest, aToolThatCannotBeLaunchedBringsTheCardBack) {
    show();
    launcher.failNextLaunch(text("no such file"));
    flow->startCapture();
    time.advance(200ms);
    EXPECT_FALSE(windows.visibleTitles().isEmpty());
}

// The picture taken out of the card.

TEST_F(SnipFlowTest, aDraggedPictureIsAPngFileUnderTheNameOfASave) {
    show(picture(33, 22));
    const QString path = card().beginDragFile();
    EXPECT_EQ(QFileInfo(path).fileName(), text("snip_2026-01-31_21.00.00.png"));
    card().finishDragFile();
    EXPECT_EQ(QImage(path).size(), QSize(33, 22));
    EXPECT_FALSE(QFileInfo::exists(documents()));
}

} // namespace
} // namespace tavrine
