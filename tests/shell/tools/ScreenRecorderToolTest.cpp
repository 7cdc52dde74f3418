// The recorder within the program, over a desktop of fakes.
#include "capture/SnipFlow.h"
#include "recording/ScreenRecorder.h"
#include "shell/ShellTest.h"
#include "shell/menu/TrayMenu.h"
#include "support/Eventually.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFile>

namespace tavrine {
namespace {

class ScreenRecorderToolTest : public ShellTest {
protected:
    void SetUp() override {
        desktop.access().setScreenCaptureGranted(true);
        QDir().mkpath(desktop.folders().temporary);
        testing::internal::CaptureStdout();
    }
    void TearDown() override {
        delegate.reset();
        EXPECT_EQ(desktop.panelWindows().living(), 0);
        time.advance(1h); // what was still to come does no harm
        testing::internal::GetCapturedStdout();
    }
    void launchProgram(Seconds then = 1s) {
        defaults.set(text("hasCompletedOnboarding"), true);
        desktop.access().setAccessibilityTrusted(true);
        construct();
        delegate->applicationDidFinishLaunching();
        time.advance(then);
    }
    [[nodiscard]] ScreenRecorderTool &tool() { return delegate->tools().screenRecorder(); }
    [[nodiscard]] ScreenRecorder &recorder() { return *tool().recorderIfMade(); }
    [[nodiscard]] bool happens(const std::function<bool()> &claim) {
        return test::eventually([&] {
            time.runPending();
            return claim();
        });
    }
    QString leave(const char *name, const QByteArray &content = "movie") {
        const QString path = desktop.folders().temporary + text("/") + text(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        return path;
    }
    void record() {
        recorder().selectionModel()->drag({10, 20}, {330, 260});
        recorder().selectionModel()->endDrag();
        recorder().selectionModel()->start();
        ASSERT_TRUE(happens([this] { return recorder().isRecording(); }));
    }
    void recordToThePreview() {
        record();
        // The first picture is on its way to the writer; without it there would be no movie.
        ASSERT_TRUE(test::eventually([this] {
            time.advance(20ms);
            desktop.screenStreams().paint({20, 30, 5, 5}, 0xFF0000FF);
            return desktop.movieWriters().movies.front()->status == MovieWriterStatus::writing;
        }));
        recorder().stopRecording();
        ASSERT_TRUE(happens([this] { return recorder().previewModel(); }));
    }
};

TEST_F(ScreenRecorderToolTest, nothingOfItIsThereBeforeItsFirstUse) {
    launchProgram(1min);
    EXPECT_FALSE(tool().recorderIfMade());
    EXPECT_FALSE(desktop.hasAskedForPanels());
}

TEST_F(ScreenRecorderToolTest, theHotKeyLeadsToASavedMovie) {
    launchProgram();
    desktop.hotKeys().press(22, hotKeyModifier::command | hotKeyModifier::shift); // the key "6"
    time.runPending();
    ASSERT_TRUE(tool().recorderIfMade());
    recordToThePreview();
    recorder().previewModel()->setFileName(text("My clip!"));
    recorder().previewModel()->pressCopy();
    const QString saved = home.filePath(text("Documents/Tavrine QuickShots/My_clip_.mp4"));
    EXPECT_TRUE(QFile::exists(saved));
    EXPECT_THAT(desktop.pasteboard().writtenFileUrls(), ElementsAre(QUrl::fromLocalFile(saved)));
    EXPECT_EQ(manager().history().front().content, text("[Screen Recording] My clip!"));
    EXPECT_EQ(defaults.get<QString>(text("customSaveDirectoryPath")),
              home.filePath(text("Documents/Tavrine QuickShots")));
}

TEST_F(ScreenRecorderToolTest, aBlankInFrontOfANameIsTrimmedAndAnExclamationMarkAtItsEndIsAnUnderscore) {
    launchProgram();
    tool().startScreenRecording();
    recordToThePreview();
    recorder().previewModel()->setFileName(text(" Look, here!"));
    recorder().previewModel()->pressCopy();
    const QString saved = home.filePath(text("Documents/Tavrine QuickShots/Look__here_.mp4"));
    EXPECT_THAT(desktop.pasteboard().writtenFileUrls(), ElementsAre(QUrl::fromLocalFile(saved)));
    EXPECT_TRUE(QFile::exists(saved));
    EXPECT_EQ(manager().history().front().content, text("[Screen Recording] Look, here!"));
}

TEST_F(ScreenRecorderToolTest, theTileStartsIt) {
    launchProgram();
    const auto lines = desktop.statusItem().menuLines();
    const auto tile = std::ranges::find(lines, text("Record Screen"), &StatusMenuLine::label);
    ASSERT_NE(tile, lines.end());
    desktop.statusItem().choose(tile->id);
    time.advance(1s);
    ASSERT_TRUE(tool().recorderIfMade());
    EXPECT_TRUE(recorder().overlayWindow());
}

TEST_F(ScreenRecorderToolTest, withoutThePermissionOnlyTheAlertComes) {
    desktop.access().setScreenCaptureGranted(false);
    launchProgram();
    tool().startScreenRecording();
    time.advance(1s);
    EXPECT_FALSE(recorder().overlayWindow());
    EXPECT_EQ(desktop.access().probes(), 1);
    EXPECT_EQ(desktop.alerts().shown().size(), 1);
}

TEST_F(ScreenRecorderToolTest, theAlertOfTheMicrophoneFindsNoOverlayInItsWay) {
    desktop.access().setMicrophone(MicrophoneAuthorization::denied);
    launchProgram();
    tool().startScreenRecording();
    recorder().selectionModel()->selectAll();
    recorder().selectionModel()->flipSystemAudio();
    recorder().selectionModel()->start();
    EXPECT_TRUE(recorder().overlayWindow());
    time.runPending();
    EXPECT_FALSE(recorder().overlayWindow());
    ASSERT_EQ(desktop.alerts().shown().size(), 1);
    EXPECT_EQ(desktop.alerts().shown().first().message, text("Microphone Permission Required"));
    EXPECT_THAT(desktop.movieWriters().movies, IsEmpty());
}

TEST_F(ScreenRecorderToolTest, switchingItOffTakesItsWindowsAndItsKey) {
    launchProgram();
    tool().startScreenRecording();
    record();
    set(Feature::screenRecorder, false);
    ASSERT_TRUE(happens([this] { return !recorder().floatingStopWindow(); }));
    EXPECT_FALSE(recorder().isRecording());
    EXPECT_FALSE(recorder().borderOverlayWindow());
    tool().startScreenRecording();
    EXPECT_FALSE(recorder().overlayWindow());
}

TEST_F(ScreenRecorderToolTest, whatACrashHasLeftIsShownAfterTheLaunch) {
    const QString left = leave("tavrine-rec-0B7E6A1C.mp4");
    const QString empty = leave("tavrine-rec-EMPTY.mp4", {});
    const QString muted = leave("tavrine-muted-0B7E6A1C.mp4");
    const QString foreign = leave("notes.mp4");
    launchProgram(1'999ms);
    EXPECT_FALSE(tool().recorderIfMade());
    time.advance(1ms);
    ASSERT_TRUE(tool().recorderIfMade());
    ASSERT_TRUE(recorder().previewModel());
    EXPECT_EQ(recorder().previewModel()->filePath(), left);
    EXPECT_FALSE(QFile::exists(empty));
    EXPECT_FALSE(QFile::exists(muted));
    EXPECT_TRUE(QFile::exists(foreign));
    recorder().previewModel()->pressDelete();
    EXPECT_FALSE(QFile::exists(left));
}

TEST_F(ScreenRecorderToolTest, allThatWasLeftIsShownAtOneStartOneAfterTheOther) {
    for (const char *name : {"tavrine-rec-1.mp4", "tavrine-rec-2.mp4", "tavrine-rec-3.mp4"})
        leave(name);
    launchProgram(2s);
    QStringList shown;
    while (recorder().previewModel() && shown.size() < 4) {
        shown << QFileInfo(recorder().previewModel()->filePath()).fileName();
        if (shown.size() % 2 == 0)
            recorder().previewModel()->pressSave();
        else
            recorder().previewModel()->pressDelete();
        time.runPending();
    }
    shown.sort();
    EXPECT_EQ(shown, (QStringList{text("tavrine-rec-1.mp4"), text("tavrine-rec-2.mp4"), text("tavrine-rec-3.mp4")}));
}

TEST_F(ScreenRecorderToolTest, whatWasNotSeenIsShownAgainWhenItIsSwitchedOffAndOn) {
    leave("tavrine-rec-1.mp4");
    leave("tavrine-rec-2.mp4");
    launchProgram(2s);
    const QString first = recorder().previewModel()->filePath();
    set(Feature::screenRecorder, false);
    time.advance(1s);
    EXPECT_FALSE(recorder().previewModel());
    set(Feature::screenRecorder, true);
    time.advance(1s);
    QStringList shown;
    while (recorder().previewModel() && shown.size() < 3) {
        shown << recorder().previewModel()->filePath();
        recorder().previewModel()->pressDelete();
        time.runPending();
    }
    EXPECT_EQ(shown.size(), 2);
    EXPECT_TRUE(shown.contains(first));
}

TEST_F(ScreenRecorderToolTest, whileItIsOffWhatWasLeftStaysAndIsShownOnceItIsOn) {
    defaults.set(text("featureScreenRecorder"), false);
    const QString left = leave("tavrine-rec-0B7E6A1C.mp4");
    const QString begun = leave("tavrine-rec-BEGUN.mp4", QByteArray::fromHex("00000008667479700000100866726565"));
    launchProgram(1min);
    EXPECT_FALSE(tool().recorderIfMade());
    EXPECT_TRUE(QFile::exists(left));
    set(Feature::screenRecorder, true);
    time.advance(3s);
    ASSERT_TRUE(tool().recorderIfMade());
    EXPECT_EQ(recorder().previewModel()->filePath(), left);
    EXPECT_FALSE(QFile::exists(begun)); // there is no picture in it
}

TEST_F(ScreenRecorderToolTest, theCardOfACaptureCoversNoButtonOfThePreview) {
    leave("tavrine-rec-0B7E6A1C.mp4");
    launchProgram(5s);
    ASSERT_NE(recorder().previewWindow(), nullptr);
    SnippingTool &snipping = delegate->tools().snipping();
    snipping.startCapture();
    const auto task = desktop.taskLauncher().tasks().last();
    QImage picture(40, 30, QImage::Format_ARGB32);
    picture.fill(Qt::red);
    ASSERT_TRUE(picture.save(task->arguments().last()));
    task->finish(0);
    ASSERT_TRUE(happens([&] { return snipping.flowIfMade() && snipping.flowIfMade()->isPreviewShown(); }));
    const QRectF card = snipping.flowIfMade()->previewWindow()->frame();
    EXPECT_FALSE(card.intersects(recorder().previewWindow()->frame())) << card.x() << "," << card.y();
    snipping.flowIfMade()->dismissSnipPreview(Dismissal::atOnce);
}

} // namespace
} // namespace tavrine
