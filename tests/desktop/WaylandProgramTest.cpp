// The program as built, on a private desktop of a Wayland compositor, used with the hand.
#include "desktop/WaylandProgram.h"

#include "desktop/Exclusions.h"
#include "support/InhibitService.h"

#include <QFile>
#include <QTemporaryDir>

namespace tavrine::testing {
namespace {

TEST_F(WaylandProgram, aCopyIsInTheHistoryAndIsPastedIntoGtkAndQt) {
    ASSERT_TRUE(program.startOnboarded());
    const auto needle = copyAs(QStringLiteral("the needle"));
    ASSERT_TRUE(comesToHold(QStringLiteral("the needle")));
    const auto last = copyAs(QStringLiteral("hay"));
    ASSERT_TRUE(comesToHold(QStringLiteral("hay")));
    {
        ForeignWindow window(QStringLiteral(TAVRINE_GTK_ENTRY));
        searchAndPaste(window, "need", QStringLiteral("the needle"));
    }
    ForeignWindow window(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    searchAndPaste(window, "hay", QStringLiteral("hay"));
}

TEST_F(WaylandProgram, aChosenEmojiIsInsertedIntoGtkAndQt) {
    ASSERT_TRUE(program.startOnboarded());
    for (const char *client : {TAVRINE_GTK_ENTRY, TAVRINE_QT_LINE_EDIT}) {
        ForeignWindow window(QString::fromUtf8(client));
        ASSERT_TRUE(window.waitForFocus());
        ASSERT_TRUE(openPanel("--emoji"));
        hand.type("rocket");
        hand.tap(KEY_ENTER);
        EXPECT_TRUE(window.waitForText(QStringLiteral("🚀"))) << window.text().toStdString();
    }
}

TEST_F(WaylandProgram, whatAPasswordManagerMarksIsNotRecorded) {
    ASSERT_TRUE(program.startOnboarded());
    {
        ForeignWindow manager(QStringLiteral(TAVRINE_COPY_ON_KEY),
                              {QStringLiteral("a secret"), QStringLiteral("x-kde-passwordManagerHint")});
        ASSERT_TRUE(manager.waitForFocus());
        hand.tap(KEY_A);
        ASSERT_TRUE(waitUntil([] { return pasted() == "a secret"; }));
    }
    // What is copied next comes after it.
    ForeignWindow other(QStringLiteral(TAVRINE_COPY_ON_KEY), {QStringLiteral("no secret")});
    ASSERT_TRUE(other.waitForFocus());
    hand.tap(KEY_A);
    ASSERT_TRUE(comesToHold(QStringLiteral("no secret")));
    EXPECT_EQ(program.rowsWith(QStringLiteral("a secret")), 0);
}

TEST_F(WaylandProgram, aCopyWhileAPasswordManagerIsInFrontIsNeverRecorded) {
    ASSERT_TRUE(program.startOnboarded());
    {
        const Client manager(QStringLiteral(TAVRINE_NAMED_WINDOW), {QStringLiteral("org.keepassxc.KeePassXC")});
        ASSERT_TRUE(isInFront("org.keepassxc.KeePassXC"));
        copyInVain(QStringLiteral("hunter2"));
    }
    ASSERT_TRUE(isRecordedInFrontOf("org.example.editor"));
    EXPECT_EQ(program.rowsWith(QStringLiteral("hunter2")), 0);
}

/// The file tells the class of the X server's windows, and the compositor the name that the toolkit gives them here.
TEST_F(WaylandProgram, aProgramExcludedByItsFileIsNotRecordedHoweverItsWindowsAreCalled) {
    const QString path = installInHome(program.home(), "org.example.Line.desktop", "StartupWMClass=Gtk-entry\n");
    ASSERT_TRUE(program.startOnboarded(exclusionByFile(path)));
    {
        ForeignWindow window(QStringLiteral(TAVRINE_GTK_ENTRY));
        ASSERT_TRUE(window.waitForFocus());
        ASSERT_TRUE(isInFront("gtk-entry"));
        copyInVain(QStringLiteral("hidden"));
    }
    {
        const Client window(QStringLiteral(TAVRINE_NAMED_WINDOW), {QStringLiteral("org.example.Line")});
        ASSERT_TRUE(isInFront("org.example.Line"));
        copyInVain(QStringLiteral("hidden too"));
    }
    ASSERT_TRUE(isRecordedInFrontOf("gtk-entry-viewer"));
    EXPECT_EQ(program.rowsWith(QStringLiteral("hidden")), 0);
    EXPECT_EQ(program.rowsWith(QStringLiteral("hidden too")), 0);
}

TEST_F(WaylandProgram, aCopyOutlivesItsProgram) {
    ASSERT_TRUE(program.startOnboarded());
    const auto owner = copyAs(QStringLiteral("of a program that dies"));
    ASSERT_TRUE(comesToHold(QStringLiteral("of a program that dies")));
    owner->kill9();
    EXPECT_TRUE(waitUntil([] { return pasted() == "of a program that dies"; }));
}

/// Starts it as a process whose words the test reads.
static bool startsTrusted(QProcess &process, const QProcessEnvironment &environment) {
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(TAVRINE_BINARY), {});
    QByteArray printed;
    return waitUntil([&] {
        printed += process.readAllStandardOutput();
        return printed.contains("Accessibility Trusted on Launch: true");
    });
}

TEST_F(WaylandProgram, itStartsWithoutAWordOfErrors) {
    ASSERT_TRUE(program.writePreferences({}));
    QProcess process;
    EXPECT_TRUE(startsTrusted(process, program.environment));
    EXPECT_EQ(process.readAllStandardError(), QByteArray());
    process.kill();
    process.waitForFinished();
}

/// The toolkit's, the clipboard's and one for all else: KWin reads the whole program for each. The first thing that is
/// made on a connection is its registry.
TEST_F(WaylandProgram, itStartsAndShowsItsPanelWithThreeConnections) {
    ASSERT_TRUE(program.writePreferences({}));
    program.environment.insert(QStringLiteral("WAYLAND_DEBUG"), QStringLiteral("1"));
    QProcess process;
    EXPECT_TRUE(startsTrusted(process, program.environment));
    program.environment.remove(QStringLiteral("WAYLAND_DEBUG"));
    EXPECT_TRUE(openPanel("--clipboard"));
    process.kill();
    process.waitForFinished();
    EXPECT_EQ(process.readAllStandardError().count("get_registry(new id wl_registry@2)"), 3);
}

TEST_F(WaylandProgram, theTrayItemIsShownAndItsMenuOpens) {
    test::StatusNotifierTray tray;
    ASSERT_TRUE(startIn(tray));
    EXPECT_FALSE(tray.pixmaps().isEmpty());
    ForeignWindow window(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(window.waitForFocus());
    tray.call(QStringLiteral("Activate"), {0, 0});
    EXPECT_TRUE(hasAPanelTheKeyboard());
    hand.tap(KEY_ESC);
    EXPECT_TRUE(hasAWindowTheKeyboard());
}

/// It is gone then, and not only without the keyboard: what opens it does so again.
TEST_F(WaylandProgram, aClickBesideAPanelTakesItAway) {
    ASSERT_TRUE(program.startOnboarded());
    ForeignWindow window(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(window.waitForFocus());
    for (const char *word : {"--clipboard", "--emoji"}) {
        SCOPED_TRACE(word);
        for (int opening = 0; opening < 2; ++opening) {
            ASSERT_TRUE(openPanel(word)) << opening;
            EXPECT_TRUE(panelStays()) << opening;
            ASSERT_TRUE(clickBrings(besideAll)) << opening;
        }
    }
}

TEST_F(WaylandProgram, aClickBesideTheClassicPanelTakesItAway) {
    ASSERT_TRUE(program.startOnboarded("<key>ClipboardExperience</key><string>classic</string>"));
    ForeignWindow window(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(window.waitForFocus());
    for (int opening = 0; opening < 2; ++opening) {
        ASSERT_TRUE(openPanel("--clipboard")) << opening;
        EXPECT_TRUE(panelStays()) << opening;
        ASSERT_TRUE(clickBrings(besideAll)) << opening;
    }
}

/// As by keys or by a task bar.
TEST_F(WaylandProgram, whoGoesToAnotherWindowLeavesThePanel) {
    ASSERT_TRUE(program.startOnboarded());
    ForeignWindow first(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(first.waitForFocus());
    ASSERT_TRUE(hasAWindowTheKeyboard());
    const quint32 other = windows->active()->number;
    ForeignWindow second(QStringLiteral(TAVRINE_GTK_ENTRY));
    ASSERT_TRUE(second.waitForFocus());
    ASSERT_TRUE(openPanel("--clipboard"));
    EXPECT_FALSE(waitUntil([] { return false; }, std::chrono::seconds(1))); // until it knows that it has the keyboard
    windows->activate(other);
    ASSERT_TRUE(waitUntil([&] {
        windows->refresh();
        return windows->active() && windows->active()->number == other;
    }));
    // It may have the keyboard before the panel is gone, which waits until nobody takes it back.
    EXPECT_FALSE(waitUntil([] { return false; }, std::chrono::seconds(3)));
    ASSERT_TRUE(openPanel("--clipboard"));
    EXPECT_TRUE(panelStays());
    ASSERT_TRUE(clickBrings(besideAll));
    EXPECT_EQ(windows->active()->number, other);
}

TEST_F(WaylandProgram, aClickBesideTheMenuClosesIt) {
    test::StatusNotifierTray tray;
    ASSERT_TRUE(startIn(tray));
    ForeignWindow window(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(window.waitForFocus());
    hand.move(middle);
    for (int opening = 0; opening < 2; ++opening) {
        ASSERT_TRUE(waitUntil([&] { // one that comes at once is taken for the press that closed it
            tray.call(QStringLiteral("Activate"), {0, 0});
            return hasAPanelTheKeyboard(std::chrono::seconds(5));
        })) << opening;
        ASSERT_TRUE(clickBrings(besideAll)) << opening;
    }
}

/// On KWin: sway puts no window away.
class WaylandPlasma : public WaylandProgram {};

TEST_F(WaylandPlasma, settingsThatWerePutAwayComeBackWhenTheyAreAskedFor) {
    ASSERT_TRUE(program.startOnboarded());
    const auto areInFront = [this] {
        windows->refresh();
        return windows->active() && windows->active()->title == QStringLiteral("Tavrine");
    };
    const auto ask = [&] {
        return program.startAgain({QStringLiteral("--settings")})->waitForFinished(10'000) && waitUntil(areInFront);
    };
    ForeignWindow window(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(window.waitForFocus());
    ASSERT_TRUE(ask());
    windows->minimize(windows->active()->number);
    ASSERT_TRUE(waitUntil([&] { return !areInFront(); }));
    EXPECT_TRUE(ask());
}

TEST_F(WaylandProgram, keepAwakeIsSwitchedOnInTheMenuAndEndsWithTheProgram) {
    const test::InhibitService session(QStringLiteral("org.gnome.SessionManager"));
    test::StatusNotifierTray tray;
    ASSERT_TRUE(startIn(tray));
    ForeignWindow window(QStringLiteral(TAVRINE_QT_LINE_EDIT));
    ASSERT_TRUE(window.waitForFocus());
    hand.move(middle);
    tray.call(QStringLiteral("Activate"), {0, 0});
    ASSERT_TRUE(hasAPanelTheKeyboard()); // the menu asks where the pointer is before it comes
    // The switch of its card, once the menu is there; what comes late must not be switched off again.
    EXPECT_TRUE(waitUntil(
        [&] {
            hand.click(menuAtTheRight + QPoint(247, 128));
            return waitUntil([&session] { return !session.held().isEmpty(); }, std::chrono::seconds(5));
        },
        std::chrono::seconds(30)));
    program.kill9();
    EXPECT_TRUE(waitUntil([&session] { return session.held().isEmpty(); }));
}

TEST_F(WaylandProgram, aTerminalIsPastedInto) {
    ASSERT_TRUE(program.startOnboarded());
    const auto needle = copyAs(QStringLiteral("the needle"));
    ASSERT_TRUE(comesToHold(QStringLiteral("the needle")));
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("typed"));
    // foot divides by the size of its screen, and KWin's outputs without a screen have none.
    const bool isSway = qgetenv("XDG_CURRENT_DESKTOP") == "sway";
    const Client terminal(
        isSway ? QStringLiteral("foot") : QStringLiteral("xfce4-terminal"),
        (isSway ? QStringList() : QStringList{QStringLiteral("--disable-server"), QStringLiteral("-x")}) +
            QStringList{QStringLiteral("sh"), QStringLiteral("-c"),
                        QStringLiteral("stty -icanon; exec cat > '%1'").arg(path)});
    const auto typed = [&path] {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    ASSERT_TRUE(waitUntil([&] { return QFile::exists(path) && windows->active(); }));
    hand.type("r"); // once this is there, the terminal has the keyboard
    ASSERT_TRUE(waitUntil([&typed] { return typed() == "r"; }));
    ASSERT_TRUE(openPanel("--clipboard"));
    hand.type("need");
    hand.tap(KEY_ENTER);
    EXPECT_TRUE(waitUntil([&typed] { return typed() == "rthe needle"; })) << typed().toStdString();
}

} // namespace
} // namespace tavrine::testing
