// The whole program on GNOME under Wayland: its X server for the clipboard and the panels, its extension of the shell
// for the rest, and programs that speak Wayland alone.
#include "adapters/x11/ForeignWindow.h"
#include "desktop/Desktop.h"
#include "desktop/GnomeHands.h"
#include "desktop/Program.h"
#include "support/MovieReading.h"
#include "support/Wait.h"

#include <QColor>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusUnixFileDescriptor>
#include <QImage>
#include <QRegularExpression>
#include <QTemporaryFile>

#include <csignal>

#include <gtest/gtest.h>

using namespace tavrine::testing;
using namespace std::chrono_literals;

namespace {

constexpr auto patience = 20s;

int run(const QString &command, const QStringList &arguments, const QByteArray &input = {}) {
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(command, arguments);
    process.write(input);
    process.closeWriteChannel();
    return process.waitForFinished(10000) ? process.exitCode() : -1;
}

/// As a program that speaks Wayland: what it offers is its own until another copies.
void copyOnWayland(const QByteArray &text) {
    ASSERT_EQ(run(QStringLiteral("wl-copy"), {}, text), 0);
}

QDBusMessage askExtension(const char *method, const QVariantList &arguments = {}) {
    auto call =
        QDBusMessage::createMethodCall(QStringLiteral("org.gnome.Shell"), QStringLiteral("/com/veltrane/Tavrine/Shell"),
                                       QStringLiteral("com.veltrane.Tavrine.Shell"), QString::fromUtf8(method));
    call.setArguments(arguments);
    return QDBusConnection::sessionBus().call(call);
}

bool isRefused(const char *method, const QVariantList &arguments = {}) {
    return askExtension(method, arguments).errorName() == QLatin1String("org.freedesktop.DBus.Error.AccessDenied");
}

bool isAttached() {
    auto ask =
        QDBusMessage::createMethodCall(QStringLiteral("org.gnome.Shell"), QStringLiteral("/com/veltrane/Tavrine/Shell"),
                                       QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    ask.setArguments({QStringLiteral("com.veltrane.Tavrine.Shell"), QStringLiteral("IsAttached")});
    const QDBusReply<QVariant> answer = QDBusConnection::sessionBus().call(ask);
    return answer.isValid() && answer.value().toBool();
}

bool isExtensionThere() {
    return isRefused("Attach");
}

bool switchExtension(bool isOn) {
    const QString list = isOn ? QStringLiteral("['tavrine@veltrane.com']") : QStringLiteral("[]");
    return run(QStringLiteral("gsettings"), {QStringLiteral("set"), QStringLiteral("org.gnome.shell"),
                                             QStringLiteral("enabled-extensions"), list}) == 0 &&
           waitUntil([isOn] { return isExtensionThere() == isOn; }, patience);
}

/// A line of text of a program on this platform.
std::unique_ptr<ForeignWindow> line(const char *command, const char *platform) {
    qputenv("QT_QPA_PLATFORM", platform);
    auto window = std::make_unique<ForeignWindow>(QString::fromUtf8(command));
    qunsetenv("QT_QPA_PLATFORM");
    return window;
}

class Gnome : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(hands.areThere());
        hands.leaveOverview();
    }
    /// The launch looks for the extension once and goes on; here it is waited for.
    [[nodiscard]] bool start(const QByteArray &preferences = {}) {
        return program.writePreferences(preferences) && program.start() && waitUntil(isAttached, patience);
    }
    [[nodiscard]] bool isPanelShown() const { return desktop.isShown(clipboardPanel); }
    /// As the shell sees it and as the X server does, of which either may be ahead.
    [[nodiscard]] bool isPanelActive() const {
        const auto panels = desktop.windowsTitled(QLatin1String(clipboardPanel));
        return panels.size() == 1 && panels.front() == desktop.activeWindow() && desktop.hasKeyboard(clipboardPanel);
    }
    void closePanel() {
        hands.tap(evdev::escape);
        ASSERT_TRUE(waitUntil([this] { return !isPanelShown(); }, patience));
    }
    [[nodiscard]] int presses() {
        return static_cast<int>(program.output().count(QLatin1String("Hotkey Handler Triggered for ID: 1")));
    }
    /// The shell answers a registration when it gets to it, and until then the combination is nobody's. A press that
    /// has come through is not made again: the next one would close the panel.
    [[nodiscard]] bool openPanel() {
        const int before = presses();
        const bool isPressed =
            waitUntil(isAttached, patience) && waitUntil(
                                                   [&] {
                                                       hands.chord({evdev::leftSuper, evdev::leftShift, evdev::v});
                                                       return waitUntil([&] { return presses() > before; }, 8s);
                                                   },
                                                   30s);
        return isPressed && waitUntil([this] { return isPanelActive(); }, patience);
    }
    [[nodiscard]] bool isRecorded(const char *text) {
        return waitUntil([this, text] { return program.rowsWith(QString::fromUtf8(text)) == 1; }, patience);
    }
    void paste(ForeignWindow &target, const char *text) {
        copyOnWayland(text);
        ASSERT_TRUE(isRecorded(text));
        ASSERT_TRUE(target.waitForFocus());
        ASSERT_TRUE(openPanel());
        // The toolkit hears of the keyboard a moment after the server does; what is pressed before is lost.
        ASSERT_TRUE(waitUntil(
            [this] {
                hands.tap(evdev::returnKey);
                return waitUntil([this] { return !isPanelShown(); }, 3s);
            },
            patience));
        EXPECT_TRUE(target.waitForText(QString::fromUtf8(text), patience)) << target.text().toStdString();
    }

