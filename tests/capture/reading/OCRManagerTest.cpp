#include "ReadingTest.h"
#include "base/Print.h"
#include "capture/reading/OCRNotepadState.h"
#include "support/Eventually.h"

#include <QThread>

#include <sys/prctl.h>

namespace tavrine {
namespace {

class OCRManagerTest : public ReadingTest {
protected:
    std::optional<QString> recognized(const QImage &image = picture()) {
        std::optional<QString> result = QStringLiteral("never called");
        manager.recognizeText(image, [&](const std::optional<QString> &found) { result = found; });
        settle();
        return result;
    }
};

TEST_F(OCRManagerTest, linesAreJoinedInTheOrderGiven) {
    recognizer.setLines({text("second"), text("first"), text("third")});
    EXPECT_EQ(recognized(), text("second\nfirst\nthird"));
}

TEST_F(OCRManagerTest, whiteSpaceRoundTheTextStays) {
    recognizer.setLines({text("  a "), text("")});
    EXPECT_EQ(recognized(), text("  a \n"));
}

TEST_F(OCRManagerTest, noLinesAreNoText) {
    EXPECT_EQ(recognized(), std::nullopt);
}

TEST_F(OCRManagerTest, whiteSpaceAloneIsNoText) {
    recognizer.setLines({text(" "), text("\t"), text("")});
    EXPECT_EQ(recognized(), std::nullopt);
}

TEST_F(OCRManagerTest, aFailureIsNoTextAndIsPrinted) {
    recognizer.setLines({text("a")});
    recognizer.failNextRecognition(text("no language"));
    testing::internal::CaptureStdout();
    EXPECT_EQ(recognized(), std::nullopt);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Failed to perform OCR: no language\n");
    EXPECT_EQ(recognized(), text("a"));
}

TEST_F(OCRManagerTest, aPictureWithoutPixelsIsAnsweredWithinTheCall) {
    recognizer.setLines({text("a")});
    bool isAnswered = false;
    manager.recognizeText(QImage(), [&](const std::optional<QString> &found) { isAnswered = !found; });
    EXPECT_TRUE(isAnswered);
    EXPECT_TRUE(recognizer.images().isEmpty());
}

TEST_F(OCRManagerTest, theAnswerComesOnTheRecognitionQueue) {
    std::string thread;
    manager.recognizeText(picture(), [&](const std::optional<QString> &) {
        char name[16] = {};
        prctl(PR_GET_NAME, name);
        thread = name;
    });
    settle();
    EXPECT_EQ(thread, queue.label().left(15).toStdString());
}

TEST_F(OCRManagerTest, theNotepadIsToldOnTheMainQueue) {
    recognizer.setLines({text("a")});
    OCRNotepadState state;
    QThread *teller = nullptr;
    QObject::connect(&state, &OCRNotepadState::changed, [&] { teller = QThread::currentThread(); });
    manager.recognizeForNotepad(picture(), state);
    drain();
    EXPECT_TRUE(state.isLoading()) << "nothing before the main queue's next turn";
    time.runPending();
    EXPECT_EQ(teller, QThread::currentThread());
    EXPECT_EQ(state.text(), text("a"));
    EXPECT_EQ(state.errorMessage(), std::nullopt);
    EXPECT_FALSE(state.isLoading());
}

TEST_F(OCRManagerTest, theTextStandsBeforeTheLoadingEnds) {
    recognizer.setLines({text("a")});
    OCRNotepadState state;
    QString atTheEnd;
    QObject::connect(&state, &OCRNotepadState::changed, [&] {
        if (!state.isLoading())
            atTheEnd = state.text();
    });
    manager.recognizeForNotepad(picture(), state);
    settle();
    EXPECT_EQ(atTheEnd, text("a"));
}

TEST_F(OCRManagerTest, nothingFoundIsSaidInTheNotepad) {
    OCRNotepadState state;
    manager.recognizeForNotepad(picture(), state);
    settle();
    EXPECT_EQ(state.errorMessage(), text("No text found in this image."));
    EXPECT_TRUE(state.text().isEmpty());
    EXPECT_FALSE(state.isLoading());
}

TEST_F(OCRManagerTest, aPictureWithoutPixelsIsSaidInTheNotepad) {
    OCRNotepadState state;
    manager.recognizeForNotepad(QImage(), state);
    time.runPending();
    EXPECT_EQ(state.errorMessage(), text("No text found in this image."));
    EXPECT_FALSE(state.isLoading());
}

TEST_F(OCRManagerTest, aNotepadThatIsClosedKeepsNoOtherWaiting) {
    recognizer.setLines({text("a")});
    recognizer.hold();
    auto closed = std::make_unique<OCRNotepadState>();
    manager.recognizeForNotepad(picture(), *closed);
    ASSERT_TRUE(test::eventually([&] { return recognizer.count() == 1; }));
    closed.reset();
    auto neverRead = std::make_unique<OCRNotepadState>();
    manager.recognizeForNotepad(picture(), *neverRead);
    neverRead.reset();
    drain(); // or it waits for a picture that nobody wants
    EXPECT_LE(recognizer.count(), 2) << "the second may have begun";
    recognizer.hold(false);
    OCRNotepadState open;
    manager.recognizeForNotepad(picture(), open);
    settle();
    EXPECT_EQ(open.text(), text("a"));
}

TEST_F(OCRManagerTest, aReadingThatNobodyWantsIsNotBegun) {
    std::stop_source unwanted;
    unwanted.request_stop();
    manager.recognizeText(
        picture(), [](const auto &) { ADD_FAILURE(); }, unwanted.get_token());
    settle();
    EXPECT_EQ(recognizer.count(), 0);
}

TEST_F(OCRManagerTest, aStateThatIsGoneLosesTheResult) {
    recognizer.setLines({text("a")});
    auto state = std::make_unique<OCRNotepadState>();
    manager.recognizeForNotepad(picture(), *state);
    drain();
    state.reset();
    time.runPending(); // would touch freed memory
    EXPECT_EQ(recognizer.images().size(), 1);
}

} // namespace
} // namespace tavrine
