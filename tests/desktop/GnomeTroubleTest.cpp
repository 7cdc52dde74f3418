// The program on GNOME while something goes wrong there: other callers of the extension, an extension that is switched
// off, a shell that stands still.
#include "desktop/GnomeFixture.h"

#include <QDBusUnixFileDescriptor>
#include <QTemporaryFile>

#include <csignal>

using namespace tavrine::testing;
using namespace std::chrono_literals;

namespace {

TEST_F(Gnome, anotherProgramIsRefusedEvenUnderOurName) {
    ASSERT_TRUE(isExtensionThere());
    auto bus = QDBusConnection::sessionBus();
    ASSERT_TRUE(bus.registerService(QStringLiteral("com.veltrane.Tavrine")));
    EXPECT_TRUE(isRefused("Attach"));
    EXPECT_FALSE(isAttached());
    ASSERT_TRUE(bus.unregisterService(QStringLiteral("com.veltrane.Tavrine")));
}

TEST_F(Gnome, whileTheProgramIsServedNobodyElseIs) {
    ASSERT_TRUE(start());
    EXPECT_TRUE(isRefused("Attach"));
    EXPECT_TRUE(isRefused("GrabKey", {QStringLiteral("<Super><Control>0x37")}));
    EXPECT_TRUE(isRefused("UngrabKey", {1U}));
    EXPECT_TRUE(isRefused("WatchInput", {10U}));
    EXPECT_TRUE(isRefused("ActivateWindow", {1U}));
    EXPECT_TRUE(isRefused("TypeChord", {QVariant::fromValue(QList<quint32>{'v'})}));
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    EXPECT_TRUE(isRefused("TakePicture", {QVariant::fromValue(QDBusUnixFileDescriptor(file.handle()))}));
    EXPECT_EQ(file.size(), 0);
}

TEST_F(Gnome, withTheExtensionSwitchedOffTheHistoryGoesOnAndWithItOnAgainTheHotKeys) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(openPanel());
    closePanel();

    ASSERT_TRUE(switchExtension(false));
    hands.chord({evdev::leftSuper, evdev::leftShift, evdev::v});
    copyOnWayland("without the extension");
    EXPECT_TRUE(isRecorded("without the extension"));
    EXPECT_FALSE(isPanelShown());

    // Of a screen that nobody shows there is no capture, rather than a black one.
    const auto asked = program.startAgain({QStringLiteral("--capture")});
    EXPECT_TRUE(waitUntil([this] { return program.output().contains(QLatin1String("check failed")); }, gnomePatience));
    EXPECT_FALSE(desktop.isFrozen());
    const auto isAlertShown = [this] {
        return !desktop
                    .windowsMatching([](const QString &title) { return title.contains(QLatin1String("Permission")); })
                    .empty();
    };
    ASSERT_TRUE(waitUntil(isAlertShown, gnomePatience));
    ASSERT_TRUE(waitUntil(
        [&] {
            hands.tap(evdev::escape);
            return !isAlertShown();
        },
        gnomePatience));

    ASSERT_TRUE(switchExtension(true));
    EXPECT_TRUE(openPanel());
}

TEST_F(Gnome, whileTheScreenIsLockedNoKeyActsAndAfterwardsAllDo) {
    ASSERT_TRUE(start("<key>clipboardHotkeyMode</key><string>doubleOption</string>"));
    ASSERT_TRUE(lockScreen());
    for (int i = 0; i < 2; ++i)
        hands.tap(evdev::leftAlt);
    hands.chord({evdev::leftSuper, evdev::leftShift, evdev::two});
    copy("while the screen is locked"); // of a program of the X server: those of Wayland have no keyboard there
    EXPECT_TRUE(isRecorded("while the screen is locked"));
    EXPECT_FALSE(isPanelShown());
    EXPECT_FALSE(desktop.isFrozen());
    ASSERT_TRUE(unlockScreen(hands));
    ASSERT_TRUE(waitUntil(isAttached, gnomePatience));
    EXPECT_FALSE(isPanelShown());
    EXPECT_FALSE(program.output().contains(QLatin1String("Hotkey Handler Triggered")));
    EXPECT_TRUE(waitUntil(
        [this] {
            hands.tap(evdev::leftAlt);
            hands.tap(evdev::leftAlt);
            return waitUntil([this] { return isPanelShown(); }, 3s);
        },
        gnomePatience));
    EXPECT_TRUE(freeze());
    EXPECT_TRUE(escape());
}