    Desktop desktop;
    GnomeHands hands;
    Program program;
};

TEST_F(Gnome, aCopyOfAWaylandProgramIsRecorded) {
    ASSERT_TRUE(start());
    copyOnWayland("copied on Wayland");
    EXPECT_TRUE(isRecorded("copied on Wayland"));
}

TEST_F(Gnome, aRowIsPastedIntoAGtkProgramOfWayland) {
    ASSERT_TRUE(start());
    const auto target = line(TAVRINE_CLIENTS "/gtk-entry", "wayland");
    paste(*target, "into GTK");
}

TEST_F(Gnome, aRowIsPastedIntoAQtProgramOfWayland) {
    ASSERT_TRUE(start());
    const auto target = line(TAVRINE_QT_LINE_EDIT, "wayland");
    paste(*target, "into Qt");
}

TEST_F(Gnome, aRowIsPastedIntoAProgramOfTheXServer) {
    ASSERT_TRUE(start());
    const auto target = line(TAVRINE_QT_LINE_EDIT, "xcb");
    paste(*target, "into X");
}

TEST_F(Gnome, twoTapsOfAltOpenThePanelOverAWaylandProgram) {
    ASSERT_TRUE(start("<key>clipboardHotkeyMode</key><string>doubleOption</string>"));
    const auto front = line(TAVRINE_CLIENTS "/gtk-entry", "wayland");
    ASSERT_TRUE(front->waitForFocus());
    EXPECT_TRUE(waitUntil(
        [this] {
            hands.tap(evdev::leftAlt);
            hands.tap(evdev::leftAlt);
            return waitUntil([this] { return isPanelShown(); }, 3s);
        },
        patience));
}

/// What gtk-pattern shows there.
QImage patternIn(const QRect &area) {
    QImage picture(area.size(), QImage::Format_RGB32);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            const int column = (area.x() + x) % 64;
            const int row = (area.y() + y) % 64;
            picture.setPixel(x, y, qRgb(4 * column, 4 * row, column + row));
        }
    return picture;
}

class GnomePattern : public Gnome {
protected:
    void SetUp() override {
        Gnome::SetUp();
        ASSERT_TRUE(start());
        pattern = line(TAVRINE_DESKTOP_CLIENTS "/gtk-pattern", "wayland");
        ASSERT_TRUE(pattern->waitForFocus());
        hands.movePointer({640, 400});
    }
    /// The shell watches for the key a moment after the overlay is there.
    [[nodiscard]] bool escape() {
        return waitUntil(
            [this] {
                hands.tap(evdev::escape);
                return !desktop.isFrozen();
            },
            patience);
    }

