// The panels of the built program in trouble: targets that go, stay behind or grab, settings that change under an open
// panel, monitors that go, and rows that nobody would want to see.

#include "desktop/Desktop.h"
#include "desktop/PasteTargets.h"
#include "desktop/Program.h"

#include <QDateTime>
#include <QDir>
#include <QUuid>

#include <csignal>

#include <gtest/gtest.h>

using namespace tavrine::testing;
using namespace std::chrono_literals;

namespace {

// How long what has to come is waited for on a desktop that may be busy; how fast it comes is measured elsewhere.
constexpr auto openingBound = 10s;
constexpr auto pasteBound = 10s;
constexpr auto question = "Add to My Saved";
constexpr auto longEnough = 1200ms; ///< a paste or a panel that comes at all is there by then

class PanelTrouble : public testing::Test {
protected:
    void pass(std::chrono::milliseconds length) {
        (void)waitUntil([] { return false; }, length);
    }
    bool openClipboard() {
        desktop.openClipboardPanel();
        return waitUntil([this] { return desktop.hasKeyboard(clipboardPanel); }, openingBound);
    }
    bool isClosed(const char *title) {
        return waitUntil([this, title] { return !desktop.isShown(title); }, openingBound);
    }
    /// Presses the plus button of the saved texts. It comes with a key, and a key may come later than a click.
    bool asksFor(const QRect &where) {
        for (int tries = 0; tries < 20; ++tries) {
            desktop.click({where.right() - 30, where.top() + 28});
            if (waitUntil([this] { return desktop.hasKeyboard(question); }, 500ms))
                return true;
        }
        return false;
    }
    /// The program with these items in its history.
    bool startWith(const QStringList &contents, const QByteArray &preferences = {}) {
        if (!program.startOnboarded())
            return false;
        program.kill9();
        return program.addRows(contents) && program.startOnboarded(preferences);
    }
    void choose(const char *query) {
        ASSERT_TRUE(openClipboard());
        desktop.type(query);
        desktop.pressReturn();
    }
    bool hasArrived(PasteTarget &target, const QString &text) {
        return waitUntil([&] { return target.text() == text; }, pasteBound);
    }
    /// The same where an earlier paste may have come before it, once, however late.
    bool hasArrivedBehind(PasteTarget &target, const QString &earlier, const QString &text) {
        return waitUntil([&] { return target.text() == text || target.text() == earlier + text; }, pasteBound);
    }
    /// The middle of a toast.
    [[nodiscard]] QPoint toastPlace() const { return {desktop.size().width() / 2, desktop.size().height() - 150}; }
    static QString str(const char *utf8) { return QString::fromUtf8(utf8); }
    [[nodiscard]] QRect panel(const char *title) const {
        const auto windows = desktop.windowsTitled(QLatin1String(title));
        return windows.empty() ? QRect() : desktop.geometry(windows.front());
    }

    Desktop desktop;
    Program program;
};

} // namespace

/// Whose titles are German too.
TEST_F(PanelTrouble, inGermanAPanelTakesItsKeys) {
    constexpr auto germanPanel = "Zwischenablage-Suche";
    LineTarget target(TAVRINE_CLIENTS "/gtk-entry");
    ASSERT_TRUE(target.isReady());
    program.environment.insert(str("LANGUAGE"), str("de"));
    program.environment.insert(str("LC_ALL"), str("de_DE.UTF-8"));
    ASSERT_TRUE(startWith({str("older text"), str("newer text")}));
    const auto open = [&] {
        desktop.openClipboardPanel();
        return waitUntil([&] { return desktop.hasKeyboard(germanPanel); }, openingBound);
    };
    ASSERT_TRUE(open());
    desktop.pressEscape();
    ASSERT_TRUE(isClosed(germanPanel));
    ASSERT_TRUE(open());
    desktop.keyboard.tap(116); // down
    desktop.pressReturn();
    EXPECT_TRUE(hasArrived(target, str("older text"))) << target.text().toStdString();
}

