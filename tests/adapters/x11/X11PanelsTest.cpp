// The panels on a real desktop, with the real paste: with a window manager, and without one.
#include "adapters/fake/FakePasteboard.h"
#include "adapters/linux/QtTime.h"
#include "adapters/x11/ForeignWindow.h"
#include "adapters/x11/X11ApplicationActivator.h"
#include "adapters/x11/X11EventMonitors.h"
#include "adapters/x11/X11EventPoster.h"
#include "adapters/x11/X11PanelWindow.h"
#include "adapters/x11/X11Screens.h"
#include "adapters/x11/X11Workspace.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "clipboard/ClipboardItem.h"
#include "shell/PanelController.h"
#include "shell/PasteBack.h"
#include "support/ServerHolder.h"
#include "support/TestKeyboard.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QPointer>
#include <QProcess>
#include <QTemporaryDir>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <cstdio>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::copyByXclip;
using testing::ForeignWindow;
using testing::waitUntil;
namespace key = testing::key;

bool isManaged = true;

/// What a panel shows here: takes keys, and pastes at Return.
class Content final : public QWidget {
public:
    explicit Content(std::function<void()> onReturn) : m_onReturn(std::move(onReturn)) {
        setFocusPolicy(Qt::StrongFocus);
    }
    QString typed;

protected:
    void showEvent(QShowEvent *) override { setFocus(); }
    void keyPressEvent(QKeyEvent *event) override {
        if (event->key() == Qt::Key_Return)
            m_onReturn();
        else
            typed += event->text();
    }

private:
    std::function<void()> m_onReturn;
};

class X11PanelsTest : public ::testing::Test {
protected:
    void SetUp() override { pasteBack.listen(); }
    void TearDown() override {
        controller.unloadClipboardPanels();
        controller.unloadEmojiPanel();
    }
    void settle(std::chrono::milliseconds length = 150ms) {
        (void)waitUntil([] { return false; }, length);
    }
    /// Of a window, as the server has them.
    static QByteArray properties(qint64 window, std::initializer_list<const char *> names) {
        QStringList arguments{QStringLiteral("-id"), QString::number(window)};
        for (const char *name : names)
            arguments.append(QString::fromLatin1(name));
        QProcess xprop;
        xprop.start(QStringLiteral("xprop"), arguments);
        xprop.waitForFinished();
        return xprop.readAllStandardOutput();
    }
    /// The window manager tells of it a moment after the keyboard has changed hands.
    bool isInFront() {
        const auto front = workspace.frontmostApplication();
        return front && front->processIdentifier == QCoreApplication::applicationPid();
    }
    ::testing::AssertionResult showSearchPanel() {
        controller.toggleSearchPanel();
        const bool isShown = waitUntil([this] {
            return content && content->window()->isActiveWindow() && content->hasFocus() &&
                   keyboard.focusedWindow() == content->window()->winId() && isInFront();
        });
        if (isShown)
            return ::testing::AssertionSuccess();
        const auto front = workspace.frontmostApplication();
        return ::testing::AssertionFailure()
               << "active " << content->window()->isActiveWindow() << ", focused " << content->hasFocus()
               << ", visible " << content->window()->isVisible() << ", window " << content->window()->winId()
               << ", keyboard in " << keyboard.focusedWindow() << ", in front "
               << (front ? front->localizedName.toStdString() : "nothing");
    }
    /// The window of a foreign program has the keyboard. Without a window manager somebody must give it.
    bool giveKeyboardTo(ForeignWindow &window) {
        if (!isManaged) {
            QByteArray id;
            if (!waitUntil([&] {
                    QProcess search;
                    search.start(QStringLiteral("xdotool"),
                                 {QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--pid"),
                                  QString::number(window.processId())});
                    search.waitForFinished();
                    id = search.readAllStandardOutput().split('\n').first();
                    return !id.isEmpty();
                }))
                return false;
            QProcess::execute(QStringLiteral("xdotool"), {QStringLiteral("windowfocus"), QString::fromLatin1(id)});
        }
        return window.waitForFocus() && waitUntil([&] {
                   const auto front = workspace.frontmostApplication();
                   return front && front->processIdentifier == window.processId();
               });
    }

