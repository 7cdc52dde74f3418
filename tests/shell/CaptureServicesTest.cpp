// What captures lead to, over the fakes: real queues, real flows and views, and a worker of a few lines of shell.

#include "shell/CaptureServices.h"

#include "adapters/fake/FakeApplication.h"
#include "adapters/fake/FakeApplicationActivator.h"
#include "adapters/fake/FakeCodeDetector.h"
#include "adapters/fake/FakeColorSampler.h"
#include "adapters/fake/FakeEventMonitors.h"
#include "adapters/fake/FakeEventPoster.h"
#include "adapters/fake/FakeFilePanels.h"
#include "adapters/fake/FakeImageCoder.h"
#include "adapters/fake/FakePanelWindow.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/FakeRecognizer.h"
#include "adapters/fake/FakeScreens.h"
#include "adapters/fake/FakeTaskLauncher.h"
#include "adapters/fake/FakeUrlOpener.h"
#include "adapters/fake/FakeWorkspace.h"
#include "capture/PngData.h"
#include "capture/reading/OCRNotepadView.h"
#include "capture/reading/OCRResultView.h"
#include "capture/reading/QRLabelBubble.h"
#include "upload/FakeWorker.h"
#include "upload/UploadFixture.h"
#include "upload/Uploads.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <gmock/gmock.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using State = UploadButtonState;
using Toast = std::pair<QString, QString>;

const QString link = QStringLiteral("https://i.example/1");
const Toast uploaded{QStringLiteral("Uploaded — link copied"), QStringLiteral("checkmark.circle.fill")};
constexpr auto succeeds = R"(cat > "$(dirname $0)/input"; echo '{"url":"https://i.example/1","logs":[]}')";

class CaptureServicesTest : public UploadFixture {
protected:
    void SetUp() override {
        keychain.store(item, "function uploadImage() {}");
        defaults.set(QStringLiteral("cloudUploadEnabled"), true);
    }
    void TearDown() override {
        services.reset();
        time.advance(1h); // what was still to come does no harm
        qDeleteAll(QApplication::topLevelWidgets());
    }

    void makeServices(const char *workerLines = succeeds) {
        worker.emplace(workerLines);
        uploads.emplace(Uploads::Ports{.time = time,
                                       .defaults = defaults,
                                       .center = center,
                                       .keychain = keychain,
                                       .pasteboard = pasteboard,
                                       .workerPath = worker->path(),
                                       .pngData = pngData});
        EXPECT_TRUE(happens([this] { return uploads->isButtonShown() == isUploading; }));
        services.emplace(CaptureServices::Ports{.time = time,
                                                .defaults = defaults,
                                                .pasteboard = pasteboard,
                                                .application = application,
                                                .urlOpener = urlOpener,
                                                .launcher = launcher,
                                                .recognizer = recognizer,
                                                .screenDetector = screenDetector,
                                                .pictureDetector = pictureDetector,
                                                .samplers = samplers,
                                                .temporaryFolder = home.filePath(QStringLiteral("tmp")),
                                                .uploads = *uploads});
        services->setShowToast([this](const QString &message, const QString &icon) {
            toasts.push_back({message, icon});
        });
    }
    /// An editor as its window makes it.
    [[nodiscard]] std::unique_ptr<EditorView> makeEditor(const QImage &image) {
        return std::make_unique<EditorView>(
            image, EditorModel::Ports{time, pasteboard, panels, coder, center, QStringLiteral("/nonexistent")},
            EditorView::Actions{}, services->editorHooks());
    }
    void getText(const QImage &image) {
        services->getTextFromSnip(image, desktop, [this](const QImage &read) { saved.append(read); });
    }
    [[nodiscard]] static QList<OCRNotepadView *> notepads() {
        QList<OCRNotepadView *> views;
        for (QWidget *widget : QApplication::topLevelWidgets())
            if (auto *view = qobject_cast<OCRNotepadView *>(widget))
                views.append(view);
        return views;
    }
    [[nodiscard]] static QImage picture(const QColor &colour = Qt::white) {
        QImage image(60, 40, QImage::Format_RGB32);
        image.fill(colour);
        return image;
    }
    /// The picture that the worker was given.
    [[nodiscard]] QImage uploadedPicture() const {
        const QJsonObject record = QJsonDocument::fromJson(worker->contents("input")).object();
        const QByteArray png =
            QByteArray::fromBase64(record.value(QStringLiteral("imageBase64")).toString().toLatin1());
        return QImage::fromData(png, "png");
    }