TEST_F(PanelTrouble, aTargetThatQuitsDuringTheWaitCostsThatPasteAndNoOther) {
    LineTarget stays(TAVRINE_CLIENTS "/gtk-entry");
    ASSERT_TRUE(stays.isReady());
    ASSERT_TRUE(startWith({str("first text"), str("second text")}));
    auto goes = std::make_unique<LineTarget>(TAVRINE_QT_LINE_EDIT);
    ASSERT_TRUE(goes->isReady());
    ASSERT_NO_FATAL_FAILURE(choose("first"));
    goes.reset(); // killed while the program waits for it
    ASSERT_TRUE(isClosed(clipboardPanel));
    EXPECT_TRUE(waitUntil([] { return paste() == "first text"; }));
    pass(longEnough);
    // The keystroke goes to whatever has the focus then: to the window that is left, once, or to none.
    const QString before = stays.text();
    EXPECT_TRUE(before.isEmpty() || before == str("first text")) << qPrintable(before);
    desktop.activate(desktop.windowOf(stays.processId()));
    ASSERT_NO_FATAL_FAILURE(choose("second"));
    EXPECT_TRUE(hasArrivedBehind(stays, str("first text"), str("second text"))) << qPrintable(stays.text());
}

TEST_F(PanelTrouble, aTargetThatQuitsWhileThePanelIsOpenLeavesTheContentOnThePasteboard) {
    ASSERT_TRUE(startWith({str("first text"), str("second text")}));
    auto goes = std::make_unique<LineTarget>(TAVRINE_CLIENTS "/gtk-entry");
    ASSERT_TRUE(goes->isReady());
    ASSERT_TRUE(openClipboard());
    goes.reset();
    desktop.type("first");
    desktop.pressReturn();
    EXPECT_TRUE(isClosed(clipboardPanel));
    EXPECT_TRUE(waitUntil([] { return paste() == "first text"; }));
    LineTarget next(TAVRINE_CLIENTS "/gtk-entry");
    ASSERT_TRUE(next.isReady());
    pass(500ms); // it stays empty, unless it was there before the keystroke
    ASSERT_NO_FATAL_FAILURE(choose("second"));
    EXPECT_TRUE(hasArrivedBehind(next, str("first text"), str("second text"))) << qPrintable(next.text());
}

TEST_F(PanelTrouble, aTargetThatNeverActivatesKeepsTheProgramFromNothing) {
    ASSERT_TRUE(startWith({str("first text"), str("second text")}));
    LineTarget target(TAVRINE_CLIENTS "/gtk-entry");
    ASSERT_TRUE(target.isReady());
    const auto manager = static_cast<pid_t>(desktop.windowManager());
    ASSERT_GT(manager, 0);
    ASSERT_TRUE(openClipboard());
    desktop.type("first");
    ASSERT_EQ(kill(manager, SIGSTOP), 0); // nothing that is asked to come to the front does
    desktop.pressReturn();
    const bool isGone = isClosed(clipboardPanel);
    pass(longEnough); // 0.8 s at most to the keystroke
    kill(manager, SIGCONT);
    EXPECT_TRUE(isGone);
    EXPECT_TRUE(waitUntil([] { return paste() == "first text"; }));
    ASSERT_TRUE(waitUntil([&] { return desktop.activeWindow() == desktop.windowOf(target.processId()); }));
    const QString before = target.text();
    EXPECT_TRUE(before.isEmpty() || before == str("first text")) << qPrintable(before);
    ASSERT_NO_FATAL_FAILURE(choose("second"));
    EXPECT_TRUE(hasArrivedBehind(target, str("first text"), str("second text"))) << qPrintable(target.text());
}

TEST_F(PanelTrouble, aFullScreenTargetHasThePanelAboveItAndGetsThePaste) {
    ASSERT_TRUE(startWith({str("first text")}));
    LineTarget target(TAVRINE_CLIENTS "/gtk-entry");
    ASSERT_TRUE(target.isReady());
    const quint32 window = desktop.windowOf(target.processId());
    desktop.setFullScreen(window, true);
    ASSERT_TRUE(waitUntil([&] { return desktop.geometry(window).size() == desktop.size(); }));
    ASSERT_TRUE(openClipboard());
    const QPoint middle = panel(clipboardPanel).center();
    EXPECT_TRUE(
        waitUntil([&] { return desktop.topWindowAt(middle) == desktop.windowsTitled(str(clipboardPanel)).at(0); }));
    desktop.type("first");
    desktop.pressReturn();
    EXPECT_TRUE(hasArrived(target, str("first text"))) << qPrintable(target.text());
    EXPECT_EQ(desktop.geometry(window).size(), desktop.size());
}