    QTemporaryDir folder;
    testing::TestKeyboard keyboard;
    QtTime time;
    NotificationCenter notifications;
    UserDefaults defaults{folder.filePath(QStringLiteral("preferences.plist")), time, notifications};
    X11ApplicationActivator activator;
    X11PanelWindows windows{activator};
    X11EventMonitors monitors;
    QString text;
    X11EventPoster poster{[this] { return text; }};
    X11Screens screens;
    X11Workspace workspace;
    PasteBack pasteBack{workspace, time};
    FakePasteboard pasteboard;
    QPointer<Content> content;
    PanelController controller{
        {.windows = windows,
         .monitors = monitors,
         .poster = poster,
         .screens = screens,
         .workspace = workspace,
         .pasteBack = pasteBack,
         .activator = activator,
         .pasteboard = pasteboard,
         .defaults = defaults,
         .center = notifications,
         .time = time},
        {.classic = [] { return new QWidget; },
         .search =
             [this] {
                 content = new Content([this] {
                     ClipboardItem item;
                     item.content = text;
                     controller.pasteFromSearch(item);
                 });
                 return content.data();
             },
         .emoji = [] { return new QWidget; }},
        {.opensSearchPanel = [] { return true; },
         .copyToPasteboard = [](const ClipboardItem &item) { ASSERT_TRUE(copyByXclip(item.content)); },
         .showToast = [](const QString &, const QString &) {},
         .isAccessibilityTrusted = [] { return true; }}};
};

TEST_F(X11PanelsTest, theDesktopIsTheOneThatTheTestWants) {
    EXPECT_EQ(activator.hasWindowManager(), isManaged);
}

TEST_F(X11PanelsTest, aPanelTakesTheKeyboardAndGivesItBack) {
    ForeignWindow window(QStringLiteral(TAVRINE_GTK_ENTRY));
    ASSERT_TRUE(giveKeyboardTo(window));
    keyboard.tap(key::b);
    ASSERT_TRUE(window.waitForText(QStringLiteral("b")));
    ASSERT_TRUE(showSearchPanel());
    keyboard.tap(key::v);
    EXPECT_TRUE(waitUntil([&] { return content->typed == QLatin1String("v"); }));
    controller.toggleSearchPanel();
    ASSERT_TRUE(waitUntil([&] {
        const auto front = workspace.frontmostApplication();
        return front && front->processIdentifier == window.processId();
    }));
    keyboard.tap(key::b);
    EXPECT_TRUE(window.waitForText(QStringLiteral("bb")));
}

TEST_F(X11PanelsTest, aPanelShownAgainAtOnceHasTheKeyboardAgain) {
    for (int round = 0; round < 5; ++round) {
        ASSERT_TRUE(showSearchPanel()) << round;
        keyboard.tap(key::v);
        ASSERT_TRUE(waitUntil([&] { return content->typed.size() == round + 1; })) << round;
        controller.toggleSearchPanel();
    }
}

TEST_F(X11PanelsTest, aPanelStandsWhereItWasPut) {
    controller.toggleSearchPanel();
    settle();
    const QRectF visible = screens.mainScreen()->visibleFrame;
    const QRectF frame = controller.searchPanel()->frame();
    EXPECT_EQ(frame.size(), QSizeF(680, 500));
    EXPECT_NEAR(frame.center().x(), visible.center().x(), 1);
    EXPECT_NEAR(frame.center().y(), visible.center().y() + 60, 1);
}

TEST_F(X11PanelsTest, aPanelIsInNoTaskBarOnAllDesktopsAndAbove) {
    ASSERT_TRUE(showSearchPanel());
    settle();
    for (int round = 0; round < 5; ++round) { // the window manager forgets it in between
        const QByteArray told = properties(static_cast<qint64>(content->window()->winId()),
                                           {"_NET_WM_STATE", "_NET_WM_DESKTOP", "_NET_WM_WINDOW_TYPE"});
        for (const char *word : {"_NET_WM_STATE_ABOVE", "_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER",
                                 "4294967295", "_NET_WM_WINDOW_TYPE_DIALOG"})
            EXPECT_TRUE(told.contains(word)) << word << " in " << told.toStdString();
        controller.toggleSearchPanel();
        ASSERT_TRUE(showSearchPanel());
        settle();
    }
}

TEST_F(X11PanelsTest, aPanelThatIsDescribedSoIsInTheTaskBarWithItsTitleAndIcon) {
    const auto panel =
        windows.makePanel({.title = QStringLiteral("Found"), .contentSize = {200, 100}, .isInTaskBar = true});
    auto *inner = new QWidget;
    QPixmap icon(16, 16);
    icon.fill(Qt::red);
    inner->setWindowIcon(icon);
    panel->setContentView(inner);
    for (int round = 0; round < 3; ++round) {
        panel->makeKeyAndOrderFront();
        settle();
        const QByteArray told = properties(panel->windowNumber(), {"_NET_WM_STATE", "_NET_WM_NAME", "_NET_WM_ICON"});
        for (const char *word : {"_NET_WM_STATE_ABOVE", "\"Found\"", "16 x 16"})
            EXPECT_TRUE(told.contains(word)) << word << " in " << told.toStdString();
        EXPECT_FALSE(told.contains("SKIP")) << told.toStdString();
        panel->orderOut();
    }
}

