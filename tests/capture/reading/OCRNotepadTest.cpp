#include "ReadingTest.h"
#include "adapters/fake/FakeEventMonitors.h"
#include "adapters/fake/FakePanelWindow.h"
#include "adapters/fake/FakeScreens.h"
#include "adapters/fake/FakeWorkspace.h"
#include "capture/reading/OCRNotepadFlow.h"
#include "capture/reading/OCRNotepadModel.h"

namespace tavrine {
namespace {

class OCRNotepadTest : public ReadingTest {
protected:
    void open(const QImage &image = picture()) { flow.getTextFromSnip(image); }
    void clickAt(QPointF place) {
        screens.setMouseLocation(place);
        monitors.mouseDown(eventMask::leftMouseDown, false);
    }
    [[nodiscard]] FakePanelWindows::Window *window() {
        return static_cast<FakePanelWindows::Window *>(flow.ocrNotepadWindow());
    }

    FakePanelWindows windows;
    FakeScreens screens;
    FakeEventMonitors monitors;
    FakeWorkspace workspace;
    QPointer<OCRNotepadState> shownState;
    std::function<void()> dismiss;
    std::unique_ptr<OCRNotepadModel> model;
    QList<QImage> saved;
    OCRNotepadFlow flow{{windows, screens, monitors, workspace, time, manager},
                        {.makeView =
                             [this](OCRNotepadState &state, const std::function<void()> &onDismiss) {
                                 shownState = &state;
                                 dismiss = onDismiss;
                                 model = std::make_unique<OCRNotepadModel>(state, pasteboard, time);
                                 return nullptr;
                             },
                         .autoSaveSnip = [this](const QImage &image) { saved.append(image); }}};
};

TEST_F(OCRNotepadTest, thePanelIsOfTheFloatingKind) {
    open();
    const PanelDescription &panel = window()->description();
    EXPECT_EQ(panel.contentSize, QSizeF(440, 320));
    EXPECT_EQ(panel.level, 3);
    EXPECT_EQ(panel.collectionBehavior, 265U);
    EXPECT_TRUE(panel.isClear);
    EXPECT_FALSE(panel.hasShadow);
    EXPECT_FALSE(panel.ignoresMouseEvents);
    EXPECT_TRUE(panel.canBecomeKey);
}

TEST_F(OCRNotepadTest, itStandsInTheMiddleOfTheMainScreenAndHasTheKeyboard) {
    screens.setScreens(
        {{.number = 1, .localizedName = {}, .frame = {0, 0, 1440, 900}, .visibleFrame = {0, 0, 1440, 876}},
         {.number = 2, .localizedName = {}, .frame = {1440, 0, 1000, 800}, .visibleFrame = {1440, 40, 1000, 760}}});
    screens.setKeyboardScreen(1);
    open();
    EXPECT_EQ(window()->frame(), QRectF(1440 + 500 - 220, 40 + 380 - 160, 440, 320));
    EXPECT_TRUE(window()->isVisible());
    EXPECT_TRUE(window()->isKey());
}

TEST_F(OCRNotepadTest, itFadesInFromNothing) {
    open();
    EXPECT_EQ(window()->alpha(), 0);
    time.advance(OCRNotepadFlow::fadeIn - Seconds{0.001});
    EXPECT_LT(window()->alpha(), 1);
    time.advance(Seconds{0.001});
    EXPECT_EQ(window()->alpha(), 1);
}

TEST_F(OCRNotepadTest, itLoadsThenShows) {
    recognizer.setLines({text("Hello"), text("there")});
    open();
    EXPECT_TRUE(model->isLoading());
    settle();
    EXPECT_FALSE(model->isLoading());
    EXPECT_EQ(model->text(), text("Hello\nthere"));
}

TEST_F(OCRNotepadTest, escapeDuringLoadingSavesTheCaptureAndDropsTheLateResult) {
    recognizer.setLines({text("late")});
    open(picture(Qt::red));
    dismiss();
    EXPECT_EQ(flow.ocrNotepadWindow(), nullptr);
    EXPECT_TRUE(shownState.isNull());
    settle();
    time.advance(OCRNotepadFlow::fadeOut);
    ASSERT_EQ(saved.size(), 1);
    EXPECT_EQ(saved.first(), picture(Qt::red));
    EXPECT_EQ(pasteboard.changeCount(), 0) << "nothing was copied";
    EXPECT_TRUE(model->isLoading()) << "the fading panel shows no late text";
}

TEST_F(OCRNotepadTest, theCaptureIsSavedOnceThePanelHasGone) {
    open();
    FakePanelWindows::Window *panel = window();
    flow.closeOCRNotepad();
    time.advance(OCRNotepadFlow::fadeOut - Seconds{0.01});
    EXPECT_TRUE(saved.isEmpty());
    EXPECT_TRUE(panel->isVisible());
    time.advance(Seconds{0.01});
    EXPECT_EQ(saved.size(), 1);
    EXPECT_TRUE(windows.windows().empty());
}

TEST_F(OCRNotepadTest, aClickElsewhereClosesAndSaves) {
    open();
    clickAt(window()->frame().topLeft() - QPointF(1, 1));
    EXPECT_EQ(flow.ocrNotepadWindow(), nullptr);
    time.advance(Seconds{1});
    EXPECT_EQ(saved.size(), 1);
}

TEST_F(OCRNotepadTest, aRightClickElsewhereClosesToo) {
    open();
    screens.setMouseLocation({0, 0});
    monitors.mouseDown(eventMask::rightMouseDown, false);
    EXPECT_EQ(flow.ocrNotepadWindow(), nullptr);
}

TEST_F(OCRNotepadTest, aClickInsideKeepsItOpen) {
    open();
    clickAt(window()->frame().center());
    clickAt(window()->frame().topLeft() + QPointF(1, 1));
    EXPECT_NE(flow.ocrNotepadWindow(), nullptr);
    time.advance(Seconds{1});
    EXPECT_TRUE(saved.isEmpty());
}

TEST_F(OCRNotepadTest, closingEndsTheWatchOverClicks) {
    open();
    EXPECT_EQ(monitors.globalCount(), 1);
    flow.closeOCRNotepad();
    EXPECT_EQ(monitors.globalCount(), 0);
}

TEST_F(OCRNotepadTest, oneThatTheDesktopClosesSavesTheCapture) {
    open();
    window()->closeFromOutside();
    EXPECT_EQ(flow.ocrNotepadWindow(), nullptr);
    EXPECT_EQ(monitors.globalCount(), 0);
    time.advance(Seconds{1});
    EXPECT_EQ(saved.size(), 1);
}

TEST_F(OCRNotepadTest, aWayToAnotherProgramByTheKeyboardClosesAndSaves) {
    workspace.setFrontmost(ownBundleIdentifier, QCoreApplication::applicationPid());
    open();
    time.advance(Seconds{1});
    workspace.setFrontmost(text("org.example.Editor"));
    time.advance(Seconds{1});
    EXPECT_EQ(flow.ocrNotepadWindow(), nullptr);
    EXPECT_EQ(saved.size(), 1);
}

TEST_F(OCRNotepadTest, itStaysWhileTheKeyboardIsOnItsWayToIt) {
    workspace.setFrontmost(ownBundleIdentifier, QCoreApplication::applicationPid());
    open();
    workspace.setFrontmost(text("org.example.Editor"));
    time.advance(Seconds{0.5});
    workspace.setFrontmost(ownBundleIdentifier, QCoreApplication::applicationPid());
    time.advance(Seconds{1});
    EXPECT_NE(flow.ocrNotepadWindow(), nullptr);
}

TEST_F(OCRNotepadTest, closingTwiceSavesOnce) {
    open();
    flow.closeOCRNotepad();
    flow.closeOCRNotepad();
    time.advance(Seconds{1});
    EXPECT_EQ(saved.size(), 1);
}

TEST_F(OCRNotepadTest, theNextNotepadClosesAndSavesTheFirst) {
    open(picture(Qt::red));
    open(picture(Qt::blue));
    time.advance(Seconds{1});
    ASSERT_EQ(saved.size(), 1);
    EXPECT_EQ(saved.first(), picture(Qt::red));
    EXPECT_EQ(windows.windows().size(), 1U);
    EXPECT_EQ(monitors.globalCount(), 1);
}

TEST_F(OCRNotepadTest, withoutAScreenItStillOpens) {
    screens.setScreens({});
    open();
    EXPECT_NE(flow.ocrNotepadWindow(), nullptr);
}

TEST_F(OCRNotepadTest, aClosingActionMayBeMissing) {
    flow.showOCRNotepad(std::make_shared<OCRNotepadState>(), {});
    flow.closeOCRNotepad();
    time.advance(Seconds{1});
    EXPECT_TRUE(windows.windows().empty());
}

// Copying.

TEST_F(OCRNotepadTest, theTextIsCopiedByItself) {
    recognizer.setLines({text("Hello")});
    open();
    settle();
    EXPECT_EQ(pasteboard.string(), text("Hello"));
    EXPECT_TRUE(model->hasAutoCopied());
    EXPECT_TRUE(model->ocrCopied());
}

TEST_F(OCRNotepadTest, autoCopyRunsOnceHoweverOftenTheStateChanges) {
    OCRNotepadState state;
    OCRNotepadModel once(state, pasteboard, time);
    state.setText(text("one"));
    state.setLoading(false);
    state.setText(text("two"));
    state.setLoading(true);
    state.setLoading(false);
    state.setLoading(false);
    EXPECT_EQ(pasteboard.clearCount(), 1);
    EXPECT_EQ(pasteboard.string(), text("one"));
}

TEST_F(OCRNotepadTest, aFailureCopiesNothing) {
    pasteboard.copyFromOutside(text("before"));
    open();
    settle();
    EXPECT_EQ(model->errorMessage(), text("No text found in this image."));
    EXPECT_EQ(pasteboard.string(), text("before"));
    EXPECT_FALSE(model->hasAutoCopied());
}

TEST_F(OCRNotepadTest, anEmptyTextIsNotCopied) {
    pasteboard.copyFromOutside(text("before"));
    OCRNotepadState state;
    OCRNotepadModel empty(state, pasteboard, time);
    state.setLoading(false);
    empty.copyAll();
    EXPECT_EQ(pasteboard.string(), text("before"));
    EXPECT_FALSE(empty.ocrCopied());
    EXPECT_FALSE(empty.hasAutoCopied());
}

TEST_F(OCRNotepadTest, copiedIsSaidForASecond) {
    OCRNotepadState state;
    OCRNotepadModel copied(state, pasteboard, time);
    state.setText(text("a"));
    copied.copyAll();
    time.advance(Seconds{0.999});
    EXPECT_TRUE(copied.ocrCopied());
    time.advance(Seconds{0.001});
    EXPECT_FALSE(copied.ocrCopied());
}

TEST_F(OCRNotepadTest, copyAllCopiesAgain) {
    recognizer.setLines({text("Hello")});
    open();
    settle();
    pasteboard.copyFromOutside(text("other"));
    model->copyAll();
    EXPECT_EQ(pasteboard.string(), text("Hello"));
}

} // namespace
} // namespace tavrine
