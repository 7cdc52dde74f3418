#include "capture/editor/EditorScanModel.h"

#include "capture/reading/CopyAction.h"
#include "capture/reading/QRResultModel.h"
#include "capture/reading/ReadingTest.h"
#include "support/Eventually.h"

namespace tavrine {
namespace {

class EditorScanModelTest : public ReadingTest {
protected:
    EditorScanModel model{{manager, detector, queue, time}};
};

TEST_F(EditorScanModelTest, textOpensTheSheet) {
    recognizer.setLines({text("a"), text("b")});
    model.extractText(picture());
    EXPECT_TRUE(model.isOCRScanning());
    settle();
    time.advance(Seconds{1.2});
    EXPECT_FALSE(model.isOCRScanning());
    EXPECT_TRUE(model.showOCRResult());
    EXPECT_EQ(model.ocrResultText(), text("a\nb"));
    model.closeOCRResult();
    EXPECT_FALSE(model.showOCRResult());
}

TEST_F(EditorScanModelTest, aQuickResultIsHeldFor1200Milliseconds) {
    recognizer.setLines({text("a")});
    model.extractText(picture());
    settle();
    time.advance(Seconds{1.199});
    EXPECT_TRUE(model.isOCRScanning());
    EXPECT_FALSE(model.showOCRResult());
    time.advance(Seconds{0.001});
    EXPECT_FALSE(model.isOCRScanning());
}

TEST_F(EditorScanModelTest, theTimeOfTheRecognitionCountsTowardsTheHold) {
    recognizer.setLines({text("a")});
    model.extractText(picture());
    drain();
    time.advance(Seconds{0}); // the result arrives at once; the next press stands for a slow one
    time.advance(Seconds{1.2});
    ASSERT_FALSE(model.isOCRScanning());

    // The answer waits on the queue behind other work for two seconds.
    model.closeOCRResult();
    std::mutex gate;
    gate.lock();
    queue.async([&] { const std::lock_guard opened(gate); });
    model.extractText(picture());
    time.advance(Seconds{2});
    EXPECT_TRUE(model.isOCRScanning());
    gate.unlock();
    settle();
    EXPECT_FALSE(model.isOCRScanning()) << "later than the shortest time: no more waiting";
}

TEST_F(EditorScanModelTest, aSteppedWallClockDoesNotStretchTheHold) {
    recognizer.setLines({text("a")});
    model.extractText(picture());
    time.setWallClock({0});
    settle();
    time.advance(Seconds{1.2});
    EXPECT_FALSE(model.isOCRScanning());
}

TEST_F(EditorScanModelTest, noTextEndsTheOverlayAndOpensNothing) {
    model.extractText(picture());
    settle();
    time.advance(Seconds{1.2});
    EXPECT_FALSE(model.isOCRScanning());
    EXPECT_FALSE(model.showOCRResult());
}

TEST_F(EditorScanModelTest, aPictureWithoutPixelsEndsTheOverlayToo) {
    model.extractText(QImage());
    EXPECT_TRUE(model.isOCRScanning());
    time.advance(Seconds{1.2});
    EXPECT_FALSE(model.isOCRScanning());
}

TEST_F(EditorScanModelTest, whatIsReadIsThePictureThatIsHandedOver) {
    model.extractText(picture(Qt::green));
    settle();
    ASSERT_EQ(recognizer.images().size(), 1);
    EXPECT_EQ(recognizer.images().first(), picture(Qt::green));
}

TEST_F(EditorScanModelTest, aSecondPressDuringAScanIsNone) {
    model.extractText(picture());
    model.extractText(picture());
    model.scanQR(picture());
    model.scanQR(picture());
    settle();
    EXPECT_EQ(recognizer.images().size(), 1);
    EXPECT_EQ(detector.images().size(), 1);
}

TEST_F(EditorScanModelTest, aModelThatIsGoneIsNotTold) {
    recognizer.setLines({text("a")});
    auto gone = std::make_unique<EditorScanModel>(EditorScanModel::Ports{manager, detector, queue, time});
    gone->extractText(picture());
    gone->scanQR(picture());
    drain();
    gone.reset();
    time.advance(Seconds{5}); // would touch freed memory
    EXPECT_EQ(recognizer.images().size(), 1);
}

TEST_F(EditorScanModelTest, aModelThatIsGoneEndsWhatIsBeingRead) {
    recognizer.hold();
    detector.hold();
    ConcurrentQueue codes(text("codes"), 1);
    auto gone = std::make_unique<EditorScanModel>(EditorScanModel::Ports{manager, detector, codes, time});
    gone->extractText(picture());
    gone->scanQR(picture());
    ASSERT_TRUE(test::eventually([&] { return recognizer.waiting() == 1 && detector.waiting() == 1; }));
    gone.reset();
    EXPECT_TRUE(test::eventually([&] { return recognizer.waiting() == 0 && detector.waiting() == 0; }));
    recognizer.hold(false); // or the queues never end
    detector.hold(false);
}

// Codes.

TEST_F(EditorScanModelTest, codesShowTheirLabels) {
    detector.setCodes({{text("a"), {0.1, 0.2, 0.3, 0.4}}, {text("a"), {0.5, 0.5, 0.1, 0.1}}});
    model.scanQR(picture());
    EXPECT_TRUE(model.isQRScanning());
    settle();
    EXPECT_FALSE(model.isQRScanning());
    EXPECT_TRUE(model.showQRLabels());
    EXPECT_FALSE(model.showNoQRToast());
    ASSERT_EQ(model.qrAnnotations().size(), 2) << "equal codes stay apart";
    EXPECT_EQ(model.qrAnnotations()[0].payload, text("a"));
    EXPECT_EQ(model.qrAnnotations()[0].boundingBox, QRectF(0.1, 0.2, 0.3, 0.4));
    EXPECT_NE(model.qrAnnotations()[0].id, model.qrAnnotations()[1].id);
    EXPECT_FALSE(model.qrAnnotations()[0].id.isNull());
}

TEST_F(EditorScanModelTest, noCodesShowTheToastForTwoAndAHalfSeconds) {
    model.scanQR(picture());
    settle();
    EXPECT_FALSE(model.isQRScanning());
    EXPECT_FALSE(model.showQRLabels());
    EXPECT_TRUE(model.showNoQRToast());
    time.advance(Seconds{2.499});
    EXPECT_TRUE(model.showNoQRToast());
    time.advance(Seconds{0.001});
    EXPECT_FALSE(model.showNoQRToast());
}

TEST_F(EditorScanModelTest, aPictureWithoutPixelsHasNoCodes) {
    model.scanQR(QImage());
    settle();
    EXPECT_TRUE(model.showNoQRToast());
    EXPECT_TRUE(detector.images().isEmpty());
}

TEST_F(EditorScanModelTest, dismissingClearsTheLabels) {
    detector.setPayloads({text("a")});
    model.scanQR(picture());
    settle();
    model.dismissQRLabels();
    EXPECT_TRUE(model.qrAnnotations().isEmpty());
    EXPECT_FALSE(model.showQRLabels());
}

TEST_F(EditorScanModelTest, aScanOfAPictureThatWasReplacedMeanwhileShowsNothing) {
    detector.setPayloads({text("a")});
    model.scanQR(picture());
    model.replacePicture();
    EXPECT_FALSE(model.isQRScanning());
    settle();
    EXPECT_FALSE(model.showQRLabels());
    EXPECT_FALSE(model.showNoQRToast());
    model.scanQR(picture());
    settle();
    EXPECT_TRUE(model.showQRLabels());
    model.replacePicture();
    EXPECT_TRUE(model.qrAnnotations().isEmpty());
}

TEST_F(EditorScanModelTest, aScanOfAPictureThatIsReplacedIsEnded) {
    detector.hold();
    model.scanQR(picture());
    ASSERT_TRUE(test::eventually([&] { return detector.waiting() == 1; }));
    testing::internal::CaptureStdout();
    model.replacePicture();
    EXPECT_TRUE(test::eventually([&] { return detector.waiting() == 0; }));
    detector.hold(false);
    settle();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << "nobody was to be told of it";
}

TEST_F(EditorScanModelTest, anEmptyScanKeepsTheLabelsThatAreShown) {
    detector.setPayloads({text("a")});
    model.scanQR(picture());
    settle();
    detector.setPayloads({});
    model.scanQR(picture());
    settle();
    EXPECT_TRUE(model.showNoQRToast());
    EXPECT_EQ(model.qrAnnotations().size(), 1);
}

// Bubbles.

TEST(QRBubbleTest, aPrefixInSmallLettersMakesAnAddress) {
    EXPECT_TRUE(isUrlForBubble(QStringLiteral("http://a")));
    EXPECT_TRUE(isUrlForBubble(QStringLiteral("https://a")));
    EXPECT_FALSE(isUrlForBubble(QStringLiteral("HTTP://a")));
    EXPECT_FALSE(isUrlForBubble(QStringLiteral("http:/a")));
    EXPECT_FALSE(isUrlForBubble(QStringLiteral(" http://a")));
    EXPECT_FALSE(isUrlForBubble(QString()));
}

TEST(QRBubbleTest, itHangsUnderTheMiddleOfItsCode) {
    EXPECT_EQ(bubbleCentre({0.4, 0.5, 0.2, 0.25}, {1000, 800}), QPointF(500, 422));
}

TEST(QRBubbleTest, atTheFarLeftItStaysAt100) {
    EXPECT_EQ(bubbleCentre({0, 0.5, 0.1, 0.1}, {1000, 800}).x(), 100);
    EXPECT_EQ(bubbleCentre({0.05, 0.5, 0.1, 0.1}, {1000, 800}).x(), 100);
    EXPECT_EQ(bubbleCentre({0.051, 0.5, 0.1, 0.1}, {1000, 800}).x(), 101);
}

TEST(QRBubbleTest, atTheFarRightItStays100FromTheEdge) {
    EXPECT_EQ(bubbleCentre({0.9, 0.5, 0.1, 0.1}, {1000, 800}).x(), 900);
    EXPECT_NEAR(bubbleCentre({0.849, 0.5, 0.1, 0.1}, {1000, 800}).x(), 899, 1e-9);
}

TEST(QRBubbleTest, atTheBottomEdgeItStops18PointsAbove) {
    EXPECT_EQ(bubbleCentre({0.4, 0, 0.2, 0.2}, {1000, 800}).y(), 782);
    EXPECT_EQ(bubbleCentre({0.4, 0.05, 0.2, 0.2}, {1000, 800}).y(), 782);   // 760 + 22, exactly
    EXPECT_EQ(bubbleCentre({0.4, 0.0625, 0.2, 0.2}, {1000, 800}).y(), 772); // 750 + 22
}

TEST(QRBubbleTest, onANarrowPictureItIsInTheMiddle) {
    EXPECT_EQ(bubbleCentre({0, 0.5, 0.1, 0.1}, {200, 100}).x(), 100);
    EXPECT_EQ(bubbleCentre({0, 0.5, 0.1, 0.1}, {199, 100}).x(), 99.5);
    EXPECT_EQ(bubbleCentre({0, 0.5, 0.1, 0.1}, {0, 0}).x(), 0);
}

// What rows and bubbles copy.

using CopyActionTest = ReadingTest;

TEST_F(CopyActionTest, aRowSaysCopiedForOneAndAHalfSeconds) {
    CopyAction row(pasteboard, time, qrResult::copiedShown);
    row.copy(text("code"));
    EXPECT_EQ(pasteboard.string(), text("code"));
    time.advance(Seconds{1.499});
    EXPECT_TRUE(row.isCopied());
    time.advance(Seconds{0.001});
    EXPECT_FALSE(row.isCopied());
}

TEST_F(CopyActionTest, aBubbleSaysCopiedFor1800Milliseconds) {
    CopyAction bubble(pasteboard, time, qrResult::bubbleCopiedShown);
    bubble.copy(text("code"));
    time.advance(Seconds{1.799});
    EXPECT_TRUE(bubble.isCopied());
    time.advance(Seconds{0.001});
    EXPECT_FALSE(bubble.isCopied());
}

TEST_F(CopyActionTest, theFirstCopyingEndsTheShowingOfTheSecond) {
    CopyAction row(pasteboard, time, qrResult::copiedShown);
    row.copy(text("code"));
    time.advance(Seconds{1});
    row.copy(text("code"));
    time.advance(Seconds{0.5});
    EXPECT_FALSE(row.isCopied());
}

} // namespace
} // namespace tavrine
