// Triggers, panels and paste-back of the built program, driven with keys as a person would.

#include "desktop/Desktop.h"
#include "desktop/PasteTargets.h"
#include "desktop/Program.h"
#include "support/Eventually.h"
#include "support/Wait.h"

#include <QElapsedTimer>
#include <QFile>

#include <gtest/gtest.h>

using namespace tavrine::testing;
using namespace std::chrono_literals;
using tavrine::test::letPass;

namespace {

/// A trigger that opens nothing is waited for as long as this: many times what an opening takes.
constexpr auto longEnough = 1200ms;
/// From the press of a trigger to a window on the screen, on a machine that builds something at the same time; how fast
/// it comes is measured elsewhere.
constexpr auto openingBound = 10s;

QString outputOf(const QString &command, const QStringList &arguments) {
    QProcess process;
    process.start(command, arguments);
    return process.waitForFinished(10000) ? QString::fromUtf8(process.readAllStandardOutput()) : QString();
}

void xdotool(const QStringList &words) {
    (void)outputOf(QStringLiteral("xdotool"), words);
}

void press(const char *keys) {
    xdotool({QStringLiteral("key"), QLatin1String(keys)});
}

/// The windows on the screen with exactly this title.
QStringList windowsTitled(const char *title) {
    return outputOf(QStringLiteral("xdotool"),
                    {QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--name"),
                     QLatin1Char('^') + QLatin1String(title) + QLatin1Char('$')})
        .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

bool isShown(const char *title) {
    return !windowsTitled(title).isEmpty();
}

QString focusedWindow() {
    return outputOf(QStringLiteral("xdotool"), {QStringLiteral("getwindowfocus")}).trimmed();
}

bool hasKeyboard(const char *title) {
    const QStringList windows = windowsTitled(title);
    return windows.size() == 1 && windows.constFirst() == focusedWindow();
}

constexpr auto gtkEntry = TAVRINE_CLIENTS "/gtk-entry";

class PanelsOnADesktop : public testing::Test {
protected:
    /// Starts the program of a person who has seen the welcome window, with further preferences.
    bool start(const QByteArray &preferences = {}) {
        storePreferences("<key>hasCompletedOnboarding</key><true/>" + preferences);
        return program.start() && waitUntil([this] {
                   return program.output().contains(QLatin1String("Accessibility Trusted on Launch: true"));
               });
    }
    void storePreferences(const QByteArray &entries) {
        QFile file(program.preferencesPath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                   "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                   "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                   "<plist version=\"1.0\"><dict>" +
                   entries + "</dict></plist>\n");
    }
    bool record(const char *text) {
        copy(text);
        return waitUntil([&] { return program.rowsWith(QString::fromUtf8(text)) == 1; });
    }
    bool open(const char *keys, const char *title) {
        press(keys);
        return waitUntil([title] { return hasKeyboard(title); }, openingBound);
    }

    Program program;
};

} // namespace

TEST_F(PanelsOnADesktop, theHotKeyShowsTheClipboardPanelWithTheKeyboardAndASecondPressClosesIt) {
    ASSERT_TRUE(start());
    QElapsedTimer timer;
    timer.start();
    ASSERT_TRUE(open("super+shift+v", clipboardPanel));
    RecordProperty("openedWithinMilliseconds", static_cast<int>(timer.elapsed()));
    press("super+shift+v");
    EXPECT_TRUE(waitUntil([] { return !isShown(clipboardPanel); }, openingBound));
    EXPECT_TRUE(open("super+shift+v", clipboardPanel));
}

TEST_F(PanelsOnADesktop, escapeClosesTheClipboardPanelAndGivesTheKeyboardBack) {
    ASSERT_TRUE(start());
    LineTarget line(gtkEntry);
    ASSERT_TRUE(line.isReady());
    const TestKeyboard keyboard;
    const auto before = keyboard.focusedWindow();
    ASSERT_TRUE(open("super+shift+v", clipboardPanel));
    press("Escape");
    EXPECT_TRUE(waitUntil([] { return !isShown(clipboardPanel); }, openingBound));
    EXPECT_TRUE(waitUntil([&] { return keyboard.focusedWindow() == before; }));
    xdotool({QStringLiteral("type"), QStringLiteral("on")});
    EXPECT_TRUE(waitUntil([&] { return line.text() == QLatin1String("on"); }));
}

TEST_F(PanelsOnADesktop, aClickElsewhereClosesTheClipboardPanel) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(open("super+shift+v", clipboardPanel));
    xdotool({QStringLiteral("mousemove"), QStringLiteral("5"), QStringLiteral("5"), QStringLiteral("click"),
             QStringLiteral("1")});
    EXPECT_TRUE(waitUntil([] { return !isShown(clipboardPanel); }, openingBound));
}

