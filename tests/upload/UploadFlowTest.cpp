#include "upload/UploadFlow.h"

#include "adapters/fake/FakePasteboard.h"
#include "upload/UploadFixture.h"

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;
using State = UploadButtonState;

const QString script = QStringLiteral("function uploadImage() {}");
const QString url = QStringLiteral("https://example.org/a b.png?x=ü");
const QString warning = QStringLiteral("exclamationmark.triangle.fill");

class Upload : public UploadFixture {
protected:
    using Toast = std::pair<QString, QString>;

    FakePasteboard pasteboard;
    std::optional<QByteArray> png = QByteArray("\x89PNG\r\n\x1a\n and the rest of a picture");
    std::vector<Toast> toasts;
    QStringList events; ///< what happened, in order
    std::unique_ptr<UploadFlow> flow;

    void SetUp() override { makeManagerWith(script); }

    UploadFlow::Actions editorActions() {
        return {
            .png =
                [this] {
                    events << QStringLiteral("png");
                    return png;
                },
            .run =
                [this, run = runner()](const auto &...arguments) {
                    events << QStringLiteral("run");
                    run(arguments...);
                },
            .uploadFileName = [] { return QStringLiteral("screenshot-20260131-120000.png"); },
            .showToast = [this](const QString &message, const QString &icon) { toasts.emplace_back(message, icon); }};
    }
    UploadFlow &makeFlow(UploadFlow::Actions actions) {
        flow = std::make_unique<UploadFlow>(UploadFlow::Ports{*manager, pasteboard, time}, std::move(actions));
        QObject::connect(flow.get(), &UploadFlow::uploadStateChanged, flow.get(), [this] {
            events << QStringList{QStringLiteral("idle"), QStringLiteral("uploading"),
                                  QStringLiteral("done")}[int(flow->uploadState())];
        });
        return *flow;
    }
    UploadFlow &makeEditor() { return makeFlow(editorActions()); }
    UploadFlow &makeCard() {
        UploadFlow::Actions actions = editorActions();
        actions.stopCountdown = [this] { events << QStringLiteral("stop"); };
        actions.onDismiss = [this] { events << QStringLiteral("dismiss"); };
        return makeFlow(std::move(actions));
    }
    void succeed() { runs.back().completion({.url = url}); }
    void fail(const std::optional<UploadScriptError> &error) { runs.back().completion({.error = error}); }
};

TEST_F(Upload, theButtonTellsItsState) {
    makeEditor();
    EXPECT_EQ(flow->buttonTitle(), QStringLiteral("Upload"));
    EXPECT_EQ(flow->buttonSymbol(), QStringLiteral("icloud.and.arrow.up"));
    flow->upload();
    EXPECT_EQ(flow->buttonTitle(), QStringLiteral("Uploading"));
    EXPECT_EQ(flow->buttonSymbol(), QStringLiteral("icloud.and.arrow.up"));
    succeed();
    EXPECT_EQ(flow->buttonTitle(), QStringLiteral("Uploaded"));
    EXPECT_EQ(flow->buttonSymbol(), QStringLiteral("checkmark.circle.fill"));
}

TEST_F(Upload, theStatesHaveTheirNumbers) {
    EXPECT_EQ(int(State::idle), 0);
    EXPECT_EQ(int(State::uploading), 1);
    EXPECT_EQ(int(State::done), 2);
}

TEST_F(Upload, theStepsOfACardFollowInOrder) {
    makeCard().upload();
    EXPECT_EQ(events, QStringList({QStringLiteral("png"), QStringLiteral("stop"), QStringLiteral("uploading"),
                                   QStringLiteral("run")}));
}

TEST_F(Upload, theScriptThePictureAndTheNameGoToTheEngine) {
    makeEditor().upload();
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_EQ(runs[0].script, script);
    EXPECT_EQ(QByteArray::fromBase64(runs[0].imageBase64.toLatin1()), *png);
    EXPECT_EQ(runs[0].fileName, QStringLiteral("screenshot-20260131-120000.png"));
    EXPECT_EQ(runs[0].timeout, Seconds(30.0));
}

TEST_F(Upload, aLargePictureGoesWholeAndWithoutLineBreaksInTheSameOrder) {
    png = QByteArray(3 * 1024 * 1024 + 1, 'p');
    makeCard().upload();
    EXPECT_EQ(flow->uploadState(), State::uploading);
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_EQ(events, QStringList({QStringLiteral("png"), QStringLiteral("stop"), QStringLiteral("uploading"),
                                   QStringLiteral("run")}));
    EXPECT_EQ(runs[0].imageBase64, QString::fromLatin1(png->toBase64()));
    EXPECT_FALSE(runs[0].imageBase64.contains(QLatin1Char('\n')));
}

TEST_F(Upload, aPictureWithoutAPngIsToldAndChangesNothing) {
    for (const auto &none : {std::optional<QByteArray>(), std::optional(QByteArray())}) {
        png = none;
        events.clear();
        toasts.clear();
        makeCard().upload();
        time.runPending();
        EXPECT_EQ(events, QStringList{QStringLiteral("png")}); // the countdown goes on
        EXPECT_EQ(flow->uploadState(), State::idle);
        EXPECT_EQ(toasts, std::vector<Toast>({{QStringLiteral("Couldn't prepare the image for upload"), warning}}));
    }
}