    std::unique_ptr<ForeignWindow> pattern;
};

class GnomeCapture : public GnomePattern {
protected:
    void SetUp() override {
        GnomePattern::SetUp();
        ASSERT_TRUE(waitUntil(
            [this] {
                hands.chord({evdev::leftSuper, evdev::leftShift, evdev::two});
                return waitUntil([this] { return desktop.isFrozen(); }, 8s);
            },
            30s));
    }
};

TEST_F(GnomeCapture, hasThePixelsOfAProgramOfWayland) {
    const QRect area(QPoint(301, 197), QPoint(902, 566));
    hands.movePointer(area.topLeft());
    hands.pressButton();
    hands.movePointer(area.bottomRight());
    hands.releaseButton();
    ASSERT_TRUE(waitUntil([this] { return desktop.isShown("Screenshot"); }, patience));
    const auto pasted = [] {
        return QImage::fromData(tavrine::testing::paste("image/png")).convertToFormat(QImage::Format_RGB32);
    };
    EXPECT_TRUE(waitUntil([&] { return pasted() == patternIn(area); }, patience)) << pasted().width();
}

TEST_F(GnomeCapture, leavesNothingAfterEscape) {
    EXPECT_TRUE(escape());
    copyOnWayland("after the capture");
    EXPECT_TRUE(isRecorded("after the capture"));
    EXPECT_FALSE(desktop.isShown("Screenshot"));
}

/// The mean of some pixels: a movie has one colour for four, and is not exact.
QColor meanAt(const QImage &picture, QPoint corner) {
    constexpr int side = 8;
    int sum[3] = {};
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            const QColor pixel = picture.pixelColor(corner + QPoint(x, y));
            sum[0] += pixel.red();
            sum[1] += pixel.green();
            sum[2] += pixel.blue();
        }
    return {sum[0] / (side * side), sum[1] / (side * side), sum[2] / (side * side)};
}

/// Each picture of a movie is what was drawn, but for a few places that the pointer covers.
void expectPicturesAreLike(const QImage &drawn, const QByteArray &pixels) {
    const qsizetype each = qsizetype{3} * drawn.width() * drawn.height();
    ASSERT_GE(pixels.size(), each);
    EXPECT_EQ(pixels.size() % each, 0);
    for (qsizetype at = 0; at < pixels.size(); at += each) {
        const QImage seen(reinterpret_cast<const uchar *>(pixels.constData()) + at, drawn.width(), drawn.height(),
                          drawn.width() * 3, QImage::Format_RGB888);
        int wrong = 0;
        for (int y = 8; y < drawn.height() - 16; y += 24)
            for (int x = 8; x < drawn.width() - 16; x += 24) {
                const QColor one = meanAt(seen, {x, y});
                const QColor other = meanAt(drawn, {x, y});
                const int difference = std::abs(one.red() - other.red()) + std::abs(one.green() - other.green()) +
                                       std::abs(one.blue() - other.blue());
                wrong += difference > 48 ? 1 : 0;
            }
        EXPECT_LE(wrong, 6) << "at " << at / each;
    }
}