TEST_F(PanelsOnADesktop, returnPastesWhatWasSearchedForIntoAGtkWindow) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(record("the wanted line"));
    ASSERT_TRUE(record("another line"));
    LineTarget line(gtkEntry);
    ASSERT_TRUE(line.isReady());
    ASSERT_TRUE(open("super+shift+v", clipboardPanel));
    xdotool({QStringLiteral("type"), QStringLiteral("wanted")});
    QElapsedTimer timer;
    timer.start();
    press("Return");
    EXPECT_TRUE(waitUntil([&] { return line.text() == QLatin1String("the wanted line"); })) << qPrintable(line.text());
    RecordProperty("pastedWithinMilliseconds", static_cast<int>(timer.elapsed()));
    EXPECT_FALSE(isShown(clipboardPanel));
    letPass(longEnough); // a paste that came twice would be here by now
    EXPECT_EQ(line.text(), QStringLiteral("the wanted line"));
}

TEST_F(PanelsOnADesktop, returnPastesIntoATerminal) {
    ASSERT_TRUE(start());
    const QString path = program.home() + QStringLiteral("/typed");
    // It gives on each sign that is typed, as no more than these are to come.
    const Client terminal(QStringLiteral("xterm"),
                          {QStringLiteral("-T"), QStringLiteral("terminal"), QStringLiteral("-e"), QStringLiteral("sh"),
                           QStringLiteral("-c"), QStringLiteral("stty -icanon; head -c 9 > %1; sleep 60").arg(path)});
    const Desktop desktop;
    ASSERT_TRUE(waitUntil([&] {
        const auto windows = desktop.windowsTitled(QStringLiteral("terminal"));
        return QFile::exists(path) && desktop.hasKeyboard("terminal") && desktop.activeWindow() == windows.front();
    }));
    ASSERT_TRUE(record("a command"));
    ASSERT_TRUE(open("super+shift+v", clipboardPanel));
    xdotool({QStringLiteral("type"), QStringLiteral("command")});
    press("Return");
    ASSERT_TRUE(waitUntil([] { return !isShown(clipboardPanel); }, openingBound));
    EXPECT_TRUE(waitUntil([&] {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) && file.readAll() == "a command";
    }));
}

TEST_F(PanelsOnADesktop, theHotKeyOfAToolThatIsOffOpensNothing) {
    ASSERT_TRUE(start("<key>featureClipboardHistory</key><false/>"));
    press("super+shift+v");
    EXPECT_FALSE(waitUntil([] { return isShown(clipboardPanel); }, longEnough));
    EXPECT_TRUE(open("super+shift+e", emojiPanel)); // keys arrive
}

TEST_F(PanelsOnADesktop, aDoubleTapOfOptionOpensTheToolThatIsSetToIt) {
    ASSERT_TRUE(start("<key>clipboardHotkeyMode</key><string>doubleOption</string>"));
    press("super+shift+v");
    EXPECT_FALSE(waitUntil([] { return isShown(clipboardPanel); }, longEnough));
    press("alt");
    EXPECT_FALSE(waitUntil([] { return isShown(clipboardPanel); }, longEnough)); // one tap is none
    // Two taps that a busy machine keeps apart are no pair, and a person taps again.
    EXPECT_TRUE(waitUntil(
        [] {
            xdotool({QStringLiteral("key"), QStringLiteral("--delay"), QStringLiteral("60"), QStringLiteral("alt"),
                     QStringLiteral("alt")});
            return waitUntil([] { return hasKeyboard(clipboardPanel); }, 3s);
        },
        30s));
}

TEST_F(PanelsOnADesktop, theClassicPanelStandsAfterARestartWhereThePersonLeftIt) {
    const QByteArray classic = "<key>ClipboardSearchPrimaryMigrationV1</key><true/>"
                               "<key>ClipboardExperience</key><string>classic</string>";
    ASSERT_TRUE(start(classic));
    const Desktop desktop;
    const auto place = [&desktop] {
        const auto windows = desktop.windowsTitled(QLatin1String(classicPanel));
        return windows.size() == 1 ? desktop.geometry(windows.front()) : QRect();
    };
    ASSERT_TRUE(open("super+shift+v", classicPanel));
    ASSERT_TRUE(waitUntil([&] { return place().width() == 320; })) << place().width();
    const QRect before = place();
    const QPoint grip(before.center().x(), before.top() + 6); // above everything that is in it
    const QPoint way(-250, -120);
    const auto at = [](QPoint point) { return QStringList{QString::number(point.x()), QString::number(point.y())}; };
    xdotool(QStringList{QStringLiteral("mousemove")} + at(grip) +
            QStringList{QStringLiteral("mousedown"), QStringLiteral("1")});
    for (const double part : {0.2, 0.5, 1.0})
        xdotool(QStringList{QStringLiteral("mousemove")} + at(grip + (QPointF(way) * part).toPoint()));
    xdotool({QStringLiteral("mouseup"), QStringLiteral("1")});
    ASSERT_TRUE(waitUntil([&] { return place().topLeft() == before.topLeft() + way; }))
        << place().x() << "," << place().y() << " after " << before.x() << "," << before.y();
    press("super+shift+v");
    ASSERT_TRUE(waitUntil([] { return !isShown(classicPanel); }, openingBound));
    ASSERT_TRUE(waitUntil([this] { // preferences are written a moment after they changed
        QFile file(program.preferencesPath());
        return file.open(QIODevice::ReadOnly) && file.readAll().contains("TavrineHistoryFrame");
    }));
    program.kill9();
    ASSERT_TRUE(program.start());
    ASSERT_TRUE(open("super+shift+v", classicPanel));
    EXPECT_TRUE(waitUntil([&] { return place() == before.translated(way); })) << place().x() << "," << place().y();
}