TEST_F(Upload, aSecondPressDuringAnUploadDoesNothing) {
    makeCard().upload();
    events.clear();
    flow->upload();
    EXPECT_TRUE(events.isEmpty());
    EXPECT_EQ(runs.size(), 1U);
}

TEST_F(Upload, theLinkReplacesWhatIsOnThePasteboard) {
    pasteboard.copyFromOutside(QStringLiteral("before"));
    const int before = pasteboard.changeCount();
    makeEditor().upload();
    EXPECT_EQ(pasteboard.string(), QStringLiteral("before"));
    succeed();
    EXPECT_EQ(pasteboard.string(), url);
    EXPECT_EQ(pasteboard.changeCount(), before + 1);
}

TEST_F(Upload, theToastComesInALaterTurn) {
    makeEditor().upload();
    succeed();
    EXPECT_TRUE(toasts.empty());
    time.runPending();
    EXPECT_EQ(toasts, std::vector<Toast>(
                          {{QStringLiteral("Uploaded — link copied"), QStringLiteral("checkmark.circle.fill")}}));
}

TEST_F(Upload, aCardGoesEightTenthsOfASecondAfterTheLink) {
    makeCard().upload();
    succeed();
    EXPECT_EQ(flow->uploadState(), State::done);
    events.clear();
    time.advance(799ms);
    EXPECT_TRUE(events.isEmpty());
    time.advance(1ms);
    EXPECT_EQ(events, QStringList{QStringLiteral("dismiss")});
    time.advance(10s);
    EXPECT_EQ(flow->uploadState(), State::done); // it never comes back to idle
}

TEST_F(Upload, anEditorsButtonReturnsTwoSecondsAfterTheLink) {
    makeEditor().upload();
    succeed();
    time.advance(1999ms);
    EXPECT_EQ(flow->uploadState(), State::done);
    time.advance(1ms);
    EXPECT_EQ(flow->uploadState(), State::idle);
}

TEST_F(Upload, aNewUploadInAnEditorKeepsItsButton) {
    makeEditor().upload();
    succeed();
    time.advance(1s);
    flow->upload();
    time.advance(1s);
    EXPECT_EQ(flow->uploadState(), State::uploading);
    flow->upload();
    EXPECT_EQ(runs.size(), 2U);
}

TEST_F(Upload, aFailureLeavesTheCardOpenWithItsButtonBackAndTheCountdownStopped) {
    makeCard().upload();
    events.clear();
    fail(UploadScriptError::timeout(30));
    EXPECT_EQ(events, QStringList{QStringLiteral("idle")});
    EXPECT_EQ(flow->buttonTitle(), QStringLiteral("Upload"));
    EXPECT_TRUE(toasts.empty());
    time.advance(1min);
    EXPECT_EQ(events, QStringList{QStringLiteral("idle")}); // neither dismissed nor counted again
    EXPECT_EQ(toasts, std::vector<Toast>({{QStringLiteral("Script execution timed out after 30 seconds."), warning}}));
}

TEST_F(Upload, aFailureLeavesThePasteboardAlone) {
    pasteboard.copyFromOutside(QStringLiteral("before"));
    const int before = pasteboard.changeCount();
    makeEditor().upload();
    fail(UploadScriptError::missingFunction());
    EXPECT_EQ(pasteboard.string(), QStringLiteral("before"));
    EXPECT_EQ(pasteboard.changeCount(), before);
}

TEST_F(Upload, aFailureWithoutAReasonIsStillTold) {
    makeEditor().upload();
    fail(std::nullopt);
    time.runPending();
    EXPECT_EQ(toasts, std::vector<Toast>({{QStringLiteral("Upload failed"), warning}}));
}

TEST_F(Upload, afterAFailureItCanBeTriedAgain) {
    makeCard().upload();
    fail(UploadScriptError::runtimeError(QStringLiteral("Error: boom")));
    flow->upload();
    EXPECT_EQ(runs.size(), 2U);
    EXPECT_EQ(flow->uploadState(), State::uploading);
}

TEST_F(Upload, theScriptIsTheOneOfThePress) {
    makeEditor().upload();
    manager->setScript(QStringLiteral("another"));
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_EQ(runs[0].script, script);
}

TEST_F(Upload, aClosedViewStillGetsItsLinkOntoThePasteboard) {
    makeCard().upload();
    flow.reset();
    events.clear();
    succeed();
    time.advance(10s);
    EXPECT_EQ(pasteboard.string(), url);
    EXPECT_EQ(toasts.size(), 1U);
    EXPECT_TRUE(events.isEmpty()); // and dismisses no other card
}

TEST_F(Upload, aCardClosedAfterTheLinkIsNotDismissedAgain) {
    makeCard().upload();
    succeed();
    flow.reset();
    events.clear();
    time.advance(10s);
    EXPECT_TRUE(events.isEmpty());
}

} // namespace
} // namespace tavrine::test