TEST_F(GnomePattern, isRecordedAsItIsUntilTheBarIsClicked) {
    const QRect area(300, 196, 600, 370);
    // The shell gives the mouse to a window a moment after the X server shows it: a drag before that is for another.
    ASSERT_TRUE(waitUntil(
        [&] {
            if (!desktop.isShown("Select Area to Record")) {
                const auto caller = program.startAgain({QStringLiteral("--record")});
                if (!caller->waitForFinished(10'000) ||
                    !waitUntil([this] { return desktop.hasKeyboard("Select Area to Record"); }, 5s))
                    return false;
            }
            hands.movePointer(area.topLeft());
            hands.pressButton();
            hands.movePointer(area.topLeft() + QPoint(area.width(), area.height()));
            hands.releaseButton();
            hands.tap(evdev::returnKey);
            return waitUntil([this] { return desktop.isShown("Recording"); }, 3s);
        },
        patience));
    ASSERT_TRUE(
        waitUntil([this] { return program.output().contains(QLatin1String("from first SCStream frame")); }, patience))
        << qPrintable(program.output());
    ASSERT_TRUE(waitUntil(
        [this] {
            const auto bars = desktop.windowsTitled(QStringLiteral("Recording"));
            if (!bars.empty()) {
                hands.movePointer(desktop.geometry(bars.front()).bottomRight() - QPoint(30, 20));
                hands.pressButton();
                hands.releaseButton();
            }
            return waitUntil([this] { return program.output().contains(QLatin1String("stopRecording() called")); }, 3s);
        },
        patience));
    QRegularExpressionMatch match;
    ASSERT_TRUE(waitUntil(
        [&] {
            static const QRegularExpression words(QStringLiteral("finished successfully at (.*), showing preview"));
            match = words.match(program.output());
            return match.hasMatch();
        },
        patience))
        << qPrintable(program.output());
    EXPECT_EQ(tavrine::test::complaintsAbout(match.captured(1)), QByteArray());
    expectPicturesAreLike(patternIn(area), tavrine::test::pixelsOf(match.captured(1)));
}

TEST_F(GnomePattern, givesTheColourUnderAClick) {
    const auto asked = program.startAgain({QStringLiteral("--color")});
    ASSERT_TRUE(waitUntil([this] { return desktop.isFrozen(); }, patience));
    const QPoint place(333, 222);
    hands.movePointer(place);
    hands.pressButton();
    hands.releaseButton();
    const QRgb expected = patternIn(QRect(place, QSize(1, 1))).pixel(0, 0);
    const QByteArray text = QColor(expected).name().toUpper().toUtf8();
    EXPECT_TRUE(waitUntil([&] { return tavrine::testing::paste() == text; }, patience)) << text.toStdString();
}

TEST_F(GnomePattern, givesNoColourAfterEscape) {
    copyOnWayland("before the pick");
    ASSERT_TRUE(isRecorded("before the pick"));
    const auto asked = program.startAgain({QStringLiteral("--color")});
    ASSERT_TRUE(waitUntil([this] { return desktop.isFrozen(); }, patience));
    EXPECT_TRUE(escape());
    EXPECT_EQ(tavrine::testing::paste(), "before the pick");
}

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
    EXPECT_TRUE(waitUntil([this] { return program.output().contains(QLatin1String("check failed")); }, patience));
    EXPECT_FALSE(desktop.isFrozen());
    const auto isAlertShown = [this] {
        return !desktop
                    .windowsMatching([](const QString &title) { return title.contains(QLatin1String("Permission")); })
                    .empty();
    };
    ASSERT_TRUE(waitUntil(isAlertShown, patience));
    ASSERT_TRUE(waitUntil(
        [&] {
            hands.tap(evdev::escape);
            return !isAlertShown();
        },
        patience));

    ASSERT_TRUE(switchExtension(true));
    EXPECT_TRUE(openPanel());
}

TEST_F(Gnome, aHotKeyThatTheShellKeepsIsKnownAsTaken) {
    const auto keep = [](const char *keys) {
        return run(QStringLiteral("gsettings"),
                   {QStringLiteral("set"), QStringLiteral("org.gnome.desktop.wm.keybindings"),
                    QStringLiteral("show-desktop"), QString::fromUtf8(keys)}) == 0;
    };
    ASSERT_TRUE(keep("['<Super><Shift>v']"));
    ASSERT_TRUE(start());
    EXPECT_TRUE(waitUntil(
        [this] { return program.output().contains(QLatin1String("Failed to register hotkey ID: 1")); }, patience));
    ASSERT_TRUE(keep("[]"));
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

} // namespace
