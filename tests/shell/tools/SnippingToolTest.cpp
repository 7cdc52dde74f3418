// What captures and editors lead to: text and codes, with real queues and views over fakes.
#include "capture/SnipFlow.h"
#include "capture/reading/OCRNotepadView.h"
#include "capture/reading/OCRResultView.h"
#include "capture/reading/QRLabelBubble.h"
#include "shell/ShellTest.h"
#include "support/Eventually.h"
#include "upload/FakeWorker.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

namespace tavrine {
namespace {

class SnippingToolTest : public ShellTest {
protected:
    void SetUp() override {
        desktop.access().setScreenCaptureGranted(true);
        launch();
    }
    void TearDown() override {
        delegate.reset();
        qDeleteAll(QApplication::topLevelWidgets());
        time.advance(1h); // what was still to come does no harm
    }

    [[nodiscard]] SnippingTool &tool() { return delegate->tools().snipping(); }
    [[nodiscard]] FakePanelWindows &panels() { return desktop.panelWindows(); }

    /// A capture of this colour whose text is asked for: the card goes, the notepad comes.
    void getText(const QColor &colour) {
        tool().startCapture();
        const auto task = desktop.taskLauncher().tasks().last();
        ASSERT_TRUE(picture(colour).save(task->arguments().last()));
        quietly([&] {
            task->finish(0);
            time.runPending();
            tool().flowIfMade()->previewModel()->pressGetText();
            time.advance(1s);
        });
    }
    /// A region is scanned for codes.
    void scanScreen() {
        tool().startQrScan();
        const auto task = desktop.taskLauncher().tasks().last();
        ASSERT_TRUE(picture(Qt::white).save(task->arguments().last()));
        task->finish(0);
    }
    EditorView &openEditor(const QImage &image) {
        quietly([&] { delegate->tools().editor().openEditorDirectly(image); });
        return *static_cast<EditorView *>(window(LargeWindows::Kind::editor));
    }
    bool happens(const std::function<bool()> &claim) {
        return test::eventually([&] {
            time.advance(10ms);
            return claim();
        });
    }
    [[nodiscard]] static QList<OCRNotepadView *> notepads() {
        QList<OCRNotepadView *> views;
        for (QWidget *widget : QApplication::topLevelWidgets())
            if (auto *view = qobject_cast<OCRNotepadView *>(widget))
                views.append(view);
        return views;
    }
    [[nodiscard]] static QImage picture(const QColor &colour) {
        QImage image(60, 40, QImage::Format_RGB32);
        image.fill(colour);
        return image;
    }
    /// The pictures in the folder for captures.
    [[nodiscard]] QStringList savedCaptures() const {
        return QDir(home.filePath(text("Documents/tavrine"))).entryList({text("*.png")}, QDir::Files, QDir::Time);
    }
};

TEST_F(SnippingToolTest, getTextOpensANotepadThatCopiesByItself) {
    desktop.recognizer().setLines({text("first"), text("second")});
    getText(Qt::white);
    EXPECT_EQ(notepads().size(), 1);
    EXPECT_TRUE(happens([&] { return desktop.pasteboard().string() == text("first\nsecond"); }));
    EXPECT_THAT(savedCaptures(), IsEmpty());
}

TEST_F(SnippingToolTest, closingANotepadSavesItsCaptureOnce) {
    getText(Qt::red);
    ASSERT_EQ(notepads().size(), 1);
    QTest::keyClick(notepads().first(), Qt::Key_Escape);
    EXPECT_TRUE(happens([&] { return savedCaptures().size() == 1; }));
    const QImage saved(home.filePath(text("Documents/tavrine/")) + savedCaptures().first());
    EXPECT_EQ(saved.pixelColor(1, 1), QColor(Qt::red));
    time.advance(1h);
    EXPECT_EQ(savedCaptures().size(), 1);
}

TEST_F(SnippingToolTest, theEditorsTwoScansReadThePicture) {
    desktop.recognizer().setLines({text("words")});
    desktop.pictureCodeDetector().setPayloads({text("code")});
    EditorView &editor = openEditor(picture(Qt::white));
    editor.model().extractText();
    editor.model().scanQr();
    EXPECT_TRUE(happens([&] { return editor.findChild<OCRResultView *>() && editor.findChild<QRLabelBubble *>(); }));
    EXPECT_THAT(desktop.screenCodeDetector().images(), IsEmpty());
}

TEST_F(SnippingToolTest, theTextOfACardDoesNotWaitForTheEditors) {
    desktop.recognizer().setLines({text("of the card")});
    desktop.recognizer().holdNext();
    EditorView &editor = openEditor(picture(Qt::white));
    editor.model().extractText();
    ASSERT_TRUE(happens([&] { return desktop.recognizer().count() == 1; }));
    getText(Qt::white);
    EXPECT_TRUE(happens([&] { return desktop.pasteboard().string() == text("of the card"); }));
    EXPECT_EQ(desktop.recognizer().waiting(), 1) << "the editor's is still being read";
}

TEST_F(SnippingToolTest, aScanOfTheScreenDoesNotWaitForTheEditors) {
    desktop.pictureCodeDetector().hold();
    openEditor(picture(Qt::white)).model().scanQr();
    ASSERT_TRUE(happens([&] { return desktop.pictureCodeDetector().waiting() == 1; }));
    scanScreen();
    EXPECT_TRUE(happens([&] { return panels().living() == 1; }));
    EXPECT_EQ(desktop.pictureCodeDetector().waiting(), 1);
}

TEST_F(SnippingToolTest, nobodyReadsForAnEditorThatIsClosed) {
    desktop.recognizer().hold();
    desktop.pictureCodeDetector().hold();
    EditorModel &model = openEditor(picture(Qt::white)).model();
    model.extractText();
    model.scanQr();
    const auto waiting = [this] { return desktop.recognizer().waiting() + desktop.pictureCodeDetector().waiting(); };
    ASSERT_TRUE(happens([&] { return waiting() == 2; }));
    window(LargeWindows::Kind::editor)->close();
    EXPECT_TRUE(test::eventually([&] {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return waiting() == 0;
    }));
}

// The worker writes down what it is given, beside itself in the folder of programs.
TEST_F(SnippingToolTest, theEditorUploadsThePictureWithItsAnnotationsAndRestsTwoSecondsAfterTheLink) {
    const test::FakeWorker worker(R"(cat > "$(dirname $0)/input"; echo '{"url":"https://i.example/1","logs":[]}')");
    const QDir programs(home.filePath(text("bin")));
    ASSERT_TRUE(programs.mkpath(text(".")) &&
                QFile::copy(worker.path(), programs.filePath(text("TavrineUploadWorker"))));
    desktop.keychain().store({text("com.veltrane.Tavrine"), text("cloudUploadScript")}, "return 1;");
    defaults.set(text("cloudUploadEnabled"), true);
    EditorModel &model = openEditor(picture(Qt::white)).model();
    UploadButton *button = model.uploadButton();
    ASSERT_TRUE(button);
    ASSERT_TRUE(happens([&] { return button->isShown(); }));
    DrawingPath line{.id = text("line"), .points = {{0, 0.5}, {1, 0.5}}, .color = Qt::red, .text = {}, .number = {}};
    line.lineWidth = 6;
    model.setDrawings({line});
    model.upload();
    ASSERT_TRUE(test::eventually([&] { // time stands still, for what follows is measured
        time.runPending();
        return button->state() == UploadButtonState::done;
    }));
    QFile input(programs.filePath(text("input")));
    ASSERT_TRUE(input.open(QIODevice::ReadOnly));
    const QString base64 = QJsonDocument::fromJson(input.readAll()).object().value(text("imageBase64")).toString();
    const QImage sent = QImage::fromData(QByteArray::fromBase64(base64.toLatin1()), "PNG");
    EXPECT_EQ(sent.size(), QSize(60, 40));
    EXPECT_EQ(sent.pixelColor(30, 20), QColor(Qt::red));
    EXPECT_EQ(sent.pixelColor(30, 2), QColor(Qt::white));
    EXPECT_EQ(desktop.pasteboard().string(), text("https://i.example/1"));
    time.advance(1999ms);
    EXPECT_EQ(button->state(), UploadButtonState::done);
    time.advance(1ms);
    EXPECT_EQ(button->state(), UploadButtonState::idle);
    EXPECT_TRUE(window(LargeWindows::Kind::editor)->isVisible());
}

TEST_F(SnippingToolTest, aScanOfTheScreenShowsItsCodes) {
    desktop.screenCodeDetector().setPayloads({text("hello")});
    scanScreen();
    ASSERT_TRUE(happens([&] { return panels().living() == 1; }));
    EXPECT_TRUE(panels().windows().front()->isVisible());
    EXPECT_EQ(desktop.application().activationPolicy(), ActivationPolicy::regular);
    EXPECT_THAT(desktop.pictureCodeDetector().images(), IsEmpty());
}

TEST_F(SnippingToolTest, theProgramLeavesTheTaskBarWithTheCodesUnlessALargeWindowIsThere) {
    QWidget panel(nullptr, Qt::Window | Qt::FramelessWindowHint); // as the desktop's are
    panel.show();
    scanScreen();
    ASSERT_TRUE(happens([&] { return panels().living() == 1; }));
    panels().windows().front()->closeFromOutside();
    EXPECT_EQ(desktop.application().activationPolicy(), ActivationPolicy::accessory);
    time.advance(1s);
    openEditor(picture(Qt::white));
    scanScreen();
    ASSERT_TRUE(happens([&] { return panels().living() == 1; }));
    panels().windows().front()->closeFromOutside();
    EXPECT_EQ(desktop.application().activationPolicy(), ActivationPolicy::regular);
    window(LargeWindows::Kind::editor)->close();
    time.advance(1s);
    EXPECT_EQ(desktop.application().activationPolicy(), ActivationPolicy::accessory);
}

TEST_F(SnippingToolTest, aColourIsPickedAndTold) {
    delegate->pickColor();
    ASSERT_TRUE(desktop.colorSamplers().isShown());
    desktop.colorSamplers().take(Qt::red);
    time.advance(100ms);
    EXPECT_EQ(desktop.pasteboard().string(), text("#FF0000"));
    EXPECT_EQ(panels().living(), 1); // the toast
}

// The end of the program.

TEST_F(SnippingToolTest, theEndDoesNotWaitForAReaderThatHangs) {
    desktop.recognizer().hold();
    EditorView &editor = openEditor(picture(Qt::white));
    getText(Qt::white);
    editor.model().extractText();
    ASSERT_TRUE(happens([&] { return desktop.recognizer().waiting() == 2; }));
    QElapsedTimer timer;
    timer.start();
    delegate.reset();
    EXPECT_LT(timer.elapsed(), 2000);
}

TEST_F(SnippingToolTest, theEndTakesItsPanelsWithIt) {
    getText(Qt::white);
    QTest::keyClick(notepads().first(), Qt::Key_Escape);
    getText(Qt::white); // while the first fades
    EXPECT_GT(panels().living(), 0);
    delegate.reset();
    EXPECT_EQ(panels().living(), 0);
}

TEST_F(SnippingToolTest, theEndGivesUpAScanUnderWay) {
    tool().startQrScan();
    delegate.reset();
    EXPECT_TRUE(desktop.taskLauncher().tasks().first()->isTerminated());
    desktop.taskLauncher().deliverSignals();
}

} // namespace
} // namespace tavrine