TEST_F(PanelsOnADesktop, theClassicPanelOpensWhereItWasChosen) {
    ASSERT_TRUE(start("<key>ClipboardSearchPrimaryMigrationV1</key><true/>"
                      "<key>ClipboardExperience</key><string>classic</string>"));
    ASSERT_TRUE(open("super+shift+v", classicPanel));
    EXPECT_FALSE(isShown(clipboardPanel));
    press("super+shift+v");
    EXPECT_TRUE(waitUntil([] { return !isShown(classicPanel); }, openingBound));
}

TEST_F(PanelsOnADesktop, theEmojiPanelTakesThePlaceOfTheClipboardPanelAndEscapeClosesIt) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(open("super+shift+v", clipboardPanel));
    ASSERT_TRUE(open("super+shift+e", emojiPanel));
    EXPECT_TRUE(waitUntil([] { return !isShown(clipboardPanel); }, openingBound));
    press("Escape");
    EXPECT_TRUE(waitUntil([] { return !isShown(emojiPanel); }, openingBound));
}

TEST_F(PanelsOnADesktop, aSecondStartLeavesTheTriggersWithTheFirst) {
    ASSERT_TRUE(start());
    const auto second = program.startAgain();
    EXPECT_TRUE(waitUntil([&] { return second->state() == QProcess::NotRunning; }));
    EXPECT_TRUE(open("super+shift+v", clipboardPanel));
    EXPECT_EQ(windowsTitled(clipboardPanel).size(), 1);
}

TEST_F(PanelsOnADesktop, aStartThatAsksForTheClipboardOpensItAndPastesWhereThePersonWas) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(record("bound by the person"));
    LineTarget line(gtkEntry);
    ASSERT_TRUE(line.isReady());
    const auto second = program.startAgain({QStringLiteral("--clipboard")});
    ASSERT_TRUE(waitUntil([] { return hasKeyboard(clipboardPanel); }));
    press("Return");
    EXPECT_TRUE(waitUntil([&] { return line.text() == QLatin1String("bound by the person"); }))
        << qPrintable(line.text());
    EXPECT_TRUE(waitUntil([&] { return second->state() == QProcess::NotRunning; }));
    EXPECT_EQ(second->exitCode(), 0);
}

TEST_F(PanelsOnADesktop, anActionOverTheBusOpensItsPanel) {
    ASSERT_TRUE(start());
    EXPECT_EQ(outputOf(QStringLiteral("gdbus"),
                       {QStringLiteral("call"), QStringLiteral("--session"), QStringLiteral("--dest"),
                        QStringLiteral("com.veltrane.Tavrine"), QStringLiteral("--object-path"),
                        QStringLiteral("/com/veltrane/Tavrine"), QStringLiteral("--method"),
                        QStringLiteral("org.freedesktop.Application.ActivateAction"), QStringLiteral("emoji"),
                        QStringLiteral("[]"), QStringLiteral("{}")}),
              QStringLiteral("()\n"));
    EXPECT_TRUE(waitUntil([] { return hasKeyboard(emojiPanel); }));
}

TEST_F(PanelsOnADesktop, aWordThatNobodyKnowsIsRefusedWhetherOrNotTheProgramRuns) {
    const auto isRefused = [this] {
        const auto process = program.startAgain({QStringLiteral("--clipbord")});
        return process->waitForFinished(10000) && process->exitCode() == 2 &&
               process->readAllStandardError().contains(" --clipboard ");
    };
    EXPECT_TRUE(isRefused());
    ASSERT_TRUE(start());
    EXPECT_TRUE(isRefused());
}

TEST_F(PanelsOnADesktop, aFirstLaunchShowsTheWelcomeWindowAndALaterOneDoesNot) {
    ASSERT_TRUE(program.start());
    EXPECT_TRUE(waitUntil([] { return hasKeyboard(welcomeWindow); }, openingBound));
    EXPECT_TRUE(open("super+shift+v", clipboardPanel)); // nothing waits for the person to finish
    program.kill9();
    ASSERT_TRUE(waitUntil([] { return !isShown(welcomeWindow); }));
    ASSERT_TRUE(start());
    EXPECT_FALSE(waitUntil([] { return isShown(welcomeWindow); }, longEnough));
}
