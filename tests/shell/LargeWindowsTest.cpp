#include "shell/LargeWindows.h"

#include "adapters/fake/FakeApplication.h"
#include "adapters/fake/FakeApplicationActivator.h"
#include "adapters/fake/VirtualTime.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QTest>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using Kind = LargeWindows::Kind;

class LargeWindowsTest : public testing::Test {
protected:
    QWidget *show(Kind kind) {
        windows.becomeRegular();
        windows.keep(kind, std::make_unique<QWidget>());
        windows.bringForward(kind);
        return windows.window(kind);
    }
    [[nodiscard]] bool isRegular() const { return application.activationPolicy() == ActivationPolicy::regular; }

    FakeApplication application;
    VirtualTime time;
    FakeWorkspace workspace;
    FakeApplicationActivator activator{workspace};
    LargeWindows windows{application, time, [this]() -> ApplicationActivator & { return activator; }};
};

TEST_F(LargeWindowsTest, closingTheSettingsWhileTheEditorIsOpenKeepsTheRegularPolicy) {
    show(Kind::editor);
    show(Kind::settings)->close();
    EXPECT_FALSE(windows.window(Kind::settings));
    time.advance(1s);
    EXPECT_TRUE(isRegular());
}

TEST_F(LargeWindowsTest, closingTheLastOneReturnsToAccessoryAfterATenthOfASecond) {
    for (const Kind kind : {Kind::editor, Kind::settings, Kind::welcome}) {
        show(kind)->close();
        time.advance(99ms);
        EXPECT_TRUE(isRegular());
        time.advance(1ms);
        EXPECT_FALSE(isRegular());
    }
}

TEST_F(LargeWindowsTest, oneThatComesForwardHasTheDesktopsLeave) {
    const QWidget *editor = show(Kind::editor);
    EXPECT_EQ(activator.broughtForward(), std::vector{static_cast<quint32>(editor->winId())});
}

TEST_F(LargeWindowsTest, aClosedWindowIsForgottenAndDeleted) {
    const QPointer<QWidget> settings = show(Kind::settings);
    QWidget *editor = show(Kind::editor);
    settings->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(settings);
    EXPECT_FALSE(windows.window(Kind::settings));
    EXPECT_EQ(windows.window(Kind::editor), editor);
}

TEST_F(LargeWindowsTest, aWindowThatRefusesToCloseIsStillHeldUntilItDoes) {
    struct Stubborn : QWidget {
        void closeEvent(QCloseEvent *event) override { event->setAccepted(mayClose); }
        bool mayClose = false;
    };
    auto *window = new Stubborn;
    windows.becomeRegular();
    windows.keep(Kind::settings, std::unique_ptr<QWidget>(window));
    windows.bringForward(Kind::settings);
    EXPECT_FALSE(window->close());
    EXPECT_EQ(windows.window(Kind::settings), window);
    time.advance(1s);
    EXPECT_TRUE(isRegular());
    window->mayClose = true;
    EXPECT_TRUE(window->close());
    EXPECT_FALSE(windows.window(Kind::settings));
    time.advance(1s);
    EXPECT_FALSE(isRegular());
}

TEST_F(LargeWindowsTest, aHiddenWindowDoesNotKeepTheRegularPolicy) {
    show(Kind::editor)->hide();
    windows.restoreAccessoryPolicy();
    EXPECT_FALSE(isRegular());
}

TEST_F(LargeWindowsTest, theWelcomeWindowAloneKeepsTheRegularPolicy) {
    show(Kind::welcome);
    windows.restoreAccessoryPolicy();
    EXPECT_TRUE(isRegular());
}

TEST_F(LargeWindowsTest, theWelcomeWindowStaysWhenAWindowManagerWantsItClosed) {
    QWidget *welcome = show(Kind::welcome);
    QCloseEvent event;
    QSpontaneKeyEvent::setSpontaneous(&event); // from outside
    qApp->notify(welcome, &event);
    EXPECT_FALSE(event.isAccepted());
    time.advance(1s);
    EXPECT_EQ(windows.window(Kind::welcome), welcome);
    EXPECT_TRUE(isRegular());
}

TEST_F(LargeWindowsTest, theOthersCloseWhenAWindowManagerWantsThemClosed) {
    QWidget *settings = show(Kind::settings);
    QCloseEvent event;
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(settings, &event);
    EXPECT_TRUE(event.isAccepted());
    EXPECT_FALSE(windows.window(Kind::settings));
}

TEST_F(LargeWindowsTest, aDetachedWindowLivesOnWithoutAHolder) {
    QWidget *editor = show(Kind::editor);
    const QPointer<QWidget> detached = windows.detach(Kind::editor);
    EXPECT_EQ(detached, editor);
    EXPECT_FALSE(windows.window(Kind::editor));
    QWidget *next = show(Kind::editor);
    detached->close();
    EXPECT_EQ(windows.window(Kind::editor), next);
}

/// What was made regular since is another's.
TEST_F(LargeWindowsTest, aDetachedWindowThatClosesLeavesThePolicyAlone) {
    show(Kind::editor);
    const QPointer<QWidget> detached = windows.detach(Kind::editor);
    windows.becomeRegular();
    detached->close();
    time.advance(1s);
    EXPECT_TRUE(isRegular());
}

TEST_F(LargeWindowsTest, orderingAllOutClosesNone) {
    QWidget *editor = show(Kind::editor);
    windows.orderOutAll();
    EXPECT_FALSE(editor->isVisible());
    EXPECT_EQ(windows.window(Kind::editor), editor);
}

TEST_F(LargeWindowsTest, whatIsNotThereCanBeBroughtForwardAndClosed) {
    windows.bringForward(Kind::editor);
    windows.close(Kind::editor);
    EXPECT_FALSE(windows.window(Kind::editor));
}

} // namespace
} // namespace tavrine
