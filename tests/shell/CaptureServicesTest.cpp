#include "shell/CaptureServices.h"

#include "ShellTest.h"
#include "adapters/fake/FakeCodeDetector.h"
#include "adapters/fake/FakeColorSampler.h"
#include "adapters/fake/FakeFilePanels.h"
#include "adapters/fake/FakeKeychain.h"
#include "adapters/fake/FakeRecognizer.h"
#include "adapters/fake/FakeTaskLauncher.h"
#include "adapters/fake/FakeUrlOpener.h"
#include "support/Eventually.h"
#include "upload/CustomUploadManager.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace tavrine {
namespace {

using State = UploadButtonState;
using Toast = std::pair<QString, QString>;

QImage picture(int width = 40, int height = 30) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    return image;
}

/// The services over fakes, and over a worker that is a shell script: it keeps what it is given and tells a link.
class CaptureServicesTest : public ShellTest {
protected:
    void SetUp() override {
        keychain.store({text("com.veltrane.Tavrine"), text("cloudUploadScript")}, "function uploadImage() {}");
        writeWorker("printf '{\"url\":\"https://example.org/1\",\"logs\":[]}'");
        uploads.setEnabled(true);
        ASSERT_TRUE(happens([this] { return uploads.isConfigured(); }));
        services = std::make_unique<CaptureServices>(
            CaptureServices::Ports{.time = time,
                                   .defaults = defaults,
                                   .pasteboard = pasteboard,
                                   .application = application,
                                   .urlOpener = urlOpener,
                                   .launcher = launcher,
                                   .recognizer = recognizer,
                                   .screenDetector = screenDetector,
                                   .pictureDetector = pictureDetector,
                                   .samplers = samplers,
                                   .temporaryFolder = folders.temporary,
                                   .uploadWorker = home.filePath(text("worker")),
                                   .uploads = [this]() -> CustomUploadManager & { return uploads; }});
        services->setShowToast(
            [this](const QString &message, const QString &icon) { toasts.emplace_back(message, icon); });
    }
    void TearDown() override { services.reset(); }

