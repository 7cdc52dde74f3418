// A capture through the whole program: its hot key, the hand on the mouse, the pasteboard, the card and the file, pixel
// for pixel, on an ordinary screen and on one with twice the pixels; and what else looks at the screen, for codes and
// for a colour.
#include "desktop/Desktop.h"
#include "desktop/Program.h"
#include "support/PatternWindow.h"
#include "support/QrModules.h"
#include "support/Wait.h"

#include <QColor>
#include <QDir>
#include <QImage>
#include <QProcess>

#include <gtest/gtest.h>

using namespace tavrine::testing;
using namespace std::chrono_literals;

namespace {

constexpr auto card = "Screenshot";
constexpr auto codes = "QR Codes";
constexpr int keyTwo = 11;
// Buttons of the card, from the lower left corner of the screen, in points.
constexpr QPoint onSave(188, 52);
constexpr QPoint onNew(58, 52);

class CaptureProgram : public testing::TestWithParam<int> {
protected:
    void SetUp() override {
        QDir().mkpath(folder());
        program.environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QString::number(GetParam()));
        desktop.keyboard.movePointer(640, 300);
        ASSERT_TRUE(
            program.startOnboarded("<key>snipUseSaveDefault</key><true/><key>snipSaveDirectoryPath</key><string>" +
                                   folder().toUtf8() + "</string>"));
    }
    [[nodiscard]] QString folder() const { return program.home() + QStringLiteral("/captures"); }
    [[nodiscard]] QStringList files() const {
        return QDir(folder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    [[nodiscard]] size_t cards() const { return desktop.windowsTitled(QLatin1String(card)).size(); }
    [[nodiscard]] QStringList historyImages() const {
        return program.rows("SELECT image_file_name FROM items WHERE image_file_name IS NOT NULL");
    }
    /// In a corner where neither the card nor the magnifier stands.
    [[nodiscard]] bool isDimmed() const {
        const QPoint corner = pattern.screen().bottomRight();
        return pattern.shownAt(corner.x(), corner.y()) != PatternWindow::colourAt(corner.x(), corner.y());
    }
    void pressHotKey() {
        desktop.keyboard.chord({key::leftSuper, key::leftShift, keyTwo});
        ASSERT_TRUE(waitUntil([this] { return isDimmed(); })) << "no overlay";
    }
    /// The overlay has the keyboard, for which it asks again and again.
    bool hasKeyboard() {
        return waitUntil([this] { return !isKeyboardFree(); });
    }
    bool leavesKeyboard() {
        return waitUntil([this] { return isKeyboardFree(); });
    }
    bool isKeyboardFree() {
        const bool isFree = desktop.keyboard.grabKeyboard();
        if (isFree)
            desktop.keyboard.ungrabKeyboard();
        return isFree;
    }
    void capture(const QRect &area) {
        pressHotKey();
        drag(area);
    }
    void drag(const QRect &area) {
        desktop.keyboard.movePointer(area.left(), area.top());
        desktop.keyboard.press(1);
        desktop.keyboard.movePointer(area.center().x(), area.center().y());
        desktop.keyboard.movePointer(area.right(), area.bottom());
        desktop.keyboard.release(1);
    }
    /// By a word on the command line, as from a shortcut of the desktop's.
    [[nodiscard]] bool ask(const char *word) const {
        return program.startAgain({QString::fromUtf8(word)})->waitForFinished(10'000);
    }
    void show(const QrModules &code) {
        ASSERT_FALSE(code.dark.empty());
        pattern.addWindow(code.ground, 0xffffff);
        for (const QRect &square : code.dark)
            pattern.addWindow(square, 0);
        // A compositor has hundreds of windows to draw then.
        const QPoint last = code.dark.back().center();
        EXPECT_TRUE(waitUntil([&] { return pattern.shownAt(last.x(), last.y()) == 0; }));
    }
    [[nodiscard]] static bool isOnPasteboard(const QRect &area) {
        return QImage::fromData(paste("image/png")).convertToFormat(QImage::Format_RGB32) ==
               PatternWindow::expected(area);
    }

    PatternWindow pattern;
    Desktop desktop;
    Program program;
};

INSTANTIATE_TEST_SUITE_P(Scale, CaptureProgram, testing::Values(1, 2));

TEST_P(CaptureProgram, whatWasUnderTheDragIsOnThePasteboardAndInTheSavedFile) {
    const QRect area(QPoint(501, 97), QPoint(1102, 466));
    capture(area);
    ASSERT_TRUE(waitUntil([this] { return desktop.isShown(card); }));
    EXPECT_TRUE(waitUntil([&area] { return isOnPasteboard(area); }));
    EXPECT_TRUE(waitUntil([this] { return historyImages().size() == 1; }));
    EXPECT_TRUE(files().isEmpty()); // it is a file only when the person asks for one

    desktop.click({onSave.x() * GetParam(), pattern.screen().height() - onSave.y() * GetParam()});
    ASSERT_TRUE(
        waitUntil([this] { return files().size() == 1 && files().constFirst().endsWith(QLatin1String(".png")); }));
    const QImage saved = QImage(folder() + QLatin1Char('/') + files().constFirst());
    EXPECT_TRUE(saved.convertToFormat(QImage::Format_RGB32) == PatternWindow::expected(area));
    EXPECT_TRUE(waitUntil([this] { return cards() == 0; }));
}

TEST_P(CaptureProgram, aMenuOfAnotherProgramIsInThePictureThatWasAskedForWhileItWasOpen) {
    const QRect area(QPoint(500, 100), QPoint(699, 299));
    constexpr quint32 colour = 0x8040c0;
    const auto menu = pattern.addWindow(area, colour);
    desktop.keyboard.movePointer(area.center().x(), area.center().y());
    TestKeyboard other;
    ASSERT_TRUE(other.grabPointer());
    ASSERT_TRUE(other.grabKeyboard());
    ASSERT_NO_FATAL_FAILURE(pressHotKey());
    pattern.removeWindow(menu); // as a menu goes
    other.ungrabPointer();
    other.ungrabKeyboard();
    (void)waitUntil([] { return false; }, 200ms); // the overlay takes over what is free now
    desktop.keyboard.movePointer(area.left(), area.top());
    desktop.keyboard.press(1);
    desktop.keyboard.movePointer(area.center().x(), area.center().y());
    desktop.keyboard.movePointer(area.right(), area.bottom());
    desktop.keyboard.release(1);
    EXPECT_TRUE(waitUntil([&] {
        const QImage picture = QImage::fromData(paste("image/png")).convertToFormat(QImage::Format_RGB32);
        return picture.size() == area.size() && (picture.pixel(100, 100) & 0xffffff) == colour;
    }));
    EXPECT_TRUE(waitUntil([this] { return cards() == 1; })); // and one capture it was
}

TEST_P(CaptureProgram, escapeLeavesNothingBehind) {
    copy("copied before");
    ASSERT_NO_FATAL_FAILURE(pressHotKey());
    ASSERT_TRUE(hasKeyboard());
    desktop.pressEscape();
    ASSERT_TRUE(waitUntil([this] { return !isDimmed(); }));
    EXPECT_EQ(cards(), 0U);
    EXPECT_EQ(paste(), "copied before");
    // The next capture is the first that anything knows of.
    const QRect area(QPoint(700, 100), QPoint(799, 149));
    capture(area);
    ASSERT_TRUE(waitUntil([this] { return historyImages().size() == 1; }));
    EXPECT_TRUE(waitUntil([&area] { return isOnPasteboard(area); }));
    EXPECT_TRUE(waitUntil([this] { return cards() == 1; }));
    EXPECT_TRUE(files().isEmpty());
}

TEST_P(CaptureProgram, newOnTheCardTakesAnotherCaptureWithoutTheCardInIt) {
    capture({QPoint(700, 100), QPoint(799, 149)});
    ASSERT_TRUE(waitUntil([this] { return desktop.isShown(card); }));
    const QRect underTheCard(QPoint(30, 560), QPoint(329, 759));
    desktop.click({onNew.x() * GetParam(), pattern.screen().height() - onNew.y() * GetParam()});
    ASSERT_TRUE(waitUntil([this] { return isDimmed(); })) << "no overlay";
    EXPECT_EQ(cards(), 0U);
    drag(underTheCard);
    EXPECT_TRUE(waitUntil([&underTheCard] { return isOnPasteboard(underTheCard); }));
    EXPECT_TRUE(waitUntil([this] { return desktop.isShown(card); }));
}

TEST_P(CaptureProgram, whenTheProgramIsKilledTheOverlayGoesAndTheNextStartFindsNothingOfIt) {
    const QDir temporary(program.home() + QStringLiteral("/.cache/Tavrine/tmp"));
    const auto left = [&temporary] {
        return temporary.entryList({QStringLiteral("*tavrine*")}, QDir::AllEntries | QDir::Hidden | QDir::System);
    };
    pressHotKey();
    program.kill9();
    EXPECT_TRUE(waitUntil([this] { return !isDimmed(); }));
    EXPECT_TRUE(waitUntil([&] { return left().isEmpty(); })) << left().join(u' ').toStdString();
    // As when it was killed between the tool's last byte and its own reading of it.
    QFile picture(temporary.filePath(QStringLiteral("tavrine-snip-0A.png")));
    ASSERT_TRUE(picture.open(QIODevice::WriteOnly));
    picture.close();
    ASSERT_TRUE(program.start());
    EXPECT_TRUE(waitUntil([&] { return left().isEmpty(); }));
}

TEST_P(CaptureProgram, aSecondCaptureTakesTheCardsPlace) {
    capture({QPoint(700, 100), QPoint(799, 149)});
    ASSERT_TRUE(waitUntil([this] { return cards() == 1 && historyImages().size() == 1; }));
    const quint32 first = desktop.windowsTitled(QLatin1String(card)).front();
    const QRect area(QPoint(800, 60), QPoint(1000, 260));
    capture(area);
    EXPECT_TRUE(waitUntil([this, first] {
        const auto all = desktop.windowsTitled(QLatin1String(card));
        return all.size() == 1 && all.front() != first;
    }));
    EXPECT_TRUE(waitUntil([&area] { return isOnPasteboard(area); }));
    EXPECT_TRUE(waitUntil([this] { return historyImages().size() == 2; }));
}

TEST_P(CaptureProgram, theCardOfTheLastCaptureIsNotInTheNext) {
    capture({QPoint(700, 100), QPoint(799, 149)});
    ASSERT_TRUE(waitUntil([this] { return cards() == 1 && historyImages().size() == 1; }));
    const QRect place = desktop.geometry(desktop.windowsTitled(QLatin1String(card)).front());
    capture(place.adjusted(-10, -10, 10, 10));
    ASSERT_TRUE(waitUntil([this] { return historyImages().size() == 2; }));
    EXPECT_TRUE(waitUntil([&place] { return isOnPasteboard(place.adjusted(-10, -10, 10, 10)); }));
    EXPECT_TRUE(waitUntil([this] { return cards() == 1; }));
    // One that is given up leaves the card where it was.
    ASSERT_NO_FATAL_FAILURE(pressHotKey());
    EXPECT_EQ(cards(), 0U);
    ASSERT_TRUE(hasKeyboard());
    desktop.pressEscape();
    EXPECT_TRUE(waitUntil([this] { return cards() == 1; }));
}

// Codes.

TEST_P(CaptureProgram, aScanTellsTheCodeUnderTheDragInAPanelThatCopiesIt) {
    const QrModules code = qrModules(QStringLiteral("what stands in the code"), {200, 100}, 6);
    ASSERT_NO_FATAL_FAILURE(show(code));
    ASSERT_TRUE(ask("--qr-scan"));
    ASSERT_TRUE(waitUntil([this] { return isDimmed(); }));
    drag(code.ground.adjusted(-4, -4, 4, 4));
    ASSERT_TRUE(waitUntil([this] { return desktop.hasKeyboard(codes); }));
    EXPECT_EQ(cards(), 0U) << "it is no capture";
    const quint32 panel = desktop.windowsTitled(QLatin1String(codes)).front();
    QProcess xprop;
    xprop.start(QStringLiteral("xprop"),
                {QStringLiteral("-id"), QString::number(panel), QStringLiteral("_NET_WM_STATE")});
    ASSERT_TRUE(xprop.waitForFinished());
    const QByteArray states = xprop.readAllStandardOutput();
    EXPECT_TRUE(states.contains("ABOVE") && !states.contains("SKIP_TASKBAR")) << states.constData();
    // The panel is managed and lies below the pattern, which is not; but it has the keyboard. Its row is the last in
    // it.
    desktop.keyboard.chord({key::leftShift, key::tab});
    desktop.pressReturn();
    EXPECT_TRUE(waitUntil([] { return paste() == "what stands in the code"; }));
    desktop.pressEscape();
    EXPECT_TRUE(waitUntil([this] { return !desktop.isShown(codes); }));
    const QDir temporary(program.home() + QStringLiteral("/.cache/Tavrine/tmp"));
    EXPECT_EQ(temporary.entryList({QStringLiteral("tavrine_qr_*")}), QStringList());
}

TEST_P(CaptureProgram, aScanThatIsGivenUpShowsNothingAndOneOfNoCodeSaysSo) {
    copy("copied before");
    ASSERT_TRUE(ask("--qr-scan"));
    ASSERT_TRUE(waitUntil([this] { return isDimmed(); }));
    ASSERT_TRUE(hasKeyboard());
    desktop.pressEscape();
    ASSERT_TRUE(waitUntil([this] { return !isDimmed(); }));
    EXPECT_FALSE(waitUntil([this] { return desktop.isShown(codes); }, 2s));
    ASSERT_TRUE(ask("--qr-scan"));
    ASSERT_TRUE(waitUntil([this] { return isDimmed(); }));
    drag({QPoint(200, 100), QPoint(400, 250)});
    ASSERT_TRUE(waitUntil([this] { return desktop.hasKeyboard(codes); }));
    EXPECT_EQ(paste(), "copied before");
}

// A colour.

TEST_P(CaptureProgram, theColourUnderAClickIsCopied) {
    const QPoint place(333, 222);
    ASSERT_TRUE(ask("--color"));
    ASSERT_TRUE(hasKeyboard());
    desktop.click(place);
    const QByteArray wanted =
        QColor::fromRgb(PatternWindow::colourAt(place.x(), place.y())).name().toUpper().toLatin1();
    EXPECT_TRUE(waitUntil([&] { return paste() == wanted; })) << wanted.constData() << " " << paste().constData();
    EXPECT_TRUE(leavesKeyboard());
}

TEST_P(CaptureProgram, aPickThatIsGivenUpCopiesNothing) {
    copy("copied before");
    ASSERT_TRUE(ask("--color"));
    ASSERT_TRUE(hasKeyboard());
    desktop.pressEscape();
    EXPECT_TRUE(leavesKeyboard());
    EXPECT_EQ(paste(), "copied before");
}

} // namespace