TEST_F(X11PanelsTest, aPanelIsAboveAFullScreenWindow) {
    QProcess xterm;
    xterm.start(QStringLiteral("xterm"), {QStringLiteral("-fullscreen"), QStringLiteral("-e"), QStringLiteral("cat")});
    ASSERT_TRUE(waitUntil([&] {
        const auto front = workspace.frontmostApplication();
        return front && front->localizedName.contains(QLatin1String("term"), Qt::CaseInsensitive);
    }));
    settle(400ms);
    ASSERT_TRUE(showSearchPanel());
    settle();
    const QRect geometry = content->window()->geometry();
    EXPECT_EQ(keyboard.windowAt(geometry.center().x(), geometry.center().y()), content->window()->winId());
    controller.toggleSearchPanel();
    xterm.kill();
    xterm.waitForFinished();
}

TEST_F(X11PanelsTest, aPanelThatTakesNoKeyboardLeavesItWhereItIsAndLetsClicksPass) {
    ForeignWindow window(QStringLiteral(TAVRINE_GTK_ENTRY));
    ASSERT_TRUE(giveKeyboardTo(window));
    const auto overlay = windows.makePanel({.title = QStringLiteral("Overlay"),
                                            .contentSize = QSizeF(300, 300),
                                            .level = windowLevel::screenSaver,
                                            .canBecomeKey = false,
                                            .ignoresMouseEvents = true});
    overlay->setFrame({100, 100, 300, 300});
    const unsigned int below = keyboard.windowAt(250, 800 - 250);
    overlay->makeKeyAndOrderFront();
    settle();
    EXPECT_EQ(keyboard.windowAt(250, 800 - 250), below);
    overlay->setIgnoresMouseEvents(false);
    settle();
    EXPECT_NE(keyboard.windowAt(250, 800 - 250), below);
    keyboard.tap(key::b);
    EXPECT_TRUE(window.waitForText(QStringLiteral("b")));
}

TEST_F(X11PanelsTest, aServerThatAnotherProgramHoldsIsNotWaitedForWithoutEnd) {
    ASSERT_TRUE(showSearchPanel());
    testing::ServerHolder holder;
    holder.hold(3s, false);
    QElapsedTimer timer;
    timer.start();
    controller.searchPanel()->setIgnoresMouseEvents(true);
    EXPECT_LT(timer.elapsed(), 1500);
    holder.wait();
    controller.searchPanel()->setIgnoresMouseEvents(false);
}

TEST_F(X11PanelsTest, aProgramHasNotEndedBecauseTheServerIsLate) {
    ForeignWindow window(QStringLiteral(TAVRINE_GTK_ENTRY));
    ASSERT_TRUE(giveKeyboardTo(window));
    RunningApplication program;
    program.window = keyboard.focusedWindow();
    X11ApplicationActivator asked;
    testing::ServerHolder holder;
    holder.holdAlone();
    const bool isRunning = asked.isRunning(program);
    holder.letGo();
    EXPECT_TRUE(isRunning);
    program.window += 0x00f00000; // nobody's
    EXPECT_FALSE(asked.isRunning(program));
}

TEST_F(X11PanelsTest, aClickElsewhereDismissesThePanelAndAClickInsideDoesNot) {
    ASSERT_TRUE(showSearchPanel());
    settle();
    const QPoint middle = content->window()->geometry().center();
    keyboard.click(1, middle.x(), middle.y());
    settle();
    EXPECT_TRUE(controller.searchPanel()->isVisible());
    keyboard.click(1, 3, 3);
    EXPECT_TRUE(waitUntil([&] { return !controller.searchPanel()->isVisible(); }));
}