    void writeWorker(const char *answer) {
        QFile worker(home.filePath(text("worker")));
        ASSERT_TRUE(worker.open(QIODevice::WriteOnly));
        worker.write("#!/bin/sh\ncat > '" + QFile::encodeName(home.filePath(text("given"))) + "'\n" + answer + "\n");
        worker.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    /// The picture that the worker was given last.
    [[nodiscard]] QImage givenPicture() {
        QFile file(home.filePath(text("given")));
        if (!file.open(QIODevice::ReadOnly))
            return {};
        const QJsonObject given = QJsonDocument::fromJson(file.readAll()).object();
        return QImage::fromData(QByteArray::fromBase64(given.value(text("imageBase64")).toString().toLatin1()), "png");
    }
    template <class Condition>
    [[nodiscard]] bool happens(Condition condition) {
        return test::eventually([&] {
            time.runPending();
            return condition();
        });
    }
    [[nodiscard]] UploadCard card() {
        return {.setState = [this](State state) { states.push_back(state); }, .dismiss = [this] { ++dismissals; }};
    }
    [[nodiscard]] std::unique_ptr<EditorView> editor() {
        return std::make_unique<EditorView>(
            picture(), EditorModel::Ports{time, pasteboard, filePanels, coder, center, folders.documents},
            EditorView::Actions{}, services->editorHooks());
    }

    FakeUrlOpener urlOpener;
    FakeTaskLauncher launcher;
    FakeRecognizer recognizer;
    FakeCodeDetector screenDetector;
    FakeCodeDetector pictureDetector;
    FakeColorSamplers samplers{time};
    FakeFilePanels filePanels{time};
    FakeKeychain keychain;
    CustomUploadManager uploads{{.defaults = defaults, .keychain = keychain, .time = time}};
    std::vector<State> states;
    int dismissals = 0;
    std::vector<Toast> toasts;
    std::unique_ptr<CaptureServices> services;
};

TEST_F(CaptureServicesTest, aCardIsUploadedItsLinkCopiedAndTheCardDismissed) {
    services->uploadFromCard(picture(50, 20), card());
    EXPECT_THAT(states, IsEmpty()); // its picture is not a PNG yet
    ASSERT_TRUE(happens([this] { return !toasts.empty(); }));
    EXPECT_THAT(states, ElementsAre(State::uploading, State::done));
    EXPECT_EQ(givenPicture().size(), QSize(50, 20));
    EXPECT_EQ(pasteboard.string(), text("https://example.org/1"));
    EXPECT_THAT(toasts, ElementsAre(Toast(text("Uploaded — link copied"), text("checkmark.circle.fill"))));
    EXPECT_EQ(dismissals, 0);
    time.advance(800ms);
    EXPECT_EQ(dismissals, 1);
}

TEST_F(CaptureServicesTest, aCardWhoseUploadFailsGetsItsButtonBack) {
    writeWorker("exit 3");
    services->uploadFromCard(picture(), card());
    ASSERT_TRUE(happens([this] { return !toasts.empty(); }));
    EXPECT_THAT(states, ElementsAre(State::uploading, State::idle));
    EXPECT_EQ(toasts.front().second, text("exclamationmark.triangle.fill"));
    time.advance(10s);
    EXPECT_EQ(dismissals, 0);
}

TEST_F(CaptureServicesTest, aCardWithoutPixelsIsToldSoAndMayTryAgain) {
    services->uploadFromCard(QImage(), card());
    ASSERT_TRUE(happens([this] { return !toasts.empty(); }));
    EXPECT_THAT(states, ElementsAre(State::idle));
    EXPECT_THAT(toasts, ElementsAre(Toast(text("Couldn't prepare the image for upload"),
                                          text("exclamationmark.triangle.fill"))));
    EXPECT_FALSE(QFile::exists(home.filePath(text("given"))));
}

TEST_F(CaptureServicesTest, servicesThatGoWhileAPictureIsMadeReadyWaitForIt) {
    services->uploadFromCard(picture(2000, 2000), card());
    services.reset();
    EXPECT_THAT(states, IsEmpty());
}

TEST_F(CaptureServicesTest, anEditorKnowsWhetherUploadsAreSetUp) {
    const auto view = editor();
    EXPECT_TRUE(view->model().isUploadConfigured());
    uploads.setEnabled(false);
    EXPECT_FALSE(view->model().isUploadConfigured());
}

TEST_F(CaptureServicesTest, whatAnEditorUploadsHasItsAnnotations) {
    const auto view = editor();
    view->model().setDrawings({{.id = text("1"),
                                .kind = DrawingKind::path,
                                .points = {{0, 0.5}, {1, 0.5}},
                                .color = Qt::red,
                                .lineWidth = 10,
                                .isHighlighter = false,
                                .text = {},
                                .number = {}}});
    view->model().upload();
    view->model().upload(); // a second press, before the picture is ready
    view->model().setDrawings({});
    ASSERT_TRUE(happens([&] { return view->model().uploadState() == State::done; }));
    EXPECT_EQ(givenPicture().pixelColor(20, 15), QColor(Qt::red));
    EXPECT_EQ(pasteboard.clearCount(), 1);
    time.advance(2s);
    EXPECT_EQ(view->model().uploadState(), State::idle);
}

TEST_F(CaptureServicesTest, anEditorThatIsClosedDuringItsUploadLeavesTheLink) {
    auto view = editor();
    view->model().upload();
    view.reset();
    ASSERT_TRUE(happens([this] { return !toasts.empty(); }));
    EXPECT_EQ(pasteboard.string(), text("https://example.org/1"));
}

TEST_F(CaptureServicesTest, aPickedColourIsCopiedAndToldAndASecondTriggerIsNothing) {
    const std::string output = outputOf([this] {
        services->pickColor();
        services->pickColor();
    });
    EXPECT_THAT(output, HasSubstr("DEBUG: Color picker already active, ignoring\n"));
    samplers.take(Qt::red);
    static_cast<void>(outputOf([this] { time.runPending(); }));
    EXPECT_EQ(pasteboard.string(), text("#FF0000"));
    EXPECT_THAT(toasts, ElementsAre(Toast(text("Copied: #FF0000"), text("paintbrush.fill"))));
}

} // namespace
} // namespace tavrine
