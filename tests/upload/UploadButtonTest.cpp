#include "upload/UploadButton.h"

#include "upload/PlayedUpload.h"

#include <QThread>

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;
using State = UploadButtonState;

const QString buttonScript = QStringLiteral("function uploadImage() {}");
const QString url = QStringLiteral("https://example.org/a b.png?x=ü");
const QString warning = QStringLiteral("exclamationmark.triangle.fill");

class Upload : public testing::Test {
protected:
    using Toast = PlayedUpload::Toast;

    VirtualTime time;
    FakePasteboard pasteboard;
    PlayedUpload played{time, pasteboard};
    std::optional<QByteArray> &png = played.png;
    std::vector<PlayedUpload::Run> &runs = played.runs;
    std::vector<Toast> &toasts = played.toasts;
    QStringList events; ///< what happened, in order
    std::unique_ptr<UploadButton> button;
    QThread *pngThread = nullptr; ///< on which it was made

    UploadButton &make(UploadButton::AfterLink afterLink) {
        UploadButton::Actions actions = played.actions();
        actions.picture = [this]() -> UploadButton::PngMaker {
            events << QStringLiteral("picture");
            return [this, taken = png] {
                pngThread = QThread::currentThread();
                return taken;
            };
        };
        actions.run = [this, run = played.runner()](const auto &...arguments) {
            events << QStringLiteral("run");
            run(arguments...);
        };
        button = played.makeButton(std::move(actions), afterLink);
        QObject::connect(button.get(), &UploadButton::changed, button.get(), [this] {
            events << QStringList{QStringLiteral("idle"), QStringLiteral("uploading"),
                                  QStringLiteral("done")}[int(button->state())];
        });
        QObject::connect(button.get(), &UploadButton::viewDismissed, button.get(),
                         [this] { events << QStringLiteral("dismiss"); });
        return *button;
    }
    UploadButton &makeEditor() { return make(UploadButton::AfterLink::returnToIdle); }
    UploadButton &makeCard() { return make(UploadButton::AfterLink::dismissView); }
    /// The press, and all that follows without the engine.
    void upload() {
        button->press();
        prepare();
    }
    void prepare() { played.prepare(); }
    void succeed() { played.succeed(url); }
    void fail(const std::optional<UploadScriptError> &error) { played.fail(error); }
};

TEST_F(Upload, theButtonTellsItsState) {
    makeEditor();
    EXPECT_EQ(button->title(), QStringLiteral("Upload"));
    EXPECT_EQ(button->symbol(), QStringLiteral("icloud.and.arrow.up"));
    upload();
    EXPECT_EQ(button->title(), QStringLiteral("Uploading"));
    EXPECT_EQ(button->symbol(), QStringLiteral("icloud.and.arrow.up"));
    succeed();
    EXPECT_EQ(button->title(), QStringLiteral("Uploaded"));
    EXPECT_EQ(button->symbol(), QStringLiteral("checkmark.circle.fill"));
}

TEST_F(Upload, theStatesHaveTheirNumbers) {
    EXPECT_EQ(int(State::idle), 0);
    EXPECT_EQ(int(State::uploading), 1);
    EXPECT_EQ(int(State::done), 2);
}

TEST_F(Upload, theStepsOfACardFollowInOrder) {
    makeCard();
    upload();
    EXPECT_EQ(events, QStringList({QStringLiteral("picture"), QStringLiteral("uploading"), QStringLiteral("run")}));
}

TEST_F(Upload, theScriptThePictureAndTheNameGoToTheEngine) {
    makeEditor();
    upload();
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_EQ(runs[0].script, buttonScript);
    EXPECT_EQ(QByteArray::fromBase64(runs[0].imageBase64.toLatin1()), *png);
    EXPECT_EQ(runs[0].fileName, QStringLiteral("screenshot-20260131-120000.png"));
    EXPECT_EQ(runs[0].timeout, Seconds(30.0));
}

TEST_F(Upload, aLargePictureGoesWholeAndWithoutLineBreaks) {
    png = QByteArray(3 * 1024 * 1024 + 1, 'p');
    makeCard();
    upload();
    EXPECT_EQ(runs.at(0).imageBase64, QString::fromLatin1(png->toBase64()));
    EXPECT_FALSE(runs[0].imageBase64.contains(QLatin1Char('\n')));
}

TEST_F(Upload, thePictureIsTakenAtThePressAndBecomesAPngBesideTheMainThread) {
    makeCard().press();
    EXPECT_EQ(events, QStringList{QStringLiteral("picture")});
    png = QByteArray("another picture");
    EXPECT_TRUE(button->isBusy());
    EXPECT_EQ(button->state(), State::idle);
    prepare();
    EXPECT_EQ(QByteArray::fromBase64(runs.at(0).imageBase64.toLatin1()).left(4), "\x89PNG");
    EXPECT_TRUE(pngThread && pngThread != QThread::currentThread());
}

TEST_F(Upload, aSecondPressBeforeThePictureIsReadyDoesNothing) {
    makeCard().press();
    button->press();
    prepare();
    EXPECT_EQ(runs.size(), 1U);
    EXPECT_EQ(events.count(QStringLiteral("picture")), 1);
}

TEST_F(Upload, aPictureIsUploadedThoughItsCardIsClosedBeforeItIsReady) {
    makeCard().press();
    button.reset();
    events.clear();
    prepare();
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_EQ(runs[0].script, buttonScript);
    EXPECT_EQ(events, QStringList{QStringLiteral("run")}); // no countdown of another card is stopped
    succeed();
    EXPECT_EQ(pasteboard.string(), url);
}

