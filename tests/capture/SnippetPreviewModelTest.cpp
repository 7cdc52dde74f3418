#include "capture/SnippetPreviewModel.h"

#include "SnipTest.h"
#include "upload/PlayedUpload.h"

#include <future>

namespace tavrine {
namespace {

class SnippetPreviewModelTest : public SnipTest {
protected:
    void SetUp() override {
        model = std::make_unique<SnippetPreviewModel>(
            picture(),
            SnippetPreviewModel::Actions{.onNewSnip = [this] { events << text("new"); },
                                         .onCopy = [this] { events << text("copy"); },
                                         .onSave =
                                             [this](const auto &completion) {
                                                 events << text("save");
                                                 complete = completion;
                                             },
                                         .onEdit = [this] { events << text("edit"); },
                                         .onGetText = [this] { events << text("text"); },
                                         .onDismiss = [this] { events << text("dismiss"); },
                                         .beginDragFile = [this] { return events << text("drag"), text("/tmp/a.png"); },
                                         .finishDragFile = [] {}},
            time, played.makeButton(UploadButton::AfterLink::dismissView));
        model->appear();
    }
    test::PlayedUpload played{time, pasteboard};
    std::unique_ptr<SnippetPreviewModel> model;
    std::function<void(bool)> complete;
};

TEST_F(SnippetPreviewModelTest, theCardHasSevenSecondsInStepsOfATwentieth) {
    EXPECT_EQ(SnippetPreviewModel::totalDuration.count(), 7.0);
    EXPECT_EQ(SnippetPreviewModel::tickInterval.count(), 0.05);
    EXPECT_EQ(model->remaining(), 7.0);
    EXPECT_EQ(model->remainingPart(), 1.0);
    time.advance(49ms);
    EXPECT_EQ(model->remaining(), 7.0);
    time.advance(1ms);
    EXPECT_DOUBLE_EQ(model->remaining(), 6.95);
}

TEST_F(SnippetPreviewModelTest, theCardIsDismissedAtSevenSecondsAndNotBefore) {
    time.advance(6999ms);
    EXPECT_THAT(events, IsEmpty());
    EXPECT_NEAR(model->remaining(), 0.05, 1e-9);
    time.advance(1ms);
    EXPECT_THAT(events, ElementsAre(text("dismiss")));
    EXPECT_EQ(model->remaining(), 0.0);
    EXPECT_FALSE(model->isCountingDown());
    time.advance(60s);
    EXPECT_EQ(events.size(), 1);
}

TEST_F(SnippetPreviewModelTest, hoveringAtTheLastStepHoldsTheCardAndLeavingItLetsTheStepDismissIt) {
    time.advance(6960ms);
    model->setHovering(true);
    time.advance(30s);
    EXPECT_THAT(events, IsEmpty());
    EXPECT_NEAR(model->remaining(), 0.05, 1e-9);
    model->setHovering(false);
    time.advance(40ms);
    EXPECT_THAT(events, ElementsAre(text("dismiss")));
}

TEST_F(SnippetPreviewModelTest, hoveringKeepsWhatIsLeftAndDoesNotStartAnew) {
    time.advance(3s);
    model->setHovering(true);
    time.advance(10s);
    EXPECT_NEAR(model->remaining(), 4.0, 1e-9);
    model->setHovering(false);
    time.advance(3950ms);
    EXPECT_THAT(events, IsEmpty());
    time.advance(50ms);
    EXPECT_THAT(events, ElementsAre(text("dismiss")));
}

TEST_F(SnippetPreviewModelTest, aPictureThatIsBeingDraggedHoldsTheCard) {
    model->setDragging(true);
    time.advance(20s);
    EXPECT_THAT(events, IsEmpty());
    model->setDragging(false);
    time.advance(7s);
    EXPECT_THAT(events, ElementsAre(text("dismiss")));
}

TEST_F(SnippetPreviewModelTest, appearingAgainStartsTheCountdownAnew) {
    time.advance(5s);
    model->appear();
    EXPECT_EQ(model->remaining(), 7.0);
    EXPECT_EQ(time.timerCount(), 1);
    time.advance(6950ms);
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(SnippetPreviewModelTest, aCardIsCopiedFromTheStartAndItsButtonHasNoEffect) {
    EXPECT_TRUE(model->isCopied());
    model->pressCopy();
    EXPECT_THAT(events, IsEmpty());
    EXPECT_TRUE(model->isCopied());
}

TEST_F(SnippetPreviewModelTest, aSavedCardSaysSoAndIsDismissedASecondLater) {
    model->pressSave();
    EXPECT_FALSE(model->isSaved());
    complete(true);
    EXPECT_TRUE(model->isSaved());
    time.advance(999ms);
    EXPECT_THAT(events, ElementsAre(text("save")));
    time.advance(1ms);
    EXPECT_THAT(events, ElementsAre(text("save"), text("dismiss")));
}

TEST_F(SnippetPreviewModelTest, aSavedCardIsNotSavedAgain) {
    model->pressSave();
    complete(true);
    model->pressSave();
    EXPECT_THAT(events, ElementsAre(text("save")));
}

TEST_F(SnippetPreviewModelTest, aSaveUnderWayIsNotStartedTwice) {
    model->pressSave();
    model->pressSave();
    EXPECT_THAT(events, ElementsAre(text("save")));
}

TEST_F(SnippetPreviewModelTest, aFailedSaveLeavesTheButtonAsItWas) {
    model->pressSave();
    complete(false);
    EXPECT_FALSE(model->isSaved());
    model->pressSave();
    EXPECT_THAT(events, ElementsAre(text("save"), text("save")));
    time.advance(1s);
    EXPECT_THAT(events, ElementsAre(text("save"), text("save")));
}

TEST_F(SnippetPreviewModelTest, aSaveThatEndsAfterTheCardIsNothing) {
    model->pressSave();
    model.reset();
    complete(true);
    time.advance(2s);
    EXPECT_THAT(events, ElementsAre(text("save")));
}

TEST_F(SnippetPreviewModelTest, withoutAnUploadButtonThereIsNoUpload) {
    played.isShown = false;
    model->pressUpload();
    played.prepare();
    EXPECT_TRUE(played.runs.empty());
    EXPECT_TRUE(model->isCountingDown());
}

TEST_F(SnippetPreviewModelTest, aPressOnUploadInTheLastMomentKeepsTheCard) {
    std::promise<void> gate;
    played.pictureQueue.async([&gate] { gate.get_future().wait(); });
    time.advance(6990ms);
    model->pressUpload(); // and the picture takes its time to become a PNG
    time.advance(3600s);
    EXPECT_THAT(events, IsEmpty());
    gate.set_value();
    played.prepare();
    time.advance(3600s);
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(SnippetPreviewModelTest, anUploadThatCannotBeginLeavesTheCountdownRunning) {
    std::promise<void> gate;
    played.pictureQueue.async([&gate] { gate.get_future().wait(); });
    time.advance(5s);
    played.png.reset();
    model->pressUpload();
    time.advance(10s);
    gate.set_value();
    played.prepare();
    time.advance(1950ms);
    EXPECT_THAT(events, IsEmpty());
    time.advance(50ms);
    EXPECT_THAT(events, ElementsAre(text("dismiss")));
}

TEST_F(SnippetPreviewModelTest, anUploadThatBeginsStopsTheCountdownForGood) {
    time.advance(2s);
    model->pressUpload();
    played.prepare();
    EXPECT_FALSE(model->isCountingDown());
    played.fail();
    time.advance(3600s);
    EXPECT_THAT(events, IsEmpty());
    EXPECT_NEAR(model->remaining(), 5.0, 1e-9);
}

TEST_F(SnippetPreviewModelTest, anUploadThatSucceedsDismissesTheCard) {
    int changes = 0;
    QObject::connect(model.get(), &SnippetPreviewModel::changed, [&changes] { ++changes; });
    model->pressUpload();
    played.prepare();
    EXPECT_EQ(changes, 1);
    played.succeed();
    EXPECT_EQ(changes, 2);
    time.advance(10s);
    EXPECT_THAT(events, ElementsAre(text("dismiss")));
}

TEST_F(SnippetPreviewModelTest, onACardThatIsStoppedThereIsNoUpload) {
    model->stop();
    model->pressUpload();
    played.prepare();
    EXPECT_TRUE(played.runs.empty());
}

TEST_F(SnippetPreviewModelTest, theOtherButtonsDoWhatTheySay) {
    model->pressNew();
    model->pressEdit();
    model->pressGetText();
    EXPECT_EQ(model->beginDragFile(), text("/tmp/a.png"));
    model->pressDismiss();
    EXPECT_THAT(events, ElementsAre(text("new"), text("edit"), text("text"), text("drag"), text("dismiss")));
    EXPECT_TRUE(model->isCountingDown());
}

TEST_F(SnippetPreviewModelTest, aCardOnItsWayOffTheScreenDoesNothingMore) {
    configureUpload();
    model->pressSave();
    model->stop();
    EXPECT_EQ(time.timerCount(), 0);
    model->pressNew();
    model->pressCopy();
    model->pressSave();
    model->pressEdit();
    model->pressGetText();
    model->pressUpload();
    model->pressDismiss();
    EXPECT_EQ(model->beginDragFile(), QString());
    complete(true);
    time.advance(10s);
    EXPECT_THAT(events, ElementsAre(text("save")));
}

} // namespace
} // namespace tavrine