TEST_F(Gnome, whatIsTypedAtTheLockScreenDoesNotReachAPanelBelowIt) {
    ASSERT_TRUE(start());
    copyOnWayland("a row");
    ASSERT_TRUE(isRecorded("a row"));
    const auto target = lineOf(TAVRINE_QT_LINE_EDIT, "xcb");
    ASSERT_TRUE(target->waitForFocus());
    ASSERT_TRUE(openPanel());
    ASSERT_TRUE(lockScreen());
    hands.tap(evdev::v);
    hands.tap(evdev::v);
    hands.tap(evdev::returnKey);
    ASSERT_TRUE(unlockScreen(hands));
    EXPECT_EQ(target->text(), QString());
    ASSERT_TRUE(isPanelShown() || openPanel());
    closePanel();
    EXPECT_EQ(target->text(), QString());
}

TEST_F(Gnome, aHotKeyThatTheShellKeepsIsKnownAsTaken) {
    const auto keep = [](const char *keys) {
        return runProgram(QStringLiteral("gsettings"),
                          {QStringLiteral("set"), QStringLiteral("org.gnome.desktop.wm.keybindings"),
                           QStringLiteral("show-desktop"), QString::fromUtf8(keys)}) == 0;
    };
    ASSERT_TRUE(keep("['<Super><Shift>v']"));
    ASSERT_TRUE(start());
    EXPECT_TRUE(waitUntil(
        [this] { return program.output().contains(QLatin1String("Failed to register hotkey ID: 1")); }, gnomePatience));
    ASSERT_TRUE(keep("[]"));
}

/// The word of a first start is read before the shell has answered anything.
TEST_F(Gnome, aFirstStartForACaptureCaptures) {
    ASSERT_TRUE(program.writePreferences({}));
    const auto first = program.startAgain({QStringLiteral("--capture")});
    EXPECT_TRUE(waitUntil([this] { return desktop.isFrozen(); }, gnomePatience));
    EXPECT_TRUE(escape());
    const QByteArray printed = first->readAllStandardOutput();
    EXPECT_TRUE(printed.contains("Accessibility Trusted on Launch: true")) << printed.toStdString();
    first->kill();
    first->waitForFinished(5000);
}

TEST_F(Gnome, aProgramThatIsKilledLeavesItsKeysToItsNextStart) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(openPanel());
    program.kill9();
    ASSERT_TRUE(start());
    EXPECT_TRUE(openPanel());
}

TEST_F(Gnome, aShellThatStandsStillKeepsTheProgramFromNothingElse) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(openPanel());
    closePanel();
    const int shell = qEnvironmentVariableIntValue("GNOME_SHELL_PROCESS");
    ASSERT_GT(shell, 0);
    ASSERT_EQ(::kill(shell, SIGSTOP), 0);
    copy("while the shell stands still"); // of a program of the X server, which goes on
    const bool isAlive = isRecorded("while the shell stands still");
    ASSERT_EQ(::kill(shell, SIGCONT), 0);
    EXPECT_TRUE(isAlive);
    EXPECT_TRUE(openPanel());
}

/// In a session of its own, which it ends; the test itself needs no screen.
class GnomeEnd : public Gnome {
protected:
    void SetUp() override {
        program.environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
        Gnome::SetUp();
    }
};

TEST_F(GnomeEnd, takesTheProgramAlongAndNoRow) {
    ASSERT_TRUE(start());
    copyOnWayland("before the end of the shell");
    ASSERT_TRUE(isRecorded("before the end of the shell"));
    const int shell = qEnvironmentVariableIntValue("GNOME_SHELL_PROCESS");
    ASSERT_GT(shell, 0);
    ASSERT_EQ(::kill(shell, SIGKILL), 0);
    EXPECT_TRUE(waitUntil([this] { return !program.isRunning(); }, gnomePatience));
    EXPECT_EQ(program.rowsWith(QStringLiteral("before the end of the shell")), 1);
    EXPECT_EQ(program.rows("PRAGMA integrity_check"), QStringList{QStringLiteral("ok")});
}

} // namespace