TEST_F(Upload, aPictureWithoutAPngIsToldAndChangesNothing) {
    for (const auto &none : {std::optional<QByteArray>(), std::optional(QByteArray())}) {
        png = none;
        events.clear();
        toasts.clear();
        makeCard();
        upload();
        EXPECT_EQ(events, QStringList{QStringLiteral("picture")}); // the countdown goes on
        EXPECT_EQ(button->state(), State::idle);
        EXPECT_FALSE(button->isBusy());
        EXPECT_EQ(toasts, std::vector<Toast>({{QStringLiteral("Couldn't prepare the image for upload"), warning}}));
    }
}

TEST_F(Upload, aSecondPressDuringAnUploadDoesNothing) {
    makeCard();
    upload();
    events.clear();
    upload();
    EXPECT_TRUE(events.isEmpty());
    EXPECT_EQ(runs.size(), 1U);
}

TEST_F(Upload, aButtonThatIsNotShownCannotBePressed) {
    makeEditor();
    played.isShown = false;
    upload();
    EXPECT_TRUE(events.isEmpty());
    played.isShown = true;
    upload();
    EXPECT_EQ(runs.size(), 1U);
}

TEST_F(Upload, theLinkReplacesWhatIsOnThePasteboard) {
    pasteboard.copyFromOutside(QStringLiteral("before"));
    const int before = pasteboard.changeCount();
    makeEditor();
    upload();
    EXPECT_EQ(pasteboard.string(), QStringLiteral("before"));
    succeed();
    EXPECT_EQ(pasteboard.string(), url);
    EXPECT_EQ(pasteboard.changeCount(), before + 1);
}

TEST_F(Upload, theToastComesInALaterTurn) {
    makeEditor();
    upload();
    succeed();
    EXPECT_TRUE(toasts.empty());
    time.runPending();
    EXPECT_EQ(toasts, std::vector<Toast>(
                          {{QStringLiteral("Uploaded — link copied"), QStringLiteral("checkmark.circle.fill")}}));
}

TEST_F(Upload, aCardGoesEightTenthsOfASecondAfterTheLink) {
    makeCard();
    upload();
    succeed();
    EXPECT_EQ(button->state(), State::done);
    events.clear();
    time.advance(799ms);
    EXPECT_TRUE(events.isEmpty());
    time.advance(1ms);
    EXPECT_EQ(events, QStringList{QStringLiteral("dismiss")});
    time.advance(10s);
    EXPECT_EQ(button->state(), State::done); // it never comes back to idle
}

TEST_F(Upload, anEditorsButtonReturnsTwoSecondsAfterTheLink) {
    makeEditor();
    upload();
    succeed();
    time.advance(1999ms);
    EXPECT_EQ(button->state(), State::done);
    time.advance(1ms);
    EXPECT_EQ(button->state(), State::idle);
}

TEST_F(Upload, aNewUploadInAnEditorKeepsItsButton) {
    makeEditor();
    upload();
    succeed();
    time.advance(1s);
    upload();
    time.advance(1s);
    EXPECT_EQ(button->state(), State::uploading);
    upload();
    EXPECT_EQ(runs.size(), 2U);
}

TEST_F(Upload, aFailureLeavesTheCardOpenWithItsButtonBackAndTheCountdownStopped) {
    makeCard();
    upload();
    events.clear();
    fail(UploadScriptError::timeout(30));
    EXPECT_EQ(events, QStringList{QStringLiteral("idle")});
    EXPECT_EQ(button->title(), QStringLiteral("Upload"));
    EXPECT_TRUE(toasts.empty());
    time.advance(1min);
    EXPECT_EQ(events, QStringList{QStringLiteral("idle")}); // neither dismissed nor counted again
    EXPECT_EQ(toasts, std::vector<Toast>({{QStringLiteral("Script execution timed out after 30 seconds."), warning}}));
}

TEST_F(Upload, aFailureLeavesThePasteboardAlone) {
    pasteboard.copyFromOutside(QStringLiteral("before"));
    const int before = pasteboard.changeCount();
    makeEditor();
    upload();
    fail(UploadScriptError::missingFunction());
    EXPECT_EQ(pasteboard.string(), QStringLiteral("before"));
    EXPECT_EQ(pasteboard.changeCount(), before);
}

TEST_F(Upload, aFailureWithoutAReasonIsStillTold) {
    makeEditor();
    upload();
    fail(std::nullopt);
    time.runPending();
    EXPECT_EQ(toasts, std::vector<Toast>({{QStringLiteral("Upload failed"), warning}}));
}

TEST_F(Upload, afterAFailureItCanBeTriedAgain) {
    makeCard();
    upload();
    fail(UploadScriptError::runtimeError(QStringLiteral("Error: boom")));
    upload();
    EXPECT_EQ(runs.size(), 2U);
    EXPECT_EQ(button->state(), State::uploading);
}

TEST_F(Upload, theScriptIsTheOneOfThePress) {
    makeEditor().press();
    played.script = QStringLiteral("another");
    prepare();
    EXPECT_EQ(runs.at(0).script, buttonScript);
}

TEST_F(Upload, aClosedViewStillGetsItsLinkOntoThePasteboard) {
    makeCard();
    upload();
    button.reset();
    events.clear();
    succeed();
    time.advance(10s);
    EXPECT_EQ(pasteboard.string(), url);
    EXPECT_EQ(toasts.size(), 1U);
    EXPECT_TRUE(events.isEmpty()); // and dismisses no other card
}

TEST_F(Upload, aCardClosedAfterTheLinkIsNotDismissedAgain) {
    makeCard();
    upload();
    succeed();
    button.reset();
    events.clear();
    time.advance(10s);
    EXPECT_TRUE(events.isEmpty());
}

} // namespace
} // namespace tavrine::test