TEST_F(PanelTrouble, aProgramThatGrabsTheKeyboardKeepsItsKeysAndThePanelComesAfterIt) {
    ASSERT_TRUE(startWith({str("first text")}));
    LineTarget target(TAVRINE_CLIENTS "/gtk-entry");
    ASSERT_TRUE(target.isReady());
    ASSERT_TRUE(desktop.keyboard.grabKeyboard());
    desktop.openClipboardPanel();
    EXPECT_FALSE(waitUntil([this] { return desktop.isShown(clipboardPanel); }, longEnough));
    desktop.keyboard.ungrabKeyboard();
    ASSERT_NO_FATAL_FAILURE(choose("first"));
    EXPECT_TRUE(hasArrived(target, str("first text")));
}

TEST_F(PanelTrouble, aClickOnARowUnderAForeignGrabClosesThePanelAndTheNextPasteArrives) {
    ASSERT_TRUE(startWith({str("first text")}));
    LineTarget target(TAVRINE_CLIENTS "/gtk-entry");
    ASSERT_TRUE(target.isReady());
    ASSERT_TRUE(openClipboard());
    // The press that opened the panel holds the keyboard until its keys are up, and a busy machine takes its time.
    ASSERT_TRUE(waitUntil([this] { return desktop.keyboard.grabKeyboard(); }));
    desktop.click(panel(clipboardPanel).topLeft() + QPoint(200, 160)); // the first row
    EXPECT_TRUE(isClosed(clipboardPanel));
    pass(longEnough); // the keystroke goes to the program that holds the keyboard, if it does not come later still
    desktop.keyboard.ungrabKeyboard();
    EXPECT_TRUE(waitUntil([] { return paste() == "first text"; }));
    ASSERT_NO_FATAL_FAILURE(choose("first"));
    EXPECT_TRUE(hasArrivedBehind(target, str("first text"), str("first text"))) << qPrintable(target.text());
}

TEST_F(PanelTrouble, aSecondTriggerDuringAPasteOpensThePanelAndThePasteComesOnce) {
    ASSERT_TRUE(startWith({str("first text"), str("second text")}));
    LineTarget other(TAVRINE_QT_LINE_EDIT);
    ASSERT_TRUE(other.isReady());
    LineTarget target(TAVRINE_CLIENTS "/gtk-entry");
    ASSERT_TRUE(target.isReady());
    ASSERT_NO_FATAL_FAILURE(choose("first"));
    ASSERT_TRUE(isClosed(clipboardPanel)); // a trigger before that would close it
    desktop.openClipboardPanel();          // within the 80 ms in which the target settles
    EXPECT_TRUE(waitUntil([this] { return desktop.hasKeyboard(clipboardPanel); }, openingBound));
    EXPECT_TRUE(hasArrived(target, str("first text"))); // the panel comes behind the keystroke
    pass(longEnough);
    EXPECT_EQ(target.text(), str("first text")); // once
    EXPECT_EQ(other.text(), QString());
    EXPECT_TRUE(desktop.hasKeyboard(clipboardPanel));
    desktop.pressEscape();
    ASSERT_TRUE(isClosed(clipboardPanel));
    ASSERT_NO_FATAL_FAILURE(choose("second"));
    EXPECT_TRUE(hasArrived(target, str("first textsecond text"))) << qPrintable(target.text());
}

TEST_F(PanelTrouble, settingsOfTheWrongTypeCountAsAbsent) {
    ASSERT_TRUE(program.startOnboarded("<key>clipboardHotkeyMode</key><integer>7</integer>"
                                       "<key>HotkeyCharacter</key><array><string>x</string></array>"
                                       "<key>emojiHotkeyKey</key><data>AAAA</data>"
                                       "<key>ClipboardExperience</key><true/>"
                                       "<key>TavrineHistoryFrame</key><integer>1</integer>"
                                       "<key>EmojiPickerRecentEmojis</key><string>no list</string>"
                                       "<key>EmojiPickerPinnedEmojis</key><array><integer>1</integer></array>"));
    EXPECT_TRUE(openClipboard());
    desktop.openEmojiPanel();
    EXPECT_TRUE(waitUntil([this] { return desktop.hasKeyboard(emojiPanel); }, openingBound));
    EXPECT_TRUE(program.isRunning());
}