TEST_F(X11PanelsTest, returnInThePanelPastesIntoTheProgramThePersonCameFrom) {
    ForeignWindow window(QStringLiteral(TAVRINE_GTK_ENTRY));
    ASSERT_TRUE(giveKeyboardTo(window));
    QString expected;
    std::vector<double> times;
    double slowestLetter = 0; // of the desktop itself, which may be busy with something else
    for (int i = 0; i < 20; ++i) {
        QElapsedTimer letter;
        letter.start();
        keyboard.tap(key::b);
        expected += QLatin1Char('b');
        ASSERT_TRUE(waitUntil([&] { return window.text() == expected; }, 5s)) << i;
        slowestLetter = std::max(slowestLetter, static_cast<double>(letter.nsecsElapsed()) / 1e6);
        ASSERT_TRUE(showSearchPanel());
        text = QStringLiteral("p%1;").arg(i, 3, 10, QLatin1Char('0'));
        expected += text;
        QElapsedTimer clock;
        clock.start();
        keyboard.tap(key::returnKey);
        ASSERT_TRUE(waitUntil([&] { return window.text() == expected; }, 5s))
            << i << ": " << window.text().toStdString();
        times.push_back(static_cast<double>(clock.nsecsElapsed()) / 1e6);
    }
    settle(300ms);
    EXPECT_EQ(window.text(), expected);
    std::sort(times.begin(), times.end());
    std::printf("Return to the text's arrival, %s: median %.0f ms, longest %.0f ms; of a letter, longest %.0f ms\n",
                isManaged ? "with a window manager" : "without one", times[times.size() / 2], times.back(),
                slowestLetter);
    EXPECT_GE(times.front(), 80.0);
    EXPECT_LT(times[times.size() * 3 / 4], 800.0 + 10 * slowestLetter); // the machine may stand still in some
}

TEST_F(X11PanelsTest, thePasteGoesToTheProgramThatWasLeftLast) {
    ForeignWindow first(QStringLiteral(TAVRINE_GTK_ENTRY));
    ASSERT_TRUE(giveKeyboardTo(first));
    ForeignWindow second(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(giveKeyboardTo(second));
    ASSERT_TRUE(showSearchPanel());
    text = QStringLiteral("for the second");
    keyboard.tap(key::returnKey);
    EXPECT_TRUE(second.waitForText(text));
    EXPECT_EQ(first.text(), QString());
}

TEST_F(X11PanelsTest, withoutATargetThePasteGoesToWhateverHasTheKeyboardThen) {
    ForeignWindow left(QStringLiteral(TAVRINE_GTK_ENTRY));
    ASSERT_TRUE(giveKeyboardTo(left));
    {
        ForeignWindow target(QStringLiteral(TAVRINE_GTK_ENTRY));
        ASSERT_TRUE(giveKeyboardTo(target));
        ASSERT_TRUE(showSearchPanel());
    }
    text = QStringLiteral("for the next in line");
    keyboard.tap(key::returnKey);
    EXPECT_TRUE(left.waitForText(text));
}

TEST_F(X11PanelsTest, theScreenAndThePointerAreToldFromTheBottomLeft) {
    const auto all = screens.screens();
    ASSERT_EQ(all.size(), 1);
    EXPECT_EQ(all[0].frame, QRectF(0, 0, 1280, 800));
    EXPECT_TRUE(all[0].frame.contains(all[0].visibleFrame));
    EXPECT_EQ(all[0].scale, 1.0);
    keyboard.movePointer(100, 50);
    EXPECT_TRUE(waitUntil([&] { return screens.mouseLocation() == QPointF(100, 750); }));
    EXPECT_EQ(screens.pressedMouseButtons(), 0U);
    ASSERT_TRUE(keyboard.grabPointer()); // no menu of the window manager opens
    quint32 pressed = 0;
    for (const int button : {1, 3, 2}) {
        keyboard.press(button);
        pressed = pressed << 1 | 1;
        EXPECT_EQ(screens.pointer().pressedButtons, pressed);
    }
    for (const int button : {2, 3, 1})
        keyboard.release(button);
    keyboard.ungrabPointer();
    EXPECT_EQ(screens.pointer().pressedButtons, 0U);
    EXPECT_EQ(screens.pointer().location, QPointF(100, 750));
}

TEST_F(X11PanelsTest, whatArrivesWithTheAnswerAboutThePointerIsNotForgotten) {
    int changes = 0;
    const auto listening = screens.onChange([&] { ++changes; });
    settle(50ms);
    changes = 0;
    ASSERT_EQ(QProcess::execute(QStringLiteral("xprop"),
                                {QStringLiteral("-root"), QStringLiteral("-f"), QStringLiteral("_NET_WORKAREA"),
                                 QStringLiteral("32c"), QStringLiteral("-set"), QStringLiteral("_NET_WORKAREA"),
                                 QStringLiteral("0, 0, 1280, 700")}),
              0);
    (void)screens.pointer(); // has read the notice
    EXPECT_TRUE(waitUntil([&] { return changes == 1; }));
}

} // namespace
} // namespace tavrine

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    ::testing::InitGoogleMock(&argc, argv);
    tavrine::isManaged = argc < 2 || qstrcmp(argv[1], "bare") != 0;
    return RUN_ALL_TESTS();
}
