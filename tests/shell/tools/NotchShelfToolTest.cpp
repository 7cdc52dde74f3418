// The shelf within the program, over fakes.
#include "look/FittingWindow.h"
#include "panels/ToastView.h"
#include "shelf/NotchWindowController.h"
#include "shell/ShellTest.h"
#include "support/Eventually.h"

#include <QApplication>
#include <QFile>
#include <QScreen>

namespace tavrine {
namespace {

class NotchShelfToolTest : public ShellTest {
protected:
    NotchShelfTool &tool() { return delegate->tools().notchShelf(); }
    NotchViewModel &model() { return tool().notchController()->viewModel(); }
    void turn(bool isOn) {
        quietly([&] {
            set(Feature::notchShelf, isOn);
            time.advance(100ms);
        });
    }
    [[nodiscard]] int watched() {
        return desktop.eventMonitors().localCount() + desktop.dragPasteboards().watching() +
               desktop.sessionNotices().following();
    }
    [[nodiscard]] QStringList toasts() { return desktop.panelWindows().visibleTitles(); }
};

TEST_F(NotchShelfToolTest, aLaunchWithTheSwitchOnShowsItsBand) {
    launch();
    ASSERT_TRUE(tool().notchController());
    ASSERT_EQ(desktop.edgeWindows().windows().size(), 1U);
    EXPECT_TRUE(desktop.edgeWindows().windows().front()->isVisible());
    EXPECT_TRUE(desktop.edgeWindows().windows().front()->content());
    EXPECT_EQ(watched(), 3);
}

TEST_F(NotchShelfToolTest, windowsStandBelowItsBandWhileItIsOn) {
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    Screen own = desktop.screens().screens().first();
    own.frame = own.visibleFrame = screen;
    desktop.screens().setScreens({own});
    const auto top = [&screen] {
        QWidget window;
        window.setGeometry(screen);
        fitToScreen(window);
        window.show();
        QCoreApplication::processEvents();
        return window.frameGeometry().top() - screen.top();
    };
    launch();
    EXPECT_EQ(top(), notch::defaultHeight);
    turn(false);
    EXPECT_EQ(top(), 0);
    turn(true);
    EXPECT_EQ(top(), notch::defaultHeight);
    delegate.reset();
    EXPECT_EQ(top(), 0);
}

TEST_F(NotchShelfToolTest, aLaunchWithTheSwitchOffWatchesNothing) {
    defaults.set(text("featureNotchShelf"), false);
    launch();
    EXPECT_FALSE(tool().notchController());
    EXPECT_EQ(desktop.edgeWindows().made(), 0);
    EXPECT_EQ(watched(), 0);
}

TEST_F(NotchShelfToolTest, turningItOnTwiceCreatesOneController) {
    defaults.set(text("featureNotchShelf"), false);
    launch();
    turn(true);
    const NotchWindowController *const first = tool().notchController();
    ASSERT_TRUE(first);
    turn(true);
    quietly([this] { tool().setOn(true); });
    EXPECT_EQ(tool().notchController(), first);
    EXPECT_EQ(desktop.edgeWindows().made(), 1);
}

TEST_F(NotchShelfToolTest, switchedOffItGivesUpWindowAndMonitorsAndWhatItHeld) {
    launch();
    const int timers = time.timerCount();
    model().addText(text("held"));
    time.runPending();
    const QPointer<NotchViewModel> held(&model());
    turn(false);
    EXPECT_FALSE(tool().notchController());
    EXPECT_FALSE(held);
    EXPECT_TRUE(desktop.edgeWindows().windows().empty());
    EXPECT_EQ(watched(), 0);
    EXPECT_EQ(time.timerCount(), timers - 2);
    turn(true);
    EXPECT_TRUE(model().items().isEmpty());
}

TEST_F(NotchShelfToolTest, flippedInTheMiddleOfADragItIsThereForTheNext) {
    launch();
    desktop.screens().setPressedMouseButtons(1);
    desktop.dragPasteboards().begin(true);
    time.advance(100ms);
    EXPECT_TRUE(model().isFileDragActive());
    turn(false);
    turn(true);
    desktop.eventMonitors().mouse(eventMask::leftMouseDragged);
    EXPECT_FALSE(model().isFileDragActive()); // what was dragged before it was there
    desktop.dragPasteboards().end();
    desktop.screens().setPressedMouseButtons(0);
    time.advance(100ms);
    desktop.screens().setPressedMouseButtons(1);
    desktop.dragPasteboards().begin(true);
    time.advance(100ms);
    EXPECT_TRUE(model().isFileDragActive());
}

TEST_F(NotchShelfToolTest, aFileThatWasMovedAwayLeavesTheShelfOfTheProgram) {
    launch();
    const QString path = home.filePath(text("moved.txt"));
    ASSERT_TRUE(QFile(path).open(QIODevice::WriteOnly));
    model().addFile(QUrl::fromLocalFile(path));
    time.runPending();
    model().removeAfterMove(model().items().first(), QUrl::fromLocalFile(path), notch::moveAttempts);
    ASSERT_TRUE(QFile::remove(path));
    time.advance(200ms);
    EXPECT_TRUE(test::eventually([this] {
        time.runPending();
        return model().items().isEmpty();
    }));
}

TEST_F(NotchShelfToolTest, aFileThatHasGoneIsToldByItsNameWhenItIsOpenedAndOneThatIsThereIsNot) {
    launch();
    const QString there = home.filePath(text("there.txt"));
    ASSERT_TRUE(QFile(there).open(QIODevice::WriteOnly));
    int opened = 0;
    QObject::connect(&model(), &NotchViewModel::fileToOpen, qApp, [&] { ++opened; });
    for (const QString &path : {there, home.filePath(text("gone.txt"))})
        model().addFile(QUrl::fromLocalFile(path));
    time.runPending();
    model().openItem(model().items().first());
    ASSERT_TRUE(test::eventually([&] { return opened == 1; }));
    EXPECT_THAT(toasts(), IsEmpty());
    model().openItem(model().items().last());
    ASSERT_TRUE(test::eventually([&] {
        time.runPending();
        return toasts().size() == 1;
    }));
    QStringList words;
    for (const QWidget *widget : QApplication::allWidgets())
        if (const auto *toast = qobject_cast<const ToastView *>(widget))
            words << toast->message();
    EXPECT_THAT(words, ElementsAre(text("“gone.txt” is no longer where it was")));
    EXPECT_EQ(opened, 1);
    EXPECT_EQ(model().items().size(), 2) << "it may come back";
}

// Without a mouse.

TEST_F(NotchShelfToolTest, aSecondStartThatAsksForTheShelfOpensItForTheKeyboard) {
    launch();
    model().addText(text("held"));
    time.runPending();
    delegate->startedAgain(text("shelf"));
    EXPECT_TRUE(desktop.edgeWindows().windows().front()->hasKeyboard());
    EXPECT_FALSE(window(LargeWindows::Kind::settings));
}

TEST_F(NotchShelfToolTest, anEmptyShelfSaysSo) {
    launch();
    delegate->startedAgain(text("shelf"));
    time.advance(100ms);
    EXPECT_FALSE(desktop.edgeWindows().windows().front()->hasKeyboard());
    EXPECT_EQ(toasts().size(), 1);
}

TEST_F(NotchShelfToolTest, aStartThatAsksForAShelfThatIsOffBringsTheSettingsForward) {
    defaults.set(text("featureNotchShelf"), false);
    launch();
    delegate->startedAgain(text("shelf"));
    EXPECT_TRUE(window(LargeWindows::Kind::settings));
}

TEST_F(NotchShelfToolTest, aStartThatAsksForWhatNobodyKnowsBringsTheSettingsForward) {
    launch();
    delegate->startedAgain(text("format the disk"));
    EXPECT_TRUE(window(LargeWindows::Kind::settings));
}

} // namespace
} // namespace tavrine