TEST_F(PanelTrouble, rowsThatNobodyWantsAreShownScrolledAndPasted) {
    QString huge(3 * 1024 * 1024, QLatin1Char('w'));
    QString controls = str("ctl ");
    for (char16_t c = 1; c < 0x20; ++c)
        if (c != u'\n' && c != u'\r')
            controls += QChar(c);
    const QString combining = str("zal") + QString(3000, QChar(0x0301)) + str("go");
    ASSERT_TRUE(startWith({huge, controls, combining, str("rtl שלום עולם \u202Eabc"),
                           str("e\u0301 emoji 👨‍👩‍👧‍👦🇺🇳"),
                           QString(70000, QLatin1Char('\n')) + str("deep")}));
    LineTarget target(TAVRINE_CLIENTS "/gtk-entry");
    ASSERT_TRUE(target.isReady());
    ASSERT_TRUE(openClipboard());
    for (int i = 0; i < 8; ++i)
        desktop.keyboard.tap(116); // down
    desktop.type("rtl");
    desktop.pressReturn();
    EXPECT_TRUE(hasArrived(target, str("rtl שלום עולם \u202Eabc"))) << qPrintable(target.text());
    ASSERT_NO_FATAL_FAILURE(choose("emoji"));
    EXPECT_TRUE(
        hasArrived(target, str("rtl שלום עולם \u202Eabce\u0301 emoji 👨‍👩‍👧‍👦🇺🇳")))
        << qPrintable(target.text());
    ASSERT_NO_FATAL_FAILURE(choose("wwwww"));
    EXPECT_TRUE(waitUntil([] { return paste().size() == 3 * 1024 * 1024; }));
    EXPECT_TRUE(program.isRunning());
}

