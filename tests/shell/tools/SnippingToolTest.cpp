// What captures and editors lead to: text and codes, with real queues and views over fakes.
#include "capture/SnipFlow.h"
#include "capture/reading/OCRNotepadView.h"
#include "capture/reading/OCRResultView.h"
#include "capture/reading/QRLabelBubble.h"
#include "shell/ShellTest.h"
#include "support/Eventually.h"

#include <QApplication>
#include <QElapsedTimer>
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

TEST_F(SnippingToolTest, aScanOfTheScreenShowsItsCodes) {
    desktop.screenCodeDetector().setPayloads({text("hello")});
    tool().startQrScan();
    ASSERT_EQ(desktop.taskLauncher().tasks().size(), 1);
    ASSERT_TRUE(picture(Qt::white).save(desktop.taskLauncher().tasks().first()->arguments().last()));
    desktop.taskLauncher().tasks().first()->finish(0);
    ASSERT_TRUE(happens([&] { return panels().living() == 1; }));
    EXPECT_TRUE(panels().windows().front()->isVisible());
    EXPECT_EQ(desktop.application().activationPolicy(), ActivationPolicy::regular);
    EXPECT_THAT(desktop.pictureCodeDetector().images(), IsEmpty());
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
    ASSERT_TRUE(happens([&] { return desktop.recognizer().count() == 1; })); // and the second waits behind it
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