    FakePasteboard pasteboard;
    FakeApplication application;
    FakeUrlOpener urlOpener;
    FakeTaskLauncher launcher;
    FakeRecognizer recognizer;
    FakeCodeDetector screenDetector;
    FakeCodeDetector pictureDetector;
    FakeColorSamplers samplers{time};
    FakePanelWindows windows;
    FakeEventMonitors monitors;
    FakeEventPoster poster;
    FakeScreens screens;
    FakeWorkspace workspace;
    FakeApplicationActivator activator{workspace};
    FakeFilePanels panels{time};
    FakeImageCoder coder;
    PanelController::Ports desktop{.windows = windows,
                                   .monitors = monitors,
                                   .poster = poster,
                                   .screens = screens,
                                   .workspace = workspace,
                                   .activator = activator,
                                   .pasteboard = pasteboard,
                                   .defaults = defaults,
                                   .center = center,
                                   .time = time};
    std::optional<FakeWorker> worker;
    std::vector<Toast> toasts;
    QList<QImage> saved;
    bool isUploading = true;
    std::optional<Uploads> uploads;
    std::optional<CaptureServices> services;
};

// Uploads from the editor.

TEST_F(CaptureServicesTest, anUploadFromTheEditorTakesTheAnnotationsAndKeepsTheWindow) {
    makeServices();
    const auto editor = makeEditor(picture(Qt::green));
    DrawingPath line;
    line.id = QStringLiteral("line");
    line.points = {{0, 0}, {1, 1}};
    line.color = Qt::red;
    line.lineWidth = 20;
    editor->model().setDrawings({line});
    editor->model().upload();
    editor->model().upload();        // a second press, before the picture is ready
    editor->model().setDrawings({}); // the picture is that of the press
    ASSERT_TRUE(happens([&] { return !toasts.empty(); }));
    EXPECT_EQ(editor->model().uploadButton()->state(), State::done);
    EXPECT_EQ(pasteboard.clearCount(), 1);
    EXPECT_EQ(pasteboard.string(), link);
    EXPECT_THAT(toasts, ElementsAre(uploaded));
    EXPECT_EQ(uploadedPicture().pixelColor(30, 20), QColor(Qt::red));
    time.advance(1999ms);
    EXPECT_EQ(editor->model().uploadButton()->state(), State::done);
    time.advance(1ms);
    EXPECT_EQ(editor->model().uploadButton()->state(), State::idle);
    editor->model().upload();
    EXPECT_TRUE(happens([&] { return editor->model().uploadButton()->state() == State::uploading; }));
}

TEST_F(CaptureServicesTest, anEditorThatIsClosedDuringItsUploadStillGetsItsLink) {
    makeServices();
    auto editor = makeEditor(picture());
    editor->model().upload();
    editor.reset();
    ASSERT_TRUE(happens([&] { return !toasts.empty(); }));
    EXPECT_EQ(pasteboard.string(), link);
    EXPECT_THAT(toasts, ElementsAre(uploaded));
}

TEST_F(CaptureServicesTest, anEditorThatIsOpenFollowsTheSwitch) {
    defaults.set(QStringLiteral("cloudUploadEnabled"), false);
    isUploading = false;
    makeServices();
    const auto editor = makeEditor(picture());
    EXPECT_FALSE(editor->model().uploadButton()->isShown());
    defaults.set(QStringLiteral("cloudUploadEnabled"), true);
    EXPECT_TRUE(happens([&] { return editor->model().uploadButton()->isShown(); }));
}

// The text and the codes in a picture.

TEST_F(CaptureServicesTest, getTextOpensANotepadThatCopiesByItself) {
    makeServices();
    recognizer.setLines({QStringLiteral("first"), QStringLiteral("second")});
    getText(picture());
    EXPECT_EQ(windows.living(), 1);
    ASSERT_TRUE(happens([&] { return pasteboard.string() == QStringLiteral("first\nsecond"); }));
    EXPECT_THAT(saved, IsEmpty());
}