TEST_F(PanelTrouble, picturesWhoseFilesAreBrokenAreRowsLikeOthers) {
    ASSERT_TRUE(program.startOnboarded());
    program.kill9();
    const QString folder = program.dataFolder() + str("/Images");
    ASSERT_TRUE(QDir().mkpath(folder));
    const QByteArray header = QByteArray::fromHex("89504e470d0a1a0a0000000d49484452");
    const std::pair<const char *, QByteArray> files[] = {
        {"empty.png", {}},
        {"text.png", "this is no picture"},
        {"cut.png", header},
        {"vast.png", header + QByteArray::fromHex("7fffffff7fffffff0806000000deadbeef")},
        {"cut.jpg", QByteArray::fromHex("ffd8ffe000104a46494600")},
        {"no-movie.mp4", QByteArray(1000, 'x')},
    };
    int age = 0;
    const auto addRow = [&](const char *name) {
        return program.execute(
            str("INSERT INTO items(id,content,date,image_file_name) VALUES ('%1','Copied Image',%2,'%3')")
                .arg(QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper())
                .arg(QDateTime::currentSecsSinceEpoch() - age++)
                .arg(QLatin1String(name)));
    };
    for (const auto &[name, content] : files) {
        QFile file(folder + QLatin1Char('/') + QLatin1String(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        ASSERT_TRUE(addRow(name));
    }
    for (const char *name : {"missing.png", "../../../../etc/passwd", "..", ""})
        ASSERT_TRUE(addRow(name));
    ASSERT_TRUE(QDir().mkpath(folder + str("/folder.png")));
    ASSERT_TRUE(addRow("folder.png"));
    ASSERT_TRUE(program.startOnboarded());
    ASSERT_TRUE(openClipboard());
    for (int i = 0; i < 12; ++i)
        desktop.keyboard.tap(116); // down
    desktop.pressEscape();
    EXPECT_TRUE(isClosed(clipboardPanel));
    for (int i = 0; i < 4; ++i) { // and each of the first is chosen
        ASSERT_TRUE(openClipboard()) << i;
        for (int down = 0; down < i; ++down)
            desktop.keyboard.tap(116);
        desktop.pressReturn();
        EXPECT_TRUE(isClosed(clipboardPanel)) << i;
    }
    EXPECT_TRUE(openClipboard());
}

TEST_F(PanelTrouble, twoHundredProtectedRowsOpenAndScroll) {
    ASSERT_TRUE(program.startOnboarded());
    program.kill9();
    QStringList contents;
    for (int i = 0; i < 200; ++i)
        contents.append(str("pinned %1").arg(i));
    ASSERT_TRUE(program.addRows(contents));
    ASSERT_TRUE(program.execute(str("UPDATE items SET is_pinned=1")));
    ASSERT_TRUE(program.addRows({str("ordinary")}));
    LineTarget target(TAVRINE_CLIENTS "/gtk-entry");
    ASSERT_TRUE(target.isReady());
    ASSERT_TRUE(program.startOnboarded());
    ASSERT_TRUE(openClipboard());
    for (int i = 0; i < 205; ++i)
        desktop.keyboard.tap(116); // down, to the last row
    desktop.pressReturn();
    EXPECT_TRUE(hasArrived(target, str("ordinary"))) << qPrintable(target.text());
}

TEST_F(PanelTrouble, aPasteWithoutAccessibilityShowsAToastAndLeavesTheContentOnThePasteboard) {
    ASSERT_TRUE(program.startOnboarded());
    program.kill9();
    ASSERT_TRUE(program.addRows({str("first text")}));
    LineTarget target(TAVRINE_CLIENTS "/gtk-entry");
    ASSERT_TRUE(target.isReady());
    program.environment.insert(str("LD_PRELOAD"), str(TAVRINE_WITHOUT_TEST_EXTENSION));
    ASSERT_TRUE(program.start());
    ASSERT_TRUE(waitUntil([this] { return program.output().contains(str("Accessibility Trusted on Launch: false")); }));
    ASSERT_TRUE(openClipboard());
    desktop.pressReturn();
    ASSERT_TRUE(waitUntil([&] { return desktop.overlayAt(toastPlace()) != 0; }, openingBound));
    EXPECT_EQ(desktop.geometry(desktop.overlayAt(toastPlace())).size(), QSize(250, 60));
    EXPECT_FALSE(desktop.isShown(clipboardPanel));
    EXPECT_TRUE(waitUntil([] { return paste() == "first text"; }));
    EXPECT_TRUE(waitUntil([&] { return desktop.overlayAt(toastPlace()) == 0; })); // 2.8 s
    EXPECT_EQ(target.text(), QString());
}

TEST_F(PanelTrouble, aToastIsSeenOverAFullScreenWindow) {
    ASSERT_TRUE(program.startOnboarded());
    program.kill9();
    ASSERT_TRUE(program.addRows({str("first text")}));
    LineTarget target(TAVRINE_CLIENTS "/gtk-entry");
    ASSERT_TRUE(target.isReady());
    const quint32 window = desktop.windowOf(target.processId());
    desktop.setFullScreen(window, true);
    ASSERT_TRUE(waitUntil([&] { return desktop.geometry(window).size() == desktop.size(); }));
    program.environment.insert(str("LD_PRELOAD"), str(TAVRINE_WITHOUT_TEST_EXTENSION));
    ASSERT_TRUE(program.start());
    const QPoint ground = toastPlace() - QPoint(115, 0); // beside its symbol
    ASSERT_TRUE(waitUntil([&] { return desktop.brightnessAt(ground) > 200; })) << "the window is light";
    ASSERT_TRUE(openClipboard());
    desktop.pressReturn();
    ASSERT_TRUE(waitUntil([&] { return desktop.overlayAt(toastPlace()) != 0; }, openingBound));
    EXPECT_TRUE(desktop.isAbove(desktop.overlayAt(toastPlace()), window));
    EXPECT_TRUE(waitUntil([&] { return desktop.brightnessAt(ground) < 100; }, 2s));
    EXPECT_EQ(desktop.geometry(window).size(), desktop.size());
    EXPECT_TRUE(waitUntil([&] { return desktop.activeWindow() == window; })) << "it has the keyboard still";
}

TEST_F(PanelTrouble, aPasteThatAForeignGrabKeepsBackIsToldByAToastAndNeverTyped) {
    ASSERT_TRUE(startWith({str("first text")}));
    LineTarget target(TAVRINE_CLIENTS "/gtk-entry");
    ASSERT_TRUE(target.isReady());
    ASSERT_TRUE(openClipboard());
    // The press that opened the panel holds the keyboard until its keys are up, and a busy machine takes its time.
    ASSERT_TRUE(waitUntil([this] { return desktop.keyboard.freezeKeyboard(); }));
    desktop.click(panel(clipboardPanel).topLeft() + QPoint(200, 160)); // the first row
    EXPECT_TRUE(isClosed(clipboardPanel));
    EXPECT_TRUE(waitUntil([&] { return desktop.overlayAt(toastPlace()) != 0; }, openingBound));
    desktop.keyboard.ungrabKeyboard();
    EXPECT_TRUE(waitUntil([] { return paste() == "first text"; }));
    EXPECT_TRUE(waitUntil([&] { return desktop.overlayAt(toastPlace()) == 0; }));
    desktop.keyboard.tap(key::b); // behind all that was kept
    EXPECT_TRUE(hasArrived(target, str("b"))) << qPrintable(target.text());
    EXPECT_LE(target.presses(str("Control_L")), 1) << "two of them are a gesture";
}

TEST_F(PanelTrouble, escapeInTheQuestionForASavedTextLeavesThePanelOpen) {
    ASSERT_TRUE(startWith({str("first text")}));
    for (int i = 0; i < 10; ++i) {
        if (!desktop.isShown(clipboardPanel)) {
            ASSERT_TRUE(openClipboard()) << i;
            desktop.keyboard.tap(114); // right: My Saved
        }
        const QRect where = panel(clipboardPanel);
        ASSERT_TRUE(asksFor(where)) << i;
        desktop.pressEscape();
        ASSERT_TRUE(isClosed(question)) << i;
        ASSERT_TRUE(waitUntil([this] { return desktop.hasKeyboard(clipboardPanel); }, openingBound)) << i;
        pass(100ms);
        ASSERT_TRUE(desktop.isShown(clipboardPanel)) << i;
    }
}

TEST_F(PanelTrouble, clicksInTheQuestionForASavedTextLeaveThePanelOpen) {
    ASSERT_TRUE(startWith({str("first text")}));
    ASSERT_TRUE(openClipboard());
    desktop.keyboard.tap(114);
    ASSERT_TRUE(asksFor(panel(clipboardPanel)));
    desktop.move(desktop.windowsTitled(str(question)).at(0), {20, 520}); // beside the panel
    ASSERT_TRUE(waitUntil([&] { return !panel(question).isEmpty() && panel(question).left() < 60; }));
    const QRect dialog = panel(question);
    desktop.click({dialog.left() + 100, dialog.top() + 110}); // into the text
    desktop.type("kept");
    pass(200ms);
    EXPECT_TRUE(desktop.isShown(question));
    EXPECT_TRUE(desktop.isShown(clipboardPanel));
    desktop.click({dialog.right() - 60, dialog.bottom() - 34}); // Save
    EXPECT_TRUE(isClosed(question));
    EXPECT_TRUE(waitUntil([this] { return program.rowsWith(str("kept")) == 1; }));
    pass(200ms);
    EXPECT_TRUE(desktop.isShown(clipboardPanel));
}

TEST_F(PanelTrouble, aDoubleClickOnTheBinDeletesOneItem) {
    ASSERT_TRUE(startWith({str("third"), str("second"), str("first")}));
    ASSERT_TRUE(openClipboard());
    const QRect where = panel(clipboardPanel);
    const QPoint bin(where.left() + 644, where.top() + 161);
    desktop.keyboard.movePointer(bin.x(), bin.y());
    desktop.doubleClick(bin);
    EXPECT_TRUE(waitUntil([this] { return program.rowsWith(str("first")) == 0; }));
    pass(300ms);
    EXPECT_EQ(program.rowsWith(str("second")), 1);
    EXPECT_EQ(program.rowsWith(str("third")), 1);
}

TEST_F(PanelTrouble, theWelcomeWindowHasNoFrameAndIsNotClosedByTheWindowManager) {
    ASSERT_TRUE(program.start());
    ASSERT_TRUE(waitUntil([this] { return desktop.hasKeyboard(welcomeWindow); }, openingBound));
    const quint32 window = desktop.windowsTitled(str(welcomeWindow)).at(0);
    EXPECT_EQ(desktop.geometry(window).size(), QSize(600, 500));
    EXPECT_EQ(desktop.frameOf(window), desktop.geometry(window));
    desktop.close(window);
    pass(500ms);
    EXPECT_TRUE(desktop.isShown(welcomeWindow));
    for (int page = 0; page < 3; ++page)
        desktop.pressReturn();
    EXPECT_TRUE(isClosed(welcomeWindow));
}

/// Two monitors side by side, each half of the screen.
class PanelsOnTwoMonitors : public PanelTrouble {
protected:
    void SetUp() override {
        const QSize all = desktop.size();
        ASSERT_TRUE(xrandr({str("--setmonitor"), str("left"), half(0), str("screen")}));
        ASSERT_TRUE(xrandr({str("--setmonitor"), str("right"), half(all.width() / 2), str("none")}));
    }
    void TearDown() override {
        (void)xrandr({str("--delmonitor"), str("right")});
        (void)xrandr({str("--delmonitor"), str("left")});
    }
    static bool xrandr(const QStringList &words) { return QProcess::execute(str("xrandr"), words) == 0; }
    [[nodiscard]] QString half(int left) const {
        const QSize all = desktop.size();
        return str("%1/300x%2/200+%3+0").arg(all.width() / 2).arg(all.height()).arg(left);
    }
    [[nodiscard]] QRect monitor(int number) const {
        const QSize all = desktop.size();
        return {number * all.width() / 2, 0, all.width() / 2, all.height()};
    }
    void putOnMonitor(int number) {
        const quint32 window = desktop.windowOf(target.processId());
        desktop.move(window, monitor(number).topLeft() + QPoint(100, 600));
        ASSERT_TRUE(waitUntil([&] { return monitor(number).contains(desktop.geometry(window)); }));
    }
    bool isCentredOn(int number) {
        return waitUntil(
            [&] { return std::abs(panel(clipboardPanel).center().x() - monitor(number).center().x()) <= 1; },
            openingBound);
    }
    void close() {
        desktop.pressEscape();
        ASSERT_TRUE(isClosed(clipboardPanel));
    }

    LineTarget target{TAVRINE_CLIENTS "/gtk-entry"};
};

TEST_F(PanelsOnTwoMonitors, thePanelStandsOnTheMonitorOfTheWindowInFront) {
    ASSERT_TRUE(target.isReady());
    ASSERT_TRUE(startWith({str("first text")}));
    for (const int number : {1, 0, 1}) {
        ASSERT_NO_FATAL_FAILURE(putOnMonitor(number));
        ASSERT_TRUE(openClipboard());
        EXPECT_TRUE(isCentredOn(number)) << number << ": " << panel(clipboardPanel).x();
        ASSERT_NO_FATAL_FAILURE(close());
    }
}

TEST_F(PanelsOnTwoMonitors, aMonitorUnpluggedUnderAnOpenPanelCostsNothing) {
    ASSERT_TRUE(target.isReady());
    ASSERT_TRUE(startWith({str("first text")}));
    ASSERT_NO_FATAL_FAILURE(putOnMonitor(1));
    ASSERT_TRUE(openClipboard());
    ASSERT_TRUE(isCentredOn(1));
    ASSERT_TRUE(xrandr({str("--delmonitor"), str("right")}));
    pass(500ms);
    EXPECT_TRUE(program.isRunning());
    desktop.type("first");
    desktop.pressReturn();
    EXPECT_TRUE(hasArrived(target, str("first text"))) << qPrintable(target.text());
    ASSERT_TRUE(openClipboard());
    EXPECT_TRUE(isCentredOn(0)) << panel(clipboardPanel).x(); // the one that is left
}
