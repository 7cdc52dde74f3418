// The whole program on GNOME under Wayland: its X server for the clipboard and the panels, its extension of the shell
// for the rest, and programs that speak Wayland alone.
#include "desktop/Exclusions.h"
#include "desktop/GnomeFixture.h"
#include "support/MovieReading.h"

#include <QColor>

using namespace tavrine::testing;
using namespace std::chrono_literals;

namespace {

TEST_F(Gnome, aCopyOfAWaylandProgramIsRecorded) {
    ASSERT_TRUE(start());
    copyOnWayland("copied on Wayland");
    EXPECT_TRUE(isRecorded("copied on Wayland"));
}

/// Programs of the X server, which the shell knows as any other: by the file that claims their windows, and else by
/// their class.
class GnomeSecrets : public Gnome {
protected:
    [[nodiscard]] bool isDroppedInFrontOf(const char *windowClass) {
        const QByteArray text = QByteArray("in front of ") + windowClass;
        {
            const Client window(QStringLiteral("xterm"),
                                {QStringLiteral("-class"), QLatin1String(windowClass), QStringLiteral("-name"),
                                 QString::fromUtf8(windowClass).toLower(), QStringLiteral("-title"),
                                 QStringLiteral("A terminal")});
            if (!waitUntil([&] { return desktop.hasKeyboard("A terminal"); }, gnomePatience))
                return false;
            copyOnWayland(text);
            // Two periods of the poll, in which the copy is seen and dropped.
            (void)waitUntil([] { return false; }, 1200ms);
        }
        const auto isLaterOneRecorded = [&] { // the shell tells a moment later that the window is gone
            copyOnWayland("after " + text);
            return waitUntil([&] { return program.rowsWith(QString::fromUtf8("after " + text)) == 1; }, 2s);
        };
        return waitUntil(isLaterOneRecorded, gnomePatience) && program.rowsWith(QString::fromUtf8(text)) == 0;
    }
};

TEST_F(GnomeSecrets, aCopyWhileAPasswordManagerIsInFrontIsNeverRecorded) {
    ASSERT_TRUE(start());
    EXPECT_TRUE(isDroppedInFrontOf("KeePassXC"));
    EXPECT_FALSE(isDroppedInFrontOf("KeePassXD"));
}

TEST_F(GnomeSecrets, aProgramExcludedByItsFileIsNotRecorded) {
    ASSERT_TRUE(start(exclusionByFile(QStringLiteral("/usr/share/applications/debian-xterm.desktop"))));
    EXPECT_TRUE(isDroppedInFrontOf("XTerm"));
    EXPECT_FALSE(isDroppedInFrontOf("YTerm"));
}

TEST_F(Gnome, aRowIsPastedIntoAGtkProgramOfWayland) {
    ASSERT_TRUE(start());
    const auto target = lineOf(TAVRINE_CLIENTS "/gtk-entry", "wayland");
    paste(*target, "into GTK");
}

TEST_F(Gnome, aRowIsPastedIntoAQtProgramOfWayland) {
    ASSERT_TRUE(start());
    const auto target = lineOf(TAVRINE_QT_LINE_EDIT, "wayland");
    paste(*target, "into Qt");
}

TEST_F(Gnome, aRowIsPastedIntoAProgramOfTheXServer) {
    ASSERT_TRUE(start());
    const auto target = lineOf(TAVRINE_QT_LINE_EDIT, "xcb");
    paste(*target, "into X");
}

TEST_F(Gnome, twoTapsOfAltOpenThePanelOverAWaylandProgram) {
    ASSERT_TRUE(start("<key>clipboardHotkeyMode</key><string>doubleOption</string>"));
    const auto front = lineOf(TAVRINE_CLIENTS "/gtk-entry", "wayland");
    ASSERT_TRUE(front->waitForFocus());
    EXPECT_TRUE(waitUntil(
        [this] {
            hands.tap(evdev::leftAlt);
            hands.tap(evdev::leftAlt);
            return waitUntil([this] { return isPanelShown(); }, 3s);
        },
        gnomePatience));
}

class GnomePattern : public Gnome {
protected:
    void SetUp() override {
        Gnome::SetUp();
        ASSERT_TRUE(start());
        pattern = lineOf(TAVRINE_DESKTOP_CLIENTS "/gtk-pattern", "wayland");
        ASSERT_TRUE(pattern->waitForFocus());
        hands.movePointer({640, 400});
    }
    std::unique_ptr<ForeignWindow> pattern;
};

TEST_F(GnomePattern, isCapturedPixelByPixel) {
    const QRect area(QPoint(301, 197), QPoint(902, 566));
    ASSERT_TRUE(capture(QRect(area.topLeft(), area.size() - QSize(1, 1))));
    const auto pasted = [] {
        return QImage::fromData(tavrine::testing::paste("image/png")).convertToFormat(QImage::Format_RGB32);
    };
    EXPECT_TRUE(waitUntil([&] { return pasted() == patternIn(area); }, gnomePatience)) << pasted().width();
}

TEST_F(GnomePattern, isLeftAloneByACaptureThatIsGivenUp) {
    ASSERT_TRUE(freeze());
    EXPECT_TRUE(escape());
    copyOnWayland("after the capture");
    EXPECT_TRUE(isRecorded("after the capture"));
    EXPECT_FALSE(desktop.isShown("Screenshot"));
}

TEST_F(GnomePattern, isRecordedAsItIsUntilTheBarIsClicked) {
    const QRect area(300, 196, 600, 370);
    const QString movie = record(area);
    ASSERT_FALSE(movie.isEmpty()) << qPrintable(program.output());
    EXPECT_EQ(tavrine::test::complaintsAbout(movie), QByteArray());
    expectPicturesAreLike(patternIn(area), tavrine::test::pixelsOf(movie));
}

TEST_F(GnomePattern, givesTheColourUnderAClick) {
    const auto asked = program.startAgain({QStringLiteral("--color")});
    ASSERT_TRUE(waitUntil([this] { return desktop.isFrozen(); }, gnomePatience));
    const QPoint place(333, 222);
    hands.movePointer(place);
    hands.pressButton();
    hands.releaseButton();
    const QRgb expected = patternIn(QRect(place, QSize(1, 1))).pixel(0, 0);
    const QByteArray text = QColor(expected).name().toUpper().toUtf8();
    EXPECT_TRUE(waitUntil([&] { return tavrine::testing::paste() == text; }, gnomePatience)) << text.toStdString();
}

TEST_F(GnomePattern, givesNoColourAfterEscape) {
    copyOnWayland("before the pick");
    ASSERT_TRUE(isRecorded("before the pick"));
    const auto asked = program.startAgain({QStringLiteral("--color")});
    ASSERT_TRUE(waitUntil([this] { return desktop.isFrozen(); }, gnomePatience));
    EXPECT_TRUE(escape());
    EXPECT_EQ(tavrine::testing::paste(), "before the pick");
}

} // namespace