TEST_F(CaptureServicesTest, closingANotepadSavesItsCaptureOnce) {
    makeServices();
    getText(picture(Qt::red));
    time.advance(1s);
    ASSERT_EQ(notepads().size(), 1);
    QTest::keyClick(notepads().first(), Qt::Key_Escape);
    EXPECT_THAT(saved, IsEmpty()); // once it has faded
    time.advance(160ms);
    ASSERT_EQ(saved.size(), 1);
    EXPECT_EQ(saved.first().pixelColor(1, 1), QColor(Qt::red));
    EXPECT_EQ(windows.living(), 0);
    time.advance(1h);
    EXPECT_EQ(saved.size(), 1);
}

TEST_F(CaptureServicesTest, aSecondNotepadClosesAndSavesTheFirst) {
    makeServices();
    getText(picture(Qt::red));
    time.advance(1s);
    getText(picture(Qt::blue));
    time.advance(1s);
    EXPECT_EQ(windows.living(), 1);
    ASSERT_EQ(saved.size(), 1);
    EXPECT_EQ(saved.first().pixelColor(1, 1), QColor(Qt::red));
    screens.setMouseLocation({5, 5});
    monitors.mouseDown(eventMask::leftMouseDown, false);
    time.advance(1s);
    ASSERT_EQ(saved.size(), 2);
    EXPECT_EQ(saved.last().pixelColor(1, 1), QColor(Qt::blue));
}

TEST_F(CaptureServicesTest, theEditorsTwoScansReadThePicture) {
    makeServices();
    recognizer.setLines({QStringLiteral("words")});
    pictureDetector.setPayloads({QStringLiteral("code")});
    const auto editor = makeEditor(picture());
    editor->model().extractText();
    editor->model().scanQr();
    EXPECT_TRUE(happens([&] {
        time.advance(100ms);
        return editor->findChild<OCRResultView *>() && editor->findChild<QRLabelBubble *>();
    }));
    EXPECT_THAT(screenDetector.images(), IsEmpty());
}

TEST_F(CaptureServicesTest, aScanOfTheScreenShowsItsCodes) {
    makeServices();
    screenDetector.setPayloads({QStringLiteral("hello")});
    services->startQrScan(desktop);
    ASSERT_EQ(launcher.tasks().size(), 1);
    ASSERT_TRUE(picture().save(launcher.tasks().first()->arguments().last()));
    launcher.tasks().first()->finish(0);
    ASSERT_TRUE(happens([&] { return windows.living() == 1; }));
    EXPECT_TRUE(windows.windows().front()->isVisible());
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::regular);
    EXPECT_THAT(pictureDetector.images(), IsEmpty());
}

TEST_F(CaptureServicesTest, aColourIsPickedAndTold) {
    makeServices();
    services->pickColor();
    ASSERT_TRUE(samplers.isShown());
    samplers.take(Qt::red);
    time.advance(1s);
    EXPECT_EQ(pasteboard.string(), QStringLiteral("#FF0000"));
    EXPECT_EQ(toasts.size(), 1U);
}

// The end of the program.

TEST_F(CaptureServicesTest, theEndDoesNotWaitForAReaderThatHangs) {
    makeServices();
    recognizer.hold();
    const auto editor = makeEditor(picture());
    getText(picture());
    editor->model().extractText();
    ASSERT_TRUE(happens([&] { return recognizer.count() == 1; })); // and the second waits behind it
    QElapsedTimer timer;
    timer.start();
    services.reset();
    EXPECT_LT(timer.elapsed(), 2000);
    time.advance(1h); // what it would have told is told to nobody
    EXPECT_EQ(pasteboard.string(), std::nullopt);
}

TEST_F(CaptureServicesTest, theEndTakesItsPanelsWithIt) {
    makeServices();
    getText(picture());
    time.advance(1s);
    QTest::keyClick(notepads().first(), Qt::Key_Escape);
    getText(picture()); // while the first fades
    EXPECT_EQ(windows.living(), 2);
    services.reset();
    EXPECT_EQ(windows.living(), 0);
    time.advance(1h);
}

TEST_F(CaptureServicesTest, theEndGivesUpAScanUnderWay) {
    makeServices();
    services->startQrScan(desktop);
    services.reset();
    EXPECT_TRUE(launcher.tasks().first()->isTerminated());
    launcher.deliverSignals();
    time.advance(1h);
}

} // namespace
} // namespace tavrine::test
